#include "support/check.h"

#include "check/checker.h"
#include "compose/files.h"
#include "support/capture.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <set>
#include <unistd.h>

namespace
{

std::vector<Finding> check(const std::string &bytes)
{
    const std::string path = "check-" + std::to_string(getpid()) + ".seed";
    write_file(path, bytes);
    Checker checker(Chosen(all_rules().size(), true));
    VolumeOptions options;
    options.message = [&](const Message &message) { checker.hear(message); };
    options.recover = true;
    options.passed_over = [&](const PassedOver &passed) { checker.pass_over(passed); };
    options.logical_record = [&](const LogicalRecord &record) { checker.enter(record); };
    Volume volume(path, options);
    for (const Item &item : volume)
        checker.add(item);
    std::remove(path.c_str());
    return checker.take();
}

} // namespace

SoundVolume::SoundVolume()
    : dictionaries{{30, b030("Steim2 Integer Compression Format", 1, 50,
                             {"F1 P4 W4 D C2 R1 P8 W4 D C2", "P0 W4 N15 S2,0,1", "T0 X W4",
                              "T1 Y4 W1 D", "T2 W4 I D2", "K0 X D30"})},
                   {31, b031(1, 'S', "Clock locked", 0)},
                   {33, b033(1, "Test network")},
                   {34, b034(1, "M/S", "Velocity")},
                   {34, b034(2, "V", "Volts")},
                   {34, b034(3, "COUNTS", "Counts")}},
      channels{{.exponent = 9}},
      response{{53, b053({.factor = 6.2839, .zeros = {{0, 0}}, .poles = {{-1, 1}, {-1, -1}}})},
               {58, b058(1, 1000, 1)},
               {54, b054({})},
               {57, b057(2, 80, 1, 0, 0, 0)},
               {58, b058(2, 100, 0)},
               {61, b061({.stage = 3, .symmetry = 'B', .coefficients = {.25, .5}})},
               {57, b057(3, 80, 4, 0, 0, 0)},
               {58, b058(3, 1, 0)},
               {58, b058(0, 1e5, 1)}},
      series{{.first = {"2024,001,00:00:00.0000", 5}, .last = {"2024,001,00:00:20.0000", 6}}},
      data{{.samples = 200, .b1000 = DataOnly{}},
           {.time = "2024,001,00:00:10.0000", .samples = 200, .b1000 = DataOnly{}}}
{
    response[2].second = b054({.stage = 2, .input_units = 2, .output_units = 3});
}

std::string SoundVolume::bytes() const
{
    VolumeBuilder volume(4096);
    volume.header('V');
    volume.blockette(10, b010(version, 12, begin, end, "2024,003", "Org", "Label"));
    volume.blockette(11, b011(station_index)).blockette(12, b012(span_index)).header('A');
    for (const auto &[type, text] : dictionaries)
        volume.blockette(type, text);
    volume.header('S');
    for (const B050 &station : stations)
        volume.blockette(50, b050(station));
    for (const B052 &channel : channels) {
        volume.blockette(52, b052(channel));
        for (const auto &[type, text] : response)
            volume.blockette(type, text);
    }
    volume.header('T').blockette(70, b070('P', begin, end));
    for (const B074 &each : series)
        volume.blockette(74, b074(each));
    for (const DataRecord &record : data)
        volume.data(record);
    return edit ? edit(volume.volume()) : volume.volume();
}

std::string rules_broken(const std::string &bytes)
{
    std::set<std::string> names;
    for (const Finding &finding : check(bytes))
        names.emplace(all_rules()[finding.rule].name);
    std::string all;
    for (const std::string &name : names)
        all += (all.empty() ? "" : " ") + name;
    return all;
}

std::string findings(const std::string &bytes)
{
    std::string all;
    for (const Finding &finding : check(bytes))
        all += std::to_string(finding.record) + ": " +
               text_of(finding.told.subject, finding.record) + ": " + finding.told.text + " +" +
               std::to_string(finding.more) + " [" + std::string(all_rules()[finding.rule].name) +
               "]\n";
    return all;
}

std::vector<std::string> fingerprints(const std::string &bytes)
{
    std::vector<std::string> all;
    for (const Finding &finding : check(bytes))
        all.push_back(fingerprint_of(finding));
    return all;
}

void expect_alone(const CheckCase &each)
{
    const auto outcome = [](CheckCase::Edit edit) {
        SoundVolume volume;
        edit(volume);
        return rules_broken(volume.bytes());
    };
    EXPECT_EQ(outcome(each.breaks), each.rule);
    EXPECT_EQ(outcome(each.near_miss), "") << each.rule;
}
