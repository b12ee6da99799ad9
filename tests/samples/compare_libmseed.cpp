// Decodes data records beside libmseed: compare_libmseed FOLDER
//
// Those of the volumes in FOLDER, and composed ones of all encodings that libmseed knows. Exits
// with 1 when a sample differs, with 77 when there is nothing to compare with.
#include "compose/files.h"
#include "compose/samples.h"
#include "compose/volume.h"
#include "samples/peer.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <quarl/samples.h>
#include <quarl/volume.h>
#include <random>
#include <unistd.h>

namespace fs = std::filesystem;
using namespace quarl; // NOLINT: all is about it

namespace
{

struct Totals {
    int records = 0;
    std::size_t samples = 0;
    int left_out = 0; ///< records that libmseed does not decode
    int differ = 0;
};

/// The record as libmseed decodes it; null when it does not. Without a Blockette 1000 it has to be
/// told the encoding.
Peer peer_of(std::string *record, const Samples &samples)
{
    unpackencodingformat = static_cast<int>(samples.encoding);
    unpackdatabyteorder = samples.little_endian ? 0 : 1;
    MSRecord *made = nullptr;
    const int code = msr_unpack(record->data(), static_cast<int>(record->size()), &made, 1, 0);
    Peer peer(made);
    return code == MS_NOERROR ? std::move(peer) : nullptr;
}

void compare(std::string record, const Samples &samples, const std::string &name, Totals *totals)
{
    ++totals->records;
    totals->samples += samples.size();
    const Peer peer = peer_of(&record, samples);
    if (!peer) {
        ++totals->left_out;
        return;
    }
    if (is_same_of_any_type(samples, *peer))
        return;
    ++totals->differ;
    std::printf("%s: record %d (encoding %d): %zu samples differ from libmseed's %lld\n",
                name.c_str(), totals->records, static_cast<int>(samples.encoding), samples.size(),
                static_cast<long long>(peer->numsamples));
}

void show(const std::string &name, const Totals &totals)
{
    std::printf("%s: %d records, %zu samples, %d records left out, %d differ\n", name.c_str(),
                totals.records, totals.samples, totals.left_out, totals.differ);
}

Totals compare_volume(const fs::path &path)
{
    Totals totals;
    Volume volume(path, {.message = [](const Message &) {}});
    SampleBuffer buffer;
    for (const Item &item : volume) {
        if (!item.get<blk_dh_t>())
            continue;
        Samples samples = decode(item, buffer);
        for (const SampleProblem &problem : samples.problems)
            std::printf("%s: at byte %lld: %s\n", path.filename().c_str(),
                        static_cast<long long>(item.place().offset), problem.text.c_str());
        if (samples.encoding == Encoding::none) { // libmseed takes such for Steim-1
            blk_dh_t header = *item.get<blk_dh_t>();
            header.encoding = static_cast<int>(Encoding::steim1);
            samples = decode(header, buffer);
        }
        compare(std::string(item.bytes()), samples, path.filename(), &totals);
    }
    if (totals.records > 0)
        show(path.filename(), totals);
    return totals;
}

/// Random samples of an encoding, of which one takes `size` bytes, and how many they are.
SteimFrames random_data(std::mt19937 *random, int encoding, std::size_t size, bool little)
{
    constexpr std::size_t Room = 448;
    constexpr int Sro = 30;
    if (size == 0) {
        std::vector<std::int32_t> values(1000);
        const auto bits = static_cast<unsigned>((*random)() % 29);
        for (std::int32_t &value : values)
            value = static_cast<std::int32_t>((*random)() & ((1U << bits) - 1));
        return steim_frames(values, {encoding - 9, little, Room / 64, 7, true});
    }
    std::string bytes;
    while (bytes.size() < Room)
        bytes += static_cast<char>(encoding == 0 ? ' ' + (*random)() % 95 : (*random)());
    for (std::size_t i = little ? 1 : 0; encoding == Sro && i < Room; i += 2)
        bytes[i] = static_cast<char>((bytes[i] & 0xF) | (*random)() % 11 << 4);
    return {bytes, Room / size};
}

/// Records of all encodings that libmseed knows. Of some that are little-endian it has another
/// opinion: it takes bytes and halves of Steim's words in the order in which they stand in memory,
/// and shifts Geoscope's 24 bits.
std::string composed_volume()
{
    constexpr std::array<std::pair<int, std::size_t>, 13> Encodings = {{{0, 1},
                                                                        {1, 2},
                                                                        {3, 4},
                                                                        {4, 4},
                                                                        {5, 8},
                                                                        {10, 0},
                                                                        {11, 0},
                                                                        {12, 3},
                                                                        {13, 2},
                                                                        {14, 2},
                                                                        {16, 2},
                                                                        {30, 2},
                                                                        {32, 2}}};
    std::mt19937 random(5);
    std::string volume;
    for (int round = 1; round <= 100; ++round)
        for (const auto &[encoding, size] : Encodings)
            for (const bool little : {false, true}) {
                if (little && encoding >= 10 && encoding <= 12)
                    continue;
                const SteimFrames data = random_data(&random, encoding, size, little);
                volume += data_record_bytes(
                    {.samples = static_cast<int>(data.samples),
                     .b1000 = DataOnly{.encoding = encoding, .word_order = little ? 0 : 1},
                     .payload = data.bytes},
                    round);
            }
    return volume;
}

} // namespace

int main(int argc, char *argv[])
try {
    ms_loginit([](char *) {}, nullptr, [](char *text) { std::fputs(text, stdout); }, nullptr);
    const fs::path composed =
        fs::temp_directory_path() / ("quarl_compare_libmseed_" + std::to_string(getpid()));
    write_file(composed, composed_volume());
    Totals all = compare_volume(composed);
    fs::remove(composed);
    bool wrong = all.differ > 0 || all.left_out > 0;
    if (argc != 2 || !fs::is_directory(argv[1])) {
        std::puts("skipped: no real volumes");
        return wrong ? 1 : 77;
    }
    std::vector<fs::path> volumes;
    for (const auto &entry : fs::directory_iterator(argv[1]))
        if (entry.path().filename().string().find("seed") != std::string::npos)
            volumes.push_back(entry.path());
    std::sort(volumes.begin(), volumes.end());
    for (const fs::path &volume : volumes)
        wrong |= compare_volume(volume).differ > 0;
    return wrong ? 1 : 0;
} catch (const std::exception &error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
}
