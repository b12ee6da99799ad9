// Which channels and times a user wants: patterns, ISO times, and what falls between two of these.
#include "compose/volume.h"
#include "inventory/selection.h"
#include "platform/glob.h"

#include <gtest/gtest.h>

#include <fstream>
#include <quarl/volume.h>

using namespace quarl; // NOLINT: every test is about it

namespace
{

TEST(Glob, StandsForWholeTexts)
{
    const struct {
        const char *pattern;
        const char *text;
        bool matches;
    } cases[] = {
        {"", "", true},           {"", "A", false},           {"*", "", true},
        {"?", "", false},         {"BH?", "BHZ", true},       {"BH?", "BHZZ", false},
        {"*HZ", "BHHZ", true},    {"B*Z*", "BHZ", true},      {"**Z", "BHZ", true},
        {"*Z", "BHN", false},     {"BH[ZN]", "BHN", true},    {"BH[ZN]", "BHE", false},
        {"BH[A-F]", "BHE", true}, {"BH[!A-F]", "BHE", false}, {"BH[^A-F]", "BHZ", true},
        {"[]A]", "]", true},      {"[!]A]", "]", false},      {"[A-]", "-", true},
        {"[AB", "[AB", true},     {"[AB", "A", false},        {"[!", "[!", true},
        {"*[12]*", "BH1", true},  {"bhz", "BHZ", false},      {"a*b*c*d", "aXbXbcXcXd", true},
    };
    for (const auto &c : cases)
        EXPECT_EQ(matches_glob(c.pattern, c.text), c.matches) << c.pattern << " " << c.text;
    std::string many;
    for (int i = 0; i < 200; ++i)
        many += "*A";
    EXPECT_FALSE(matches_glob(many + "B", std::string(100'000, 'A'))); // not exponential
}

TEST(Time, ReadsIso)
{
    const struct {
        const char *text;
        const char *time; ///< "": none
    } cases[] = {
        {"2018-07-10T12:30:45.123456Z", "2018-07-10T12:30:45.123456Z"},
        {"2018-07-10T12:30:45,1234569", "2018-07-10T12:30:45.123456Z"},
        {"2018-07-10 12:30", "2018-07-10T12:30:00.000000Z"},
        {"2018-07-10T12z", "2018-07-10T12:00:00.000000Z"},
        {"2018-07-10", "2018-07-10T00:00:00.000000Z"},
        {"2018-07", "2018-07-01T00:00:00.000000Z"},
        {"2018", "2018-01-01T00:00:00.000000Z"},
        {"2018-191T12:30:00", "2018-07-10T12:30:00.000000Z"},
        {"2016-366", "2016-12-31T00:00:00.000000Z"},
        {"2016-02-29", "2016-02-29T00:00:00.000000Z"},
        {"2016-12-31T23:59:60", "2017-01-01T00:00:00.000000Z"},
        {"2018-07-10T00:30:00+02:00", "2018-07-09T22:30:00.000000Z"},
        {"2018-07-10T00:30-0330", "2018-07-10T04:00:00.000000Z"},
        {"2018-07-10T00+01", "2018-07-09T23:00:00.000000Z"},
        {"", ""},
        {"2018-02-29", ""},
        {"2018-366", ""},
        {"2018-000", ""},
        {"2018-13-01", ""},
        {"2018-00-01", ""},
        {"2018-07-00", ""},
        {"2018-07-32", ""},
        {"0000-01-01", ""},
        {"18-07-10", ""},
        {"20180-07-10", ""},
        {"2018-7-10", ""},
        {"2018-07-", ""},
        {"2018-07T12", ""},
        {"2018-07-10T", ""},
        {"2018-07-10T24:00", ""},
        {"2018-07-10T12:60", ""},
        {"2018-07-10T12:30:61", ""},
        {"2018-07-10T12:30:", ""},
        {"2018-07-10T12:30:00.", ""},
        {"2018-07-10T12:30:00.5x", ""},
        {"2018-07-10T12:30+24:00", ""},
        {"2018-07-10T12:30+0", ""},
        {"2018-07-10Z", ""},
        {" 2018-07-10", ""},
    };
    for (const auto &c : cases) {
        const auto time = read_iso_time(c.text);
        EXPECT_EQ(time ? iso_text(*time) : "", c.time) << c.text;
    }
}

ChannelSelection selection(const std::vector<std::string> &globs, std::string_view start = {},
                           std::string_view end = {})
{
    ChannelSelection chosen;
    for (const std::string &glob : globs)
        EXPECT_EQ(chosen.add(glob), "");
    if (!start.empty()) {
        EXPECT_EQ(chosen.set_start(start), "");
    }
    if (!end.empty()) {
        EXPECT_EQ(chosen.set_end(end), "");
    }
    return chosen;
}

TEST(Selection, HasChannels)
{
    const ChannelCode anmo("IU", "ANMO", "00", "BHZ");
    const ChannelCode furt("BW", "FURT", "", "EHZ");
    const struct {
        std::vector<std::string> globs;
        bool anmo, furt;
    } cases[] = {
        {{}, true, true},
        {{"*"}, true, true},
        {{"IU.*"}, true, false},
        {{"*.BHZ"}, true, false},
        {{"*.*.*.?HZ"}, true, true},
        {{"IU.ANMO.00.BHZ"}, true, false},
        {{"*.*..*"}, false, true},
        {{"BW.FURT.--.EHZ"}, false, true},
        {{"*.*.--.*"}, false, true},
        {{"IU.A*,BW.F*"}, true, true},
        {{"IU.A*", "BW.G*"}, true, false},
        {{"iu.*"}, false, false},
    };
    for (const auto &c : cases) {
        const ChannelSelection chosen = selection(c.globs);
        EXPECT_EQ(chosen.has(anmo), c.anmo) << c.globs.size();
        EXPECT_EQ(chosen.has(furt), c.furt) << c.globs.size();
    }
    EXPECT_TRUE(selection({}).has_all());
    EXPECT_FALSE(selection({"*"}).has_all());
    for (const char *wrong : {"", "BHZ", "IU.ANMO.BHZ", "IU.ANMO.00.BHZ.D", "*,", "IU.ANMO"})
        EXPECT_EQ(ChannelSelection().add(wrong).find("no glob of"), 0) << wrong;
}

TEST(Selection, HasTimesFromTheStartToJustBeforeTheEnd)
{
    // 100 samples at 20 Hz: the last is 4.95 s behind the first.
    const std::string volume =
        VolumeBuilder(512).data({.time = "2024,001,12:00:00.0000", .b1000 = DataOnly()}).volume();
    const std::string path = testing::TempDir() + "selection.seed";
    std::ofstream(path, std::ios::binary) << volume;
    VolumeOptions quiet;
    quiet.message = [](const Message & /*of the lengths*/) {};
    const struct {
        const char *start;
        const char *end;
        bool selected;
    } cases[] = {
        {"", "", true},
        {"2024-01-01T12:00:04.95", "", true},
        {"2024-01-01T12:00:04.950001", "", false},
        {"", "2024-01-01T12:00:00", false},
        {"", "2024-01-01T12:00:00.000001", true},
        {"2024-01-01T12:00:01", "2024-01-01T12:00:01.01", true},
        {"2024,001,12:00:05", "", false},
        {"2024", "2025", true},
    };
    for (const auto &c : cases) {
        const ChannelSelection chosen = selection({}, c.start, c.end);
        for (const Item &item : Volume(path, quiet))
            if (const auto *header = item.get<blk_dh_t>()) {
                EXPECT_EQ(chosen.has(item, *header), c.selected) << c.start << " " << c.end;
            }
    }
    const ChannelSelection year = selection({}, "2024", "2025");
    EXPECT_TRUE(year.has(Always, Forever));
    EXPECT_FALSE(year.has(start_seconds("2025"), Forever));
    EXPECT_FALSE(year.has(Always, end_seconds("2024")));
    EXPECT_FALSE(year.has(std::nullopt)); // a record without a time
    ChannelSelection wrong;
    EXPECT_EQ(wrong.set_start("yesterday"), "no time: yesterday");
    EXPECT_EQ(wrong.set_end("2024-01-02"), "");
    EXPECT_EQ(wrong.set_start("2024-01-02"), "the end is not behind the start");
}

} // namespace
