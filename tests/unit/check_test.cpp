// Rules of the volume, its headers and its data: for each a volume that breaks it and no other, and
// one that nearly does.
#include "check/rule.h"
#include "support/check.h"

#include <algorithm>
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

// Codes of the one station and channel, wherever they stand.
void be_network(SoundVolume &v, const char *code)
{
    v.stations[0].network = v.series[0].network = v.data[0].network = v.data[1].network = code;
}
void be_station(SoundVolume &v, const char *code)
{
    v.station_index[0].station = v.stations[0].station = v.series[0].station = v.data[0].station =
        v.data[1].station = code;
}
void be_location(SoundVolume &v, const char *code)
{
    v.channels[0].location = v.series[0].location = v.data[0].location = v.data[1].location = code;
}
void be_channel(SoundVolume &v, const char *code)
{
    v.channels[0].channel = v.series[0].channel = v.data[0].channel = v.data[1].channel = code;
}

/// A station epoch before the one there is, with no times of the volume that it could miss.
void be_older(SoundVolume &v, const char *start, const char *end)
{
    v.stations.insert(v.stations.begin(), {.start = start, .end = end});
    v.begin = v.span_index[0].begin = "";
}

/// A second channel epoch, from the end of the first.
void change_epoch(SoundVolume &v, const char *time)
{
    v.channels.push_back(v.channels[0]);
    v.channels[0].end = v.channels[1].start = time;
}

/// The first record of data gets number 1, as the one before it has the largest.
void wrap_numbers(SoundVolume &v)
{
    v.station_index[0].seq = 999998;
    v.span_index[0].seq = 999999;
    v.series[0].first.seq = 1;
    v.series[0].last.seq = 2;
    v.edit = [](std::string b) {
        const char *numbers[] = {"999996", "999997", "999998", "999999", "000001", "000002"};
        for (std::size_t i = 0; i < 6; ++i)
            b.replace(i < 4 ? i * 4096 : 16384 + (i - 4) * 512, 6, numbers[i]);
        return b;
    };
}

/// One channel of this rate, without data or response.
void set_rate(SoundVolume &v, double rate)
{
    v.channels[0].rate = rate;
    v.channels[0].flags = "CGH";
    v.response.clear();
    v.series.clear();
    v.data.clear();
}

/// One data record, at this time, in a volume that has any.
void leap(SoundVolume &v, const char *time, int activity)
{
    v.begin = v.span_index[0].begin = v.end = v.span_index[0].end = "";
    v.series.clear();
    v.data.erase(v.data.begin());
    v.data[0].time = time;
    v.data[0].activity = activity;
}

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

const CheckCase Cases[] = {
    {"bad-blockette", [](SoundVolume &v) { v.response[7].second.replace(14, 12, "xxxxxxxxxxxx"); },
     [](SoundVolume &v) { v.response[7].second.replace(14, 12, "            "); }},
    {"blockette-length", [](SoundVolume &v) { v.dictionaries[2].second += "rest"; },
     [](SoundVolume &v) { v.dictionaries[2].second += "    "; }},
    {"blockette-unknown",
     [](SoundVolume &v) {
         v.dictionaries.push_back({35, "0010 000"});
     },
     [](SoundVolume &v) {
         v.dictionaries.push_back({47, "0001D~8.0000E+01    1    0 0.0000E+00 0.0000E+00"});
     }},
    {"no-records",
     [](SoundVolume &v) {
         v.edit = [](const std::string &b) { return std::string(b.size(), ' '); };
     },
     [](SoundVolume &v) {
         v.edit = [](const std::string &) { return "000001V " + std::string(504, ' '); };
     }},
    {"record-sequence",
     [](SoundVolume &v) {
         replace(v, "000006D", "00000xD");
         v.series.clear();
     },
     [](SoundVolume &v) {
         v.edit = [](const std::string &b) { return b + std::string(512, '\0'); };
     }},
    {"record-sequence",
     [](SoundVolume &v) {
         replace(v, "000006D", "000007D");
         v.series[0].last.seq = 7;
     },
     wrap_numbers},
    {"record-type",
     [](SoundVolume &v) {
         v.edit = [](std::string b) { return b.replace(16384, 8, "garbage!"); };
         v.series.clear();
         v.data[0].time = "2024,001,00:00:00.0000";
         v.data.push_back(v.data[1]);
         v.data[1] = v.data[0];
     },
     [](SoundVolume &v) {
         v.data.erase(v.data.begin(), v.data.end());
         v.series.clear();
     }},
    {"record-type", [](SoundVolume &v) { replace(v, "000002A", "000002X"); }, go_on},
    {"record-type", [](SoundVolume &v) { replace(v, "000002A", "000002V"); },
     [](SoundVolume &v) {
         v.edit = [](const std::string &b) { return b + "000007  " + std::string(504, ' '); };
     }},
    {"record-continuation", [](SoundVolume &v) { replace(v, "000002A ", "000002A*"); }, go_on},
    {"volume-start",
     [](SoundVolume &v) {
         v.edit = [](const std::string &b) {
             const std::string first = b.substr(8, 4088), index = "0110021001QRL  000003";
             const std::size_t at = first.find(index);
             return b.substr(0, 8) + index + first.substr(0, at) + first.substr(at + index.size()) +
                    b.substr(4096);
         };
     },
     [](SoundVolume &v) { v.edit = [](const std::string &b) { return b.substr(16384); }; }},
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
     [](SoundVolume &v) {
         v.dictionaries.push_back({41, "0001F~A0030030000"});
     }},
    {"station-index", [](SoundVolume &v) { v.station_index[0].seq = 4; },
     [](SoundVolume &v) { v.station_index.push_back(v.station_index[0]); }},
    {"span-index", [](SoundVolume &v) { v.span_index[0].seq = 3; },
     [](SoundVolume &v) { v.span_index[0].begin += ",00:00:00.0000"; }},
    {"series-index", [](SoundVolume &v) { v.series[0].last.seq = 4; },
     [](SoundVolume &v) { v.series[0].last.time = "2024,001,00:00:20.0500"; }},
    {"cut-volume",
     [](SoundVolume &v) {
         v.edit = [](const std::string &b) { return b.substr(0, b.size() - 20); };
     },
     [](SoundVolume &v) {
         v.edit = [](const std::string &b) { return b + std::string(20, '\n'); };
     }},
    {"span-index", [](SoundVolume &v) { v.span_index[0].end = "2024,001,23:59:59.9998"; },
     [](SoundVolume &v) { v.span_index[0].end = "2024,001,23:59:59.9999"; }},
    {"series-index", [](SoundVolume &v) { v.series[0].last.seq = 9; },
     [](SoundVolume &v) { v.series[0].last.time = "2024,001,00:00:19.9500"; }},
    {"series-index",
     [](SoundVolume &v) {
         v.channels.push_back({.channel = "BHN", .dip = 0, .exponent = 9});
         v.data.push_back({.channel = "BHN", .samples = 200, .b1000 = DataOnly{}});
     },
     [](SoundVolume &v) {
         v.series.clear();
         v.channels.push_back({.channel = "BHN", .dip = 0, .exponent = 9});
         v.data.push_back({.channel = "BHN", .samples = 200, .b1000 = DataOnly{}});
     }},
    {"header-time", [](SoundVolume &v) { v.stations[0].start = "2019,366"; },
     [](SoundVolume &v) { v.stations[0].start = "2016,366,23:59:60"; }},
    {"header-time",
     [](SoundVolume &v) {
         v.begin = v.span_index[0].begin = "2024,002,00:00:01";
         v.series.clear();
         v.data.clear();
     },
     [](SoundVolume &v) {
         v.begin = v.span_index[0].begin = "2024,002";
         v.series.clear();
         v.data.clear();
     }},
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
    {"instrument-missing", [](SoundVolume &v) { v.channels[0].instrument = 0; },
     [](SoundVolume &v) { v.dictionaries[2].second = b033(1, "x"); }},
    {"network-code", [](SoundVolume &v) { be_network(v, "x"); },
     [](SoundVolume &v) { be_network(v, "9"); }},
    {"station-code", [](SoundVolume &v) { be_station(v, "Q-L"); },
     [](SoundVolume &v) { be_station(v, "QRL12"); }},
    {"location-code", [](SoundVolume &v) { be_location(v, "--"); },
     [](SoundVolume &v) { be_location(v, "1"); }},
    {"channel-code", [](SoundVolume &v) { be_channel(v, "BH"); },
     [](SoundVolume &v) { be_channel(v, "B0Z"); }},
    {"position-range", [](SoundVolume &v) { v.stations[0].lon = v.channels[0].lon = 181; },
     [](SoundVolume &v) { v.stations[0].lon = v.channels[0].lon = -180; }},
    {"position-distance", [](SoundVolume &v) { v.channels[0].lat = 0.0091; },
     [](SoundVolume &v) { v.channels[0].lat = 0.0089; }},
    {"elevation-distance", [](SoundVolume &v) { v.channels[0].elev = 1001; },
     [](SoundVolume &v) { v.channels[0].elev = 1000; }},
    {"orientation-code", [](SoundVolume &v) { v.channels[0].dip = -84; },
     [](SoundVolume &v) { v.channels[0].dip = 85; }},
    {"band-code", [](SoundVolume &v) { set_rate(v, 9); },
     [](SoundVolume &v) {
         set_rate(v, 84);
         v.channels[0].channel = "SHZ";
     }},
    {"band-code", [](SoundVolume &v) { be_channel(v, "EHZ"); },
     [](SoundVolume &v) { be_channel(v, "AHZ"); }},
    {"station-epoch", [](SoundVolume &v) { be_older(v, "2019,002", "2019,001"); },
     [](SoundVolume &v) { be_older(v, "2019,001", "2019,001,00:00:01"); }},
    {"channel-epoch",
     [](SoundVolume &v) {
         v.channels.push_back(v.channels[0]);
         v.channels[1].start = v.channels[1].end = "2024,001,12";
     },
     [](SoundVolume &v) {
         change_epoch(v, "2024,001,12");
         v.channels[1].end = "2024,001,12:00:01";
     }},
    {"station-epoch-overlap", [](SoundVolume &v) { v.stations.push_back({.start = "2021,001"}); },
     [](SoundVolume &v) { be_older(v, "2019,001", "2020,001"); }},
    {"channel-epoch-overlap", [](SoundVolume &v) { v.channels.push_back(v.channels[0]); },
     [](SoundVolume &v) { change_epoch(v, "2024,001,12"); }},
    {"channel-outside-station", [](SoundVolume &v) { v.channels[0].start = "2019,365"; },
     [](SoundVolume &v) { v.channels[0].start = "2020,002"; }},
    {"data-undescribed",
     [](SoundVolume &v) { v.data.push_back({.station = "XYZ", .b1000 = DataOnly{}}); },
     [](SoundVolume &v) { v.channels[0].start = "2024,001"; }},
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
    {"data-length", [](SoundVolume &v) { v.channels[0].exponent = 12; },
     [](SoundVolume &v) {
         change_epoch(v, "2024,001");
         v.channels[0].exponent = 12;
     }},
    {"data-format", [](SoundVolume &v) { v.data[1].b1000->encoding = 10; },
     [](SoundVolume &v) {
         v.dictionaries[0].second = b030("Steim2 Integer Compression Format", 1, 50, {});
     }},
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
    {"data-time", [](SoundVolume &v) { leap(v, "2024,182,00:00:60.0000", 0); },
     [](SoundVolume &v) { leap(v, "2024,182,23:59:60.0000", 0); }},
    {"data-time", [](SoundVolume &v) { leap(v, "2024,100,23:59:60.0000", 0); },
     [](SoundVolume &v) { leap(v, "2024,100,23:59:60.0000", 0x10); }},
    {"blockette-chain", [](SoundVolume &v) { v.data[1].num_blockettes = 2; },
     [](SoundVolume &v) { v.data[1].timing_quality = 90; }},
    {"blockette-chain", [](SoundVolume &v) { v.data[1].begin_data = 55; },
     [](SoundVolume &v) { v.data[1].begin_data = 56; }},
    {"data-rate", [](SoundVolume &v) { v.data[1].actual_rate = 20.01F; },
     [](SoundVolume &v) { v.data[1].actual_rate = 20.001F; }},
    {"data-order",
     [](SoundVolume &v) {
         std::swap(v.data[0], v.data[1]);
         std::swap(v.series[0].first.seq, v.series[0].last.seq);
     },
     [](SoundVolume &v) {
         v.series.clear();
         v.channels.push_back({.channel = "BHN", .dip = 0, .exponent = 9});
         v.data.push_back({.channel = "BHN", .samples = 200, .b1000 = DataOnly{}});
     }},
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

TEST(CheckRules, NegativeCountsAreBad)
{
    SoundVolume volume;
    volume.response[2].second.replace(9, 4, "-001");
    volume.edit = [](std::string bytes) {
        const std::size_t entry = bytes.find("2024,001~2024,002~000004");
        return bytes.replace(entry - 4, 4, "-999");
    };
    EXPECT_EQ(findings(volume.bytes()),
              "1: blockette 012 (number 1 of its record): Negative count -999 of a list +0 "
              "[bad-blockette]\n"
              "3: blockette 054 (number 1 of its record) of XX_QRL__BHZ 2020,001: Negative count "
              "-1 of a list; the response of its channel is not judged +0 [bad-blockette]\n");
}

TEST(CheckRules, CountsWhatIsRepeated)
{
    SoundVolume volume;
    DataRecord next = volume.data[1];
    for (const char *time : {"10:00.0000", "20:00.0000", "20:05.0000"}) {
        next.time = std::string("2024,001,00:") + time;
        volume.data.push_back(next);
    }
    std::string repeated;
    for (const std::string told = findings(volume.bytes()); const char *rule : {"gap", "overlap"})
        for (std::size_t end = 0; (end = told.find(std::string("[data-") + rule, end)) != told.npos;
             ++end)
            repeated += told.substr(told.rfind('\n', end) + 1,
                                    told.find('\n', end) - told.rfind('\n', end));
    EXPECT_EQ(repeated, "7: XX_QRL__BHZ 2024,001,00:00:20.0000: a gap of 0:09:40, until "
                        "2024,001,00:10:00.0000 +1 [data-gap]\n"
                        "9: XX_QRL__BHZ 2024,001,00:20:05.0000: overlaps other data by 5 s, up to "
                        "2024,001,00:20:10.0000 +0 [data-overlap]\n");
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
