// What a checker says of volumes as operators meet them: damaged ones, and faults that come often.
#include "compose/files.h"
#include "programs/baseline.h"
#include "support/check.h"

#include <algorithm>
#include <cstdio>
#include <gtest/gtest.h>
#include <unistd.h>

namespace
{

/// Dictionaries that go on in a record of their own.
void go_on(SoundVolume &v)
{
    for (int code = 2; code < 100; ++code)
        v.dictionaries.push_back({33, b033(code, "An abbreviation that takes some room")});
    v.station_index[0].seq = 4;
    v.span_index[0].seq = 5;
    v.series[0].first.seq = 6;
    v.series[0].last.seq = 7;
}

/// A line for each of what operators meet, and none for what follows from it.
TEST(CheckDamage, OneFaultIsOneLine)
{
    const auto lines = [](const std::string &bytes) {
        const std::string all = findings(bytes);
        return all + std::to_string(std::count(all.begin(), all.end(), '\n'));
    };
    SoundVolume sound;
    go_on(sound);
    sound.channels.push_back({.channel = "BHN", .dip = 0, .exponent = 9});
    sound.channels.push_back({.channel = "BHE", .azimuth = 90, .dip = 0, .exponent = 9});
    const std::string bytes = sound.bytes();
    ASSERT_EQ(findings(bytes), "");
    const auto with = [&](std::size_t at, std::size_t size, const std::string &other) {
        return std::string(bytes).replace(at, size, other);
    };
    constexpr std::size_t Size = 4096;
    const std::string third = bytes.substr(2 * Size, Size);
    const std::string fourth = bytes.substr(3 * Size, Size);
    EXPECT_EQ(lines(with(2 * Size, Size, "")),
              "3: volume: sequence number 000004 follows 000002: sequence number 000003 is missing "
              "+0 [record-sequence]\n1");
    EXPECT_EQ(lines(with(2 * Size, 2 * Size, fourth + third)),
              "3: volume: records 3 and 4 are exchanged: their sequence numbers are 000004 and "
              "000003 +0 [record-sequence]\n1");
    EXPECT_EQ(lines(with(3 * Size, 0, fourth)),
              "5: volume: sequence number 000004 comes twice, records 4 and 5 +0 "
              "[record-sequence]\n1");
    EXPECT_EQ(lines(with(2 * Size, Size, std::string(Size, '\0'))),
              "3: record 3: holds blanks or NULs alone, where sequence number 000003 is expected "
              "+0 [record-sequence]\n1");
    EXPECT_EQ(lines(with(2 * Size, Size, std::string(Size, '!'))),
              "3: record 3: begins with '!!!!!!!!', no header of a logical record; 4096 bytes are "
              "passed over +0 [record-type]\n1");
    EXPECT_EQ(lines(bytes.substr(Size)),
              "1: volume: begins with blockette 030, expected is 010 +0 [volume-start]\n1");
    EXPECT_EQ(lines("A text,\nand nothing else.\n"),
              "0: volume: no logical record of SEED: the input is text and begins with 'A "
              "text,\\x0a' +0 [no-records]\n1");
}

/// Behind a record that is missing, channels are judged that begin behind it.
TEST(CheckDamage, LaterFaultsAreTold)
{
    SoundVolume volume;
    for (int i = 0; i < 60; ++i) // four records of one station
        volume.channels.push_back(
            {.location = std::to_string(i + 10), .dip = i == 59 ? -80.0 : -90.0, .exponent = 9});
    volume.data.clear();
    volume.series.clear();
    volume.span_index.clear();
    volume.edit = [](std::string bytes) { return bytes.erase(std::size_t{3} * 4096, 4096); };
    const std::string found = findings(volume.bytes());
    EXPECT_NE(found.find("4: volume: sequence number 000005 follows 000003: sequence number 000004 "
                         "is missing; 1 channel epoch is not judged, whose headers this cuts +0 "
                         "[record-sequence]\n"),
              std::string::npos);
    EXPECT_NE(found.find("XX_QRL_69_BHZ 2020,001: azimuth 0 and dip -80"), std::string::npos);
    EXPECT_EQ(std::count(found.begin(), found.end(), '\n'), 2) << found;
}

/// A fault is the same wherever its record stands, and another one when its numbers are others.
TEST(CheckDamage, FingerprintsSurviveRecordsThatMove)
{
    const auto of = [](void (*edit)(SoundVolume &), bool moved) {
        SoundVolume volume;
        if (moved)
            go_on(volume);
        edit(volume);
        return fingerprints(volume.bytes());
    };
    const auto far = [](SoundVolume &v) { v.channels[0].lat = 0.0091; };
    const auto farther = [](SoundVolume &v) { v.channels[0].lat = 0.0092; };
    const auto later = [](SoundVolume &v) {
        v.dictionaries.insert(v.dictionaries.begin(), {41, "0001F~A0030030000"});
    };
    ASSERT_EQ(of(far, false).size(), 1U);
    EXPECT_EQ(of(far, false), of(far, true));
    EXPECT_NE(of(far, false), of(farther, false));
    EXPECT_EQ(of(later, false), of(later, true));
}

TEST(CheckDamage, BaselinesHoldFingerprints)
{
    const std::string path = "baseline-" + std::to_string(getpid()) + ".json";
    write_file(path,
               "{\"text\":\"\\\"fingerprint\\\":\",\"fingerprint\":\"0123456789abcdef\"}\n\n");
    quarl::Baseline known;
    EXPECT_FALSE(known.is_used());
    EXPECT_EQ(known.read(path), "");
    EXPECT_TRUE(known.is_used() && known.has("0123456789abcdef"));
    EXPECT_FALSE(known.has("0123456789abcdee"));
    write_file(path, "{\"rule\":\"data-gap\"}\n");
    EXPECT_NE(known.read(path).find("a line has no fingerprint"), std::string::npos);
    std::remove(path.c_str());
    EXPECT_NE(known.read(path).find("No such file"), std::string::npos);
}

TEST(CheckDamage, ChannelsOfAStationAreToldTogether)
{
    SoundVolume volume;
    for (const char *code : {"BHN", "BHE", "LHZ", "LHN"})
        volume.channels.push_back({.channel = code, .exponent = 9});
    for (B052 &channel : volume.channels) {
        channel.lat = 1;
        channel.dip = channel.channel[2] == 'Z' ? -90 : 0;
        channel.azimuth = channel.channel[2] == 'E' ? 90 : 0;
        channel.rate = channel.channel[0] == 'L' ? 1 : 20;
        channel.flags = "CGH";
    }
    volume.response.clear();
    EXPECT_EQ(
        findings(volume.bytes()),
        "3: XX_QRL: BHZ, BHN, BHE and 2 more channels: lies 111.195 km from its station: 1, 0 "
        "and 0, 0 degrees, expected is 1 km at most +0 [position-distance]\n");
}

TEST(CheckDamage, OverlapsTellWhatIsShared)
{
    SoundVolume volume;
    volume.series.clear();
    volume.data.push_back({.time = "2024,001,00:00:02.0000", .samples = 20, .b1000 = DataOnly{}});
    volume.data.push_back({.time = "2024,001,00:00:05.0000", .samples = 40, .b1000 = DataOnly{}});
    EXPECT_NE(findings(volume.bytes())
                  .find("XX_QRL__BHZ 2024,001,00:00:02.0000: overlaps other data by 1 s, up to "
                        "2024,001,00:00:03.0000 +1 [data-overlap]"),
              std::string::npos)
        << findings(volume.bytes());
}

} // namespace
