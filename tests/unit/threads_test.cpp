// What threads may do at a time. Built and run with ThreadSanitizer too, by itself: it needs the
// library and nothing above it.
#include "compose/blockette_text.h"
#include "compose/files.h"
#include "compose/sample.h"
#include "compose/volume.h"

#include <array>
#include <filesystem>
#include <gtest/gtest.h>
#include <latch>
#include <quarl/inventory.h>
#include <quarl/response.h>
#include <quarl/volume.h>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

using namespace quarl; // NOLINT: every test is about it

namespace
{

/// Calls f(0) ... f(3) in a thread each, all at once.
template <class F> void in_threads(F &&f)
{
    std::array<std::thread, 4> threads;
    std::latch all(threads.size());
    for (std::size_t i = 0; i < threads.size(); ++i)
        threads[i] = std::thread([&, i] {
            all.arrive_and_wait();
            f(i);
        });
    for (std::thread &each : threads)
        each.join();
}

/// A file in the folder for such that vanishes with this object.
class VolumeFile
{
public:
    explicit VolumeFile(const std::string &bytes) { write_file(path_, bytes); }
    VolumeFile(const VolumeFile &) = delete;
    VolumeFile &operator=(const VolumeFile &) = delete;
    ~VolumeFile() { std::filesystem::remove(path_); }

    void add_to(Inventory *inventory) const
    {
        VolumeOptions quiet;
        quiet.message = [](const Message &) {};
        Volume volume(path_, quiet);
        for (const Item &item : volume)
            inventory->add(item);
    }

private:
    const std::string path_ =
        std::filesystem::temp_directory_path() / ("threads." + std::to_string(getpid()));
};

/// What a program asks of an inventory, as text. Every epoch is asked for by the codes of its
/// channel, at many times.
std::string all_of(const Inventory &inventory)
{
    Evaluator evaluator({0.1, 1.0, 5.0});
    std::string all = std::to_string(inventory.data_channels().size());
    for (const ChannelEpoch &epoch : inventory.channel_epochs()) {
        DataChannel channel;
        const ChannelCode &code = inventory.channel_of(epoch).code;
        channel.code = {code.network(), code.station(), code.location(), code.channel()};
        all += '\n' + code.text() + ' ' + std::string(inventory.unit(epoch.signal_units));
        for (double time = 1.6e9; time < 1.8e9; time += 1e6) {
            const ChannelEpoch *found = inventory.epoch_at(channel, time);
            all += found ? std::to_string(found->record % 10) : "-";
        }
        const Evaluation curve = evaluator.evaluate(epoch.response);
        all += curve.values.empty() ? "" : std::to_string(std::abs(curve.values[0]));
    }
    return all;
}

/// Reading data looks for epochs; without any, the first who asks has to list them all.
TEST(Threads, AskForEpochsFirst)
{
    VolumeBuilder volume;
    volume.header('V').blockette(10, b010(2.4, 12, "2000", "", "", "", ""));
    volume.header('S').blockette(50, b050({}));
    for (int year = 2000; year < 2500; ++year)
        volume.blockette(52,
                         b052({.start = std::to_string(year), .end = std::to_string(year + 1)}));
    const VolumeFile file(volume.volume());
    DataChannel channel;
    channel.code = {"XX", "QRL", "", "BHZ"};
    for (int round = 0; round < 10; ++round) {
        Inventory inventory;
        file.add_to(&inventory);
        in_threads([&](std::size_t) {
            const ChannelEpoch *found = inventory.epoch_at(channel, 1.6e9);
            EXPECT_EQ(found, &inventory.channel_epochs().at(20));
        });
    }
}

TEST(Threads, LookAtAnInventoryTogether)
{
    const VolumeFile sample(sample_volume());
    Inventory alone;
    sample.add_to(&alone);
    const std::string expected = all_of(alone);
    Inventory together;
    sample.add_to(&together);
    std::array<std::string, 4> seen;
    in_threads([&](std::size_t i) { seen[i] = all_of(together); });
    for (const std::string &each : seen)
        EXPECT_EQ(each, expected);
}

TEST(Threads, ReadVolumesBesideEachOther)
{
    const VolumeFile sample(sample_volume());
    Inventory alone;
    sample.add_to(&alone);
    const std::string expected = all_of(alone);
    in_threads([&](std::size_t) {
        Inventory own;
        sample.add_to(&own);
        EXPECT_EQ(all_of(own), expected);
    });
}

} // namespace
