// The locale of the program that uses the library changes nothing that is read or written.
#include "blockette/seed_utl.h"
#include "compose/files.h"
#include "platform/read_number.h"
#include "support/capture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <quarl/inventory.h>
#include <quarl/volume.h>

namespace
{

namespace fs = std::filesystem;

/// The German locale as long as it lives. It is made for the occasion, since hardly a machine has
/// it.
class CommaLocale
{
public:
    CommaLocale() : folder_(testing::TempDir() + "locale_test." + std::to_string(getpid()))
    {
        fs::create_directory(folder_);
        const std::string make =
            "localedef -i de_DE -f ISO-8859-1 " + folder_ + "/de_DE >" + folder_ + "/said 2>&1";
        if (std::system(make.c_str()) != 0) // NOLINT: no other thread is there
            return;
        setenv("LOCPATH", folder_.c_str(), 1); // NOLINT
        ready = std::setlocale(LC_ALL, "de_DE") != nullptr;
    }
    CommaLocale(const CommaLocale &) = delete;
    CommaLocale &operator=(const CommaLocale &) = delete;
    ~CommaLocale()
    {
        std::setlocale(LC_ALL, "C");
        unsetenv("LOCPATH"); // NOLINT
        fs::remove_all(folder_);
    }

    bool ready = false;

private:
    std::string folder_;
};

/// What is read of numbers and times, to the last bit.
std::vector<std::uint64_t> numbers()
{
    std::vector<double> all;
    for (const char *text : {"1.5", "0x1.8p3", "-1.7976931348623157e308", "1.5e400", "0x1.8p-1080",
                             "1,5", " .25", "2.2250738585072011e-308"}) {
        std::size_t used = 0;
        double scanned = -1.0;
        all.insert(all.end(), {read_real(text, &used), static_cast<double>(used)});
        all.push_back(scan_real(text, &scanned) ? scanned : -2.0);
    }
    for (const char *text :
         {"2005,123,12:30:15.0001", "2005,123,12:30:15,0001", "2005,123,\xa0 1:"})
        all.push_back(seed2epoch(text));
    std::vector<std::uint64_t> bits(all.size());
    std::transform(all.begin(), all.end(), bits.begin(),
                   [](double value) { return std::bit_cast<std::uint64_t>(value); });
    return bits;
}

/// What is printed of the sample volume, and what a program on the library makes of it.
std::string sample_told()
{
    const std::string path = QUARL_SOURCE_DIR "/examples/sample.seed";
    std::string all = capture([&] { list_volume(path); }).out;
    Inventory inventory;
    Volume volume(path);
    for (const Item &item : volume)
        inventory.add(item);
    for (const ChannelEpoch &epoch : inventory.channel_epochs())
        all += formatted<"%.17g %.17g %.17g %s\n">(epoch.start, epoch.end, epoch.sample_rate,
                                                   time_text(epoch.start + 0.0625));
    for (const DataChannel &channel : inventory.data_channels())
        for (const DataSpan &span : channel.spans)
            all += formatted<"%.17g %.17g\n">(span.start, span.end);
    return all;
}

TEST(Locale, OfTheCallerCountsForNothing)
{
    const auto read = numbers();
    const std::string told = sample_told();
    const CommaLocale german;
    if (!german.ready)
        GTEST_SKIP() << "no locale with a decimal comma: localedef cannot make one";
    std::array<char, 8> text{};
    (void)std::snprintf(text.data(), text.size(), "%.1f", 1.5);
    ASSERT_STREQ(text.data(), "1,5") << "the locale is not in force";
    EXPECT_EQ(numbers(), read);
    EXPECT_EQ(sample_told(), told);
}

} // namespace
