// Rules of the volume, its headers and its data: for each a volume that breaks it and no other, and
// one that nearly does.
#include "check/rule.h"
#include "support/check.h"

#include <gtest/gtest.h>
#include <set>

namespace
{

void replace(SoundVolume &volume, const char *from, const char *to)
{
    volume.edit = [=](std::string bytes) {
        bytes.replace(bytes.find(from), std::string_view(from).size(), to);
        return bytes;
    };
}

void nothing(SoundVolume & /*volume*/) {}

const CheckCase Cases[] = {
    {"bad-blockette", [](SoundVolume &v) { v.response[7].second.replace(14, 12, "xxxxxxxxxxxx"); },
     nothing},
    {"blockette-length", [](SoundVolume &v) { v.dictionaries[2].second += "rest"; },
     [](SoundVolume &v) { v.dictionaries[2].second += "    "; }},
    {"blockette-unknown",
     [](SoundVolume &v) {
         v.dictionaries.push_back({35, "0010 000"});
     },
     [](SoundVolume &v) {
         v.dictionaries.push_back({47, "0001D~8.0000E+01    1    0 0.0000E+00 0.0000E+00"});
     }},
    {"record-sequence",
     [](SoundVolume &v) {
         replace(v, "000006D", "000007D");
         v.series[0].last.seq = 7;
     },
     nothing},
    {"record-type", [](SoundVolume &v) { replace(v, "000002A", "000002V"); }, nothing},
    {"record-continuation", [](SoundVolume &v) { replace(v, "000002A ", "000002A*"); }, nothing},
    {"volume-start",
     [](SoundVolume &v) {
         v.edit = [](std::string b) {
             const std::string first = b.substr(8, 4088), index = "0110021001QRL  000003";
             const std::size_t at = first.find(index);
             return b.substr(0, 8) + index + first.substr(0, at) + first.substr(at + index.size()) +
                    b.substr(4096);
         };
     },
     nothing},
    {"volume-times",
     [](SoundVolume &v) {
         v.end = "2024,001,00:00:15";
         v.span_index[0].end = v.end;
     },
     [](SoundVolume &v) {
         v.end = "2024,001,00:00:20";
         v.span_index[0].end = v.end;
     }},
    {"header-order",
     [](SoundVolume &v) {
         v.dictionaries.insert(v.dictionaries.begin(), {41, "0001F~A0030030000"});
     },
     nothing},
    {"station-index", [](SoundVolume &v) { v.station_index[0].seq = 4; }, nothing},
    {"span-index", [](SoundVolume &v) { v.span_index[0].seq = 3; }, nothing},
    {"series-index", [](SoundVolume &v) { v.series[0].last.seq = 4; }, nothing},
    {"cut-volume",
     [](SoundVolume &v) { v.edit = [](std::string b) { return b.substr(0, b.size() - 20); }; },
     [](SoundVolume &v) { v.edit = [](std::string b) { return b + std::string(20, '\n'); }; }},
    {"undefined-code", [](SoundVolume &v) { v.stations[0].net_id = 9; },
     [](SoundVolume &v) { v.channels[0].units_calibration = 0; }},
    {"code-redefined",
     [](SoundVolume &v) {
         v.dictionaries.push_back({34, b034(2, "A", "Amperes")});
         v.response = v.response;
         v.channels[0].units_calibration = 0;
         v.response[0].second = b053({.output_units = 2,
                                      .factor = 6.2839,
                                      .zeros = {{0, 0}},
                                      .poles = {{-1, 1}, {-1, -1}}});
     },
     [](SoundVolume &v) { v.dictionaries.push_back(v.dictionaries[4]); }},
    {"instrument-missing", [](SoundVolume &v) { v.channels[0].instrument = 0; }, nothing},
    {"network-code",
     [](SoundVolume &v) {
         v.stations[0].network = "x";
         v.series[0].network = v.data[0].network = v.data[1].network = "x";
     },
     nothing},
    {"station-code",
     [](SoundVolume &v) {
         v.station_index[0].station = v.stations[0].station = v.series[0].station =
             v.data[0].station = v.data[1].station = "Q-L";
     },
     nothing},
    {"location-code",
     [](SoundVolume &v) {
         v.channels[0].location = v.series[0].location = v.data[0].location = v.data[1].location =
             "--";
     },
     [](SoundVolume &v) {
         v.channels[0].location = v.series[0].location = v.data[0].location = v.data[1].location =
             "1";
     }},
    {"channel-code",
     [](SoundVolume &v) {
         v.channels[0].channel = v.series[0].channel = v.data[0].channel = v.data[1].channel = "BH";
     },
     nothing},
    {"position-range", [](SoundVolume &v) { v.stations[0].lon = v.channels[0].lon = 181; },
     [](SoundVolume &v) { v.stations[0].lon = v.channels[0].lon = -180; }},
    {"position-distance", [](SoundVolume &v) { v.channels[0].lat = 0.0091; },
     [](SoundVolume &v) { v.channels[0].lat = 0.0089; }},
    {"elevation-distance", [](SoundVolume &v) { v.channels[0].elev = 1001; },
     [](SoundVolume &v) { v.channels[0].elev = 1000; }},
    {"orientation-code", [](SoundVolume &v) { v.channels[0].dip = -84; },
     [](SoundVolume &v) { v.channels[0].dip = 85; }},
    {"station-epoch",
     [](SoundVolume &v) {
         v.stations.insert(v.stations.begin(), {.start = "2019,002", .end = "2019,001"});
         v.begin = "";
         v.span_index[0].begin = "";
     },
     nothing},
    {"channel-epoch",
     [](SoundVolume &v) {
         v.channels.push_back(v.channels[0]);
         v.channels[1].start = "2024,001,12";
         v.channels[1].end = "2024,001,12";
     },
     nothing},
    {"station-epoch-overlap", [](SoundVolume &v) { v.stations.push_back({.start = "2021,001"}); },
     [](SoundVolume &v) {
         v.stations.insert(v.stations.begin(), {.start = "2019,001", .end = "2020,001"});
         v.begin = "";
         v.span_index[0].begin = "";
     }},
    {"channel-epoch-overlap", [](SoundVolume &v) { v.channels.push_back(v.channels[0]); },
     [](SoundVolume &v) {
         v.channels.push_back(v.channels[0]);
         v.channels[0].end = v.channels[1].start = "2024,001,12";
     }},
    {"channel-outside-station", [](SoundVolume &v) { v.channels[0].start = "2019,365"; },
     [](SoundVolume &v) { v.channels[0].start = "2020,002"; }},
    {"data-undescribed",
     [](SoundVolume &v) { v.data.push_back({.station = "XYZ", .b1000 = DataOnly{}}); }, nothing},
    {"data-rate",
     [](SoundVolume &v) {
         v.data[1].samples = 210;
         v.data[1].rate_factor = 21;
     },
     [](SoundVolume &v) {
         v.data[1].samples = 0;
         v.data[1].rate_factor = 0;
         v.series[0].last.time = "2024,001,00:00:10";
     }},
    {"data-length", [](SoundVolume &v) { v.channels[0].exponent = 12; }, nothing},
    {"data-format", [](SoundVolume &v) { v.data[1].b1000->encoding = 10; }, nothing},
    {"data-time",
     [](SoundVolume &v) {
         v.data.push_back(v.data[1]);
         v.data[2].time = "2024,367,00:00:00.0000";
     },
     [](SoundVolume &v) {
         v.begin = "2024,366";
         v.end = "2025,002";
         v.series.clear();
         v.span_index[0] = {v.begin, v.end, 4};
         v.data.erase(v.data.begin());
         v.data[0].time = "2024,366,23:59:59.0000";
     }},
    {"data-order",
     [](SoundVolume &v) {
         std::swap(v.data[0], v.data[1]);
         std::swap(v.series[0].first.seq, v.series[0].last.seq);
     },
     nothing},
    {"data-gap", [](SoundVolume &v) { v.data[1].time = "2024,001,00:00:10.0260"; },
     [](SoundVolume &v) { v.data[1].time = "2024,001,00:00:10.0240"; }},
    {"data-overlap", [](SoundVolume &v) { v.data[1].time = "2024,001,00:00:09.9740"; },
     [](SoundVolume &v) { v.data[1].time = "2024,001,00:00:09.9760"; }},
};

TEST(CheckRules, EachIsBrokenAlone)
{
    EXPECT_EQ(findings(SoundVolume().bytes()), "");
    for (const CheckCase &each : Cases)
        expect_alone(each);
}

TEST(CheckRules, EachHasACase)
{
    std::set<std::string_view> with_case;
    for (const CheckCase &each : Cases)
        with_case.insert(each.rule);
    for (const CheckCase &each : response_cases())
        with_case.insert(each.rule);
    with_case.insert("decimation-missing"); // never alone
    for (const quarl::Rule &rule : quarl::all_rules())
        EXPECT_TRUE(with_case.contains(rule.name)) << rule.name;
    EXPECT_EQ(with_case.size(), quarl::all_rules().size());
}

} // namespace
