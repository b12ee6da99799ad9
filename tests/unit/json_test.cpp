// JSON text: strings, numbers, times, and whole lines.
#include "compose/files.h"
#include "platform/json_text.h"
#include "programs/json_lines.h"
#include "support/capture.h"
#include "support/recipe.h"
#include "json/time.h"

#include <bit>
#include <gtest/gtest.h>
#include <limits>
#include <random>

namespace
{

using namespace std::string_literals;

/// What f(to) writes.
template <class F> std::string written(F &&f)
{
    std::string text(4096, '\0');
    char *end = f(text.data());
    text.resize(end ? static_cast<std::size_t>(end - text.data()) : 0);
    return text;
}

TEST(JsonText, EscapesAndRecodes)
{
    const struct {
        std::string text, expected;
    } cases[] = {
        {"", R"("")"},
        {"a plain text of some length", R"("a plain text of some length")"},
        {"12345678\"", R"("12345678\"")"},
        {"back\\slash and more", R"("back\\slash and more")"},
        {"\b\t\n\f\r", R"("\b\t\n\f\r")"},
        {"\0\x01\x1f\x7f"s, R"("\u0000\u0001\u001f\u007f")"},
        {"\x80\x9f\xa0\xbf\xc0\xff", "\"\\u0080\\u009f\u00a0\u00bf\u00c0\u00ff\""},
    };
    for (const auto &one : cases)
        EXPECT_EQ(written([&](char *to) { return json::put_string(to, one.text); }), one.expected);
    // A byte that does not stay is seen wherever it stands among eight.
    for (int byte = 0; byte < 256; ++byte)
        for (std::size_t at = 0; at < 8; ++at) {
            std::string eight = "~~~~ !~~";
            eight[at] = static_cast<char>(byte);
            const std::string one =
                written([&](char *to) { return json::put_string(to, eight.substr(at, 1)); });
            EXPECT_EQ(written([&](char *to) { return json::put_string(to, eight); }),
                      '"' + eight.substr(0, at) + one.substr(1, one.size() - 2) +
                          eight.substr(at + 1) + '"');
        }
}

std::string number(auto value)
{
    return written([&](char *to) { return json::put_number(to, value); });
}

TEST(JsonText, WritesNumbersThatReadBack)
{
    constexpr double Infinity = std::numeric_limits<double>::infinity();
    const struct {
        double value;
        std::string expected;
    } cases[] = {
        {0, "0"},
        {-0.0, "-0"},
        {1, "1"},
        {-90, "-90"},
        {9999, "9999"},
        {0.1, "0.1"},
        {100000, "1e+05"},
        {46.5123, "46.5123"},
        {1e22, "1e+22"},
        {5e-324, "5e-324"},
        {Infinity, "null"},
        {-Infinity, "null"},
        {1e-5, "1e-05"},
        {0.5, "0.5"},
        {-9999.5, "-9999.5"},
        {std::nan(""), "null"},
    };
    for (const auto &[value, expected] : cases)
        EXPECT_EQ(number(value), expected);
    for (const std::int64_t value :
         {std::numeric_limits<std::int64_t>::min(), std::numeric_limits<std::int64_t>::max(),
          std::int64_t{-10}, std::int64_t{99}, std::int64_t{100}, std::int64_t{1234567}})
        EXPECT_EQ(number(value), std::to_string(value));
    std::mt19937_64 random(1);
    for (int i = 0; i < 100000; ++i) {
        const auto value = std::bit_cast<double>(random());
        if (std::isfinite(value)) {
            EXPECT_EQ(std::strtod(number(value).c_str(), nullptr), value);
        }
    }
}

/// "TIME SECONDS" of a text, with what else is said of it.
std::string told(std::string_view text, bool is_end)
{
    const json::TimeTold told = json::told_by(text, is_end);
    std::string all = "none";
    if (told.parts)
        all = written([&](char *to) { return json::put_time(to, *told.parts); }) + ' ' +
              written([&](char *to) { return json::put_seconds(to, time_of(*told.parts)); });
    return all + (told.leap_second ? " leap" : "") + (told.shows_raw ? " raw" : "") +
           (told.bad ? " bad" : "");
}

TEST(JsonTime, HasOneWidth)
{
    const struct {
        std::string_view time, start, end;
    } cases[] = {
        {"2021,152", R"("2021-06-01T00:00:00.000000Z" 1622505600.000000)", ""},
        {"2021,152,23:59:58.", R"("2021-06-01T23:59:58.000000Z" 1622591998.000000)", ""},
        {"2021,152,23:59:58.12", R"("2021-06-01T23:59:58.120000Z" 1622591998.120000)", ""},
        {"1969,365,23:59:59.9999", R"("1969-12-31T23:59:59.999900Z" -0.000100)", ""},
        {"2016,366,23:59:60.0001", R"("2017-01-01T00:00:00.000100Z" 1483228800.000100 leap)", ""},
        {"9999,365,23:59:60", "none leap raw", "none raw"},
        {"2021,1,1:2:3.123456000", R"("2021-01-01T01:02:03.123456Z" 1609462923.123456)", ""},
        {"2021,1,1:2:3.123456789", R"("2021-01-01T01:02:03.123456Z" 1609462923.123456 raw)", ""},
        {"2499,365", R"("2499-12-31T00:00:00.000000Z" 16725139200.000000)", ""},
        {"2599,365,23:59:59.9999", R"("2599-12-31T23:59:59.999900Z" 19880899199.999900)",
         "none raw"},
        {"", "none", ""},
        {"unknown", "none raw bad", ""},
        {"2020,999", "none raw bad", ""},
    };
    for (const auto &one : cases) {
        EXPECT_EQ(told(one.time, false), one.start) << one.time;
        EXPECT_EQ(told(one.time, true), one.end.empty() ? one.start : one.end) << one.time;
    }
}

/// The lines for a recipe's volume.
std::string lines(const std::string &recipe, const char *types, json::Style style = {})
{
    const std::string path = testing::TempDir() + "json_test." + std::to_string(getpid());
    write_file(path, parse_recipe(recipe).volume());
    const Captured captured = capture([&] {
        LinesWanted wanted;
        wanted.style = std::move(style);
        EXPECT_TRUE(wanted.selection.read(types));
        print_lines(&console(), reading_options(&console(), nullptr), path, wanted);
    });
    unlink(path.c_str());
    std::string all = captured.out;
    for (std::size_t at = all.find(path); at != std::string::npos; at = all.find(path))
        all.replace(at, path.size(), "VOLUME");
    return all;
}

TEST(JsonLines, TellWhatAVolumeHolds)
{
    const char *recipe = R"(records 512
header A
034 001|M/S~Velocity~
047 0016|DEC~8.0000E+01|00004|00001|\s4.3750E-02|-4.3750E-02
405 a "b"\x09
header S
050 QRL\s\s| 34.945900|-106.457200| 1850.0|0002|001|Quarry~002|3210|10|2020,001~2020,999~N|G\s
060 01|02|02|0016|0099
sequence 42
data sta=QRL loc= chan=BHZ net=G time=2024,366,23:59:59.5000 samples=9 rate=4,1 b1000=11,1,9
 correction=5000
raw 000004T\s
)";
    const std::string expected =
        R"({"item":"blockette","type":34,"name":"Units Abbreviation","file":0,"offset":8,)"
        R"("record":1,"length":23,"unit_lookup_code":1,"unit_name":"M/S",)"
        R"("unit_description":"Velocity"})"
        "\n"
        R"({"item":"blockette","type":405,"name":"Beam Delay","file":0,"offset":88,"record":1,)"
        R"("length":13,"parsed":false,"text":"a \"b\"\t"})"
        "\n"
        R"({"item":"blockette","type":50,"name":"Station Identifier","file":0,"offset":520,)"
        R"("record":2,"length":84,"station":"QRL","latitude":34.9459,"longitude":-106.4572,)"
        R"("elevation":1850,"site_name":"Quarry","network_identifier_code":2,)"
        R"("network_identifier":null,"word_order_32_bit":3210,"word_order_16_bit":10,)"
        R"("start_effective_date":"2020-01-01T00:00:00.000000Z","end_effective_date":null,)"
        R"("end_effective_date_raw":"2020,999","update_flag":"N","network":"G","bad":true})"
        "\n"
        R"({"item":"blockette","type":60,"name":"Response Reference","file":0,"offset":604,)"
        R"("record":2,"length":21,"network":"G","station":"QRL","location":null,"channel":null,)"
        R"("epoch_start":null,"epoch_end":null,"number_of_stages":1,"stages":[{"stage_sequence_number":2,)"
        R"("number_of_responses":2,"responses":[{"response_code":16,"response":"DEC"},)"
        R"({"response_code":99,"response":null}]}]})"
        "\n"
        R"({"item":"file","volume":"VOLUME","file":0,"complete":false,"cut":true,"failed":false,"stopped":false,)"
        R"("bytes":1544,"records":4,"logical_records":4,"parameter_bytes":107,"data_bytes":512,)"
        R"("waste_bytes":925,"types":[{"item":"data","name":"Data","count":1,"bytes":512},)"
        R"({"item":"blockette","type":34,"name":"Units Abbreviation","count":1,"bytes":23},)"
        R"({"item":"blockette","type":47,"name":"Decimation Dictionary Blockette","count":1,)"
        R"("bytes":0},{"item":"blockette","type":50,"name":"Station Identifier","count":1,)"
        R"("bytes":84},{"item":"blockette","type":60,"name":"Response Reference","count":1,)"
        R"("bytes":0},{"item":"blockette","type":405,"name":"Beam Delay","count":1,"bytes":0}]})"
        "\n";
    EXPECT_EQ(lines(recipe, "034,405,050,060,file"), expected);
    const std::string data = lines(recipe, "data");
    for (const char *part :
         {R"("offset":1024,"record":42,"length":512,)",
          R"("start":"2025-01-01T00:00:00.000000Z","end":"2025-01-01T00:00:02.000000Z")"})
        EXPECT_NE(data.find(part), std::string::npos) << data;
}

TEST(JsonLines, TellWhenSamplesWereTaken)
{
    const struct {
        std::string words, start, end, rate;
    } cases[] = {
        {"time=2024,366,23:59:59.5000 samples=9 rate=4,1 correction=5000",
         "2025-01-01T00:00:00.000000Z", "2025-01-01T00:00:02.000000Z", "4"},
        // Microseconds, back into the day before, too; the true rate.
        {"samples=3 rate=20,1 blk=1001/u1:1/i1:-50/z2", "2023-12-31T23:59:59.999950Z",
         "2024-01-01T00:00:00.099950Z", "20"},
        {"samples=5 rate=20,1 blk=1001/u1:1/i1:99/z2 blk=100/f4:0.75/z4",
         "2024-01-01T00:00:00.000099Z", "2024-01-01T00:00:05.333432Z", "0.75"},
        {"samples=5 rate=4,1 blk=100/f4:0/z4", "2024-01-01T00:00:00.000000Z",
         "2024-01-01T00:00:01.000000Z", "4"},
        {"samples=2 rate=-3,-4", "2024-01-01T00:00:00.000000Z", "2024-01-01T00:00:12.000000Z",
         "0.08333333333333333"},
        {"samples=2 rate=3,1", "2024-01-01T00:00:00.000000Z", "2024-01-01T00:00:00.333333Z", "3"},
        // Leap seconds between the samples.
        {"time=2016,366,23:59:59.0000 samples=4 rate=1,1 activity=10",
         "2016-12-31T23:59:59.000000Z", "2017-01-01T00:00:01.000000Z", "1"},
        {"time=2016,366,23:59:57.0000 samples=4 rate=1,1 activity=20",
         "2016-12-31T23:59:57.000000Z", "2017-01-01T00:00:01.000000Z", "1"},
        // The fraction is none, whatever the correction.
        {"time=2024,001,00:00:00.10000 correction=-1", "", "", "20"},
        {"time=2024,001,00:00:00.10001 activity=2", "", "", "20"},
    };
    const auto member = [](const std::string &key, const std::string &time) {
        return '"' + key + "\":" + (time.empty() ? "null" : '"' + time + '"');
    };
    for (const auto &one : cases) {
        const std::string line = lines("data b1000=11,1,9 " + one.words, "data");
        for (const std::string &part : {member("start", one.start), member("end", one.end),
                                        "\"sample_rate\":" + one.rate + ","})
            EXPECT_NE(line.find(part), std::string::npos) << part << '\n' << line;
        if (one.start.empty()) {
            EXPECT_NE(line.find(member("record_start_time", "")), std::string::npos) << line;
            EXPECT_NE(line.find("\"bad\":true"), std::string::npos) << line;
        }
    }
}

TEST(JsonLines, HaveTheDataBlockettes)
{
    const std::string head = "data time=2024,061,00:00:00.0000 b1000=11,1,9 ";
    const std::pair<std::string, std::string> cases[] = {
        {"blk=1001/u1:99/i1:-7/z1/u1:7 blk=100/f4:0.1/z4 blk=999",
         R"("actual_sample_rate":0.10000000149011612,"microseconds":-7,"timing_quality":99,)"
         R"("frame_count":7,"blockettes":[{"type":1000,"offset":48,"encoding_format":11,)"
         R"("word_order":1,"data_record_length":9},{"type":1001,"offset":56,"timing_quality":99,)"
         R"("microseconds":-7,"frame_count":7},{"type":100,"offset":64,)"
         R"("actual_sample_rate":0.10000000149011612,"flags":0},{"type":999,"offset":76}]})"},
        {"blk=395/z12 blk=395/t:2024,367,00:00:00.0001/z2",
         R"({"type":395,"offset":56,"end_of_calibration_time":null},{"type":395,"offset":72,)"
         R"("end_of_calibration_time":null,"end_of_calibration_time_raw":"2024,367,00:00:00.0001"}],)"
         R"("bad":true})"},
        {"blk=100/u4:2139095040/z4 blk=405/u2:1/u2:65535 begin=76",
         R"({"type":100,"offset":56,"actual_sample_rate":null,"flags":0},{"type":405,)"
         R"("offset":68,"delay_values":[1,65535]}],"bad":true})"},
        {"blk=2000/u2:21/u2:18/u4:1/u1:1/z1/u1:1/a3:\"x~/a3:abc",
         R"("opaque_data_flags":0,"stream_oriented":false,"not_to_be_repackaged":false,)"
         R"("fragmentation":0,"file_information":0,"number_of_opaque_header_fields":1,)"
         R"("opaque_header_fields":[{"opaque_header_field":"\"x"}],"opaque_data":"YWJj"}]})"},
        {"b1000=11,1,7 length=128 blk=500/f4:1/t:2024,061,01:02:03.0004/i1:5/u1:6/u4:7/a16:E/a40:M",
         R"("exception_type":"E","clock_model":"M","clock_status":null}],)"
         R"("remark":"blockette 500 at byte 56 is cut","cut":true,"bad":true})"},
    };
    for (const auto &[words, expected] : cases) {
        const std::string line = lines(head + words, "data");
        EXPECT_NE(line.find(expected), std::string::npos) << words << '\n' << line;
    }
}

TEST(JsonLines, InventNothing)
{
    const std::string record = "records 256\nheader A\n";
    const std::pair<std::string, std::string> cases[] = {
        // A number that is none, with something behind it, not finite, or blank.
        {"050 QRL\\s\\s|34 56 78N\\s|-106.457200|      x|0002|001|Quarry~00A|3210|  "
         "|2020,001~~N|G\\s",
         R"("latitude":null,"longitude":-106.4572,"elevation":null,"site_name":"Quarry",)"
         R"("network_identifier_code":null,"network_identifier":null,"word_order_32_bit":3210,)"
         R"("word_order_16_bit":null,)"},
        {"048 0001|X~6.02D+09\\s\\s\\s\\s|         inf|00",
         R"("sensitivity_or_gain":6.02e+09,"frequency":null,"number_of_history_values":0,)"
         R"("history":[],"bad":true})"},
        {"048 0001|X~1.5d 02\\s\\s\\s\\s\\s|   1.0E+0\\s\\s\\s|00",
         R"("sensitivity_or_gain":150,"frequency":1,"number_of_history_values":0,"history":[]})"},
        {"048 0001|X~0x10        |            |-1",
         R"("sensitivity_or_gain":null,"frequency":null,"number_of_history_values":null,)"
         R"("history":[],"bad":true})"},
        // A blank that the standard allows.
        {"051 2020,001~2020,002~0001|      ",
         R"("comment_code":1,"comment":null,"comment_level":null})"},
        {"051 2020,001~2020,002~    |     1",
         R"("comment_code":null,"comment":null,"comment_level":1,"bad":true})"},
        {"057 01|20.0000000|5.000|00000|           | 0.0000E+00",
         R"("decimation_factor":5,"decimation_offset":0,"estimated_delay":null,)"
         R"("correction_applied":0,"bad":true})"},
        // A list is read on behind an entry that is bad, and holds what is there.
        {"041 0001|X~A|000|000|0003| 1.0000000E+00|       no\\s\\s\\s\\s\\s| 3.0000000E+00",
         R"("coefficients":[{"coefficient":1},{"coefficient":null},{"coefficient":3}],"bad":true})"},
        {"058 00|  1.0000E+00|  1.0000E+00|02|  5.0000E-01|  1.0000E+00|2020,001~",
         R"("number_of_history_values":2,"history":[{"sensitivity":0.5,"frequency":1,)"
         R"("time":"2020-01-01T00:00:00.000000Z"}],"cut":true,"bad":true})"},
        {"061 01|F~A|000|000|0003| 1.0000000E+00| 2.0000000E+00",
         R"("number_of_coefficients":3,"coefficients":[{"coefficient":1},{"coefficient":2}],)"
         R"("cut":true,"bad":true})"},
        {"034 001|M/S~Velo", R"("unit_name":"M/S","unit_description":null,"cut":true,"bad":true})"},
    };
    for (const auto &[words, expected] : cases) {
        const std::string line = lines(record + words + "\n", words.substr(0, 3).c_str());
        EXPECT_NE(line.find(expected), std::string::npos) << words << '\n' << line;
    }
}

TEST(JsonLines, AreWrittenAsAsked)
{
    const std::string station =
        "header S\n050 QRL\\s\\s| 34.945900|-106.457200| 1850.0|0002|001|"
        "caf\\xC3\\xA9 \\xC3~002|3210|10|2016,366,23:59:60~2599,365~N|G\\s\n";
    const std::string unit = "header A\n034 001|M/S~caf\\xC3\\xA9~\n";
    const struct {
        std::string recipe, expected;
        json::Style style;
    } cases[] = {
        {unit, "\"unit_description\":\"caf\u00c3\u00a9\"", {}},
        {unit, "\"unit_description\":\"caf\u00e9\"", {.takes_utf8 = true}},
        {station, "\"site_name\":\"caf\u00c3\u00a9 \u00c3\"", {.takes_utf8 = true}},
        {station,
         R"("start_effective_date":"2017-01-01T00:00:00.000000Z","end_effective_date":null,)"
         R"("end_effective_date_raw":"2599,365","update_flag":"N","network":"G","leap_second":true})",
         {}},
        {station,
         R"("start_effective_date_seconds":1483228800.000000,"end_effective_date":null,)"
         R"("end_effective_date_seconds":null,)",
         {.has_seconds = true}},
        {station, R"({"volume":"VOLUME","item":"blockette","type":50,)", {.has_name = true}},
        {station, R"({"volume":"VOLUME","item":"file","file":0,)", {.has_name = true}},
        {"", R"({"item":"file","volume":"VOLUME","file":0,"complete":true,"cut":false,)", {}},
    };
    for (const auto &one : cases) {
        const std::string line = lines(one.recipe, "034,050", one.style);
        EXPECT_NE(line.find(one.expected), std::string::npos) << one.expected << '\n' << line;
    }
}

TEST(JsonLines, TellNumbersWithoutASign)
{
    const std::pair<std::string, std::string> cases[] = {
        {"samples=40000 rate=1,1", R"("samples":40000,)"},
        {"rate=20,0", R"("sample_rate":0,"samples":100,"sample_rate_factor":20,)"},
        {"begin=40000", R"("beginning_of_data":40000,)"},
    };
    for (const auto &[words, expected] : cases) {
        const std::string line = lines("data b1000=11,1,9 " + words, "data");
        EXPECT_NE(line.find(expected), std::string::npos) << words << '\n' << line;
    }
}

TEST(JsonLines, AreSelectedByType)
{
    for (const char *types : {"050", "5", "050,052", "data", "file,data,999"})
        EXPECT_TRUE(Selection().read(types)) << types;
    for (const char *types : {"", ",", "050,", "x", "0500", "-50", "+5", "50 ", " 50", "Data"})
        EXPECT_FALSE(Selection().read(types)) << types;
}

} // namespace
