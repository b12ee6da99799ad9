// Parsers and listing together: the text of a blockette in, all that is shown of it out.
#include "blockette/blockette.h"
#include "blockette/scan.h"
#include "compose/blockette_text.h"
#include "listing/pbrief.h"
#include "support/capture.h"
#include "volume/seed.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace
{

template <class Blk> const Blk &as(const Record &record)
{
    return *static_cast<const Blk *>(record.get());
}

/// A blockette of declared length 99 in memory that ends where its text does.
Record parsed(int type, std::string_view fields)
{
    const std::string text = formatted<"%03d0099">(type) + std::string(fields);
    const std::vector<char> exact(text.begin(), text.end());
    return parse_blk({exact.data(), exact.size()}, type);
}

/// Runs of blanks are one and the type's name is dropped: columns are the golden cases' concern.
std::string without_columns(std::string text)
{
    for (std::size_t end = 0; (end = text.find(">\n", end)) != std::string::npos;) {
        const std::size_t from = text.find_last_not_of(' ', text.rfind('<', end) - 1) + 1;
        text.erase(from, end + 1 - from);
    }
    const auto both_blank = [](char a, char b) { return a == ' ' && b == ' '; };
    text.erase(std::unique(text.begin(), text.end(), both_blank), text.end());
    return text;
}

/// Its messages and listing; "flagged" when a field was bad, "ended" when the run would have been.
std::string shown(int type, std::string_view fields, const ListingStyle &style = {})
{
    const Captured all = capture([&] {
        const Record record = parsed(type, fields);
        pbrief_blk(out(), record.get(), type, style);
    });
    return without_columns(all.err + all.out) + (parsing().Bad_blkflag ? "flagged\n" : "") +
           (all.status >= 0 ? "ended " + std::to_string(all.status) : "");
}

struct Case {
    int type;
    std::string fields;
    std::string expected;
};

void check(const std::vector<Case> &cases)
{
    for (const auto &[type, fields, expected] : cases)
        EXPECT_EQ(shown(type, fields), expected) << "B" << type << " of '" << fields << "'";
}

std::string repeated(int count, std::string_view text)
{
    std::string all;
    while (count-- > 0)
        all += text;
    return all;
}

/// Fields of 12 characters (or `width`), right-justified, from words between blanks.
std::string reals(std::string_view words, std::size_t width = 12)
{
    std::string fields;
    while (!words.empty()) {
        const std::string_view word = words.substr(0, words.find(' '));
        fields += std::string(width - word.size(), ' ') + std::string(word);
        words.remove_prefix(std::min(word.size() + 1, words.size()));
    }
    return fields;
}

std::string too_long(const std::string &kept, std::size_t room, std::string_view from)
{
    return formatted<"quarl: variable string '%s' exceeded %d characters at %.80s\n">(kept, room,
                                                                                      from);
}

TEST(Scan, Numbers)
{
    const std::vector<std::tuple<std::string, int, double>> rows = {
        {"  12", 12, 12},
        {"    ", 0, 0},
        {"", 0, 0},
        {"12AB", 12, 12},
        {"-07 ", -7, -7},
        {"1\t2", 1, 1},
        {"2.5E", 2, 2.5},
        {"1.5E 02", 1, 150},
        {"-2.5e-03", -2, -0.0025},
        {"1e 2E 3", 1, 100},
        {"1.5.2", 1, 1.5},
        {"0x1p4", 0, 16},
        {"99999999999999999999", -1, 1e20}};
    for (const auto &[text, as_int, as_real] : rows) {
        const std::string followed = text + "7~";
        Cursor ints(followed);
        Cursor doubles(followed);
        EXPECT_EQ(scan_int(&ints, static_cast<int>(text.size())), as_int) << text;
        EXPECT_EQ(scan_double(&doubles, static_cast<int>(text.size())), as_real) << text;
        EXPECT_EQ(ints.rest(), "7~");
        EXPECT_EQ(doubles.rest(), "7~");
    }
    EXPECT_EQ(parsing().Bad_blkflag, 0);
}

TEST(Scan, FieldsEndAtNul)
{
    for (std::size_t size = 1; size <= 17; ++size)
        for (std::size_t at = 0; at < size; ++at) {
            std::string text(size + 1, 'x');
            text[at] = '\0';
            Cursor in(text);
            EXPECT_EQ(in.field(size), std::string(at, 'x')) << size;
            EXPECT_EQ(in.field(1), "x");
        }
}

TEST(Scan, VariableTexts)
{
    const std::vector<std::tuple<std::string, std::string, std::string>> rows = {
        {"~x", "", "x"},
        {"  ~x", "", "x"},
        {" \tA \t~x", "A", "x"},
        {"abc~x", "abc", "x"},
        {"ab", "ab", ""},
        {"", "", ""},
        {{"ab\0~x", 5}, "ab", {"\0~x", 3}},
        {"ab cdef~x", "ab ", "x"},
        {"ab c", "ab ", ""},
        {"ab " + repeated(99, "y"), "ab ", ""}};
    for (const auto &[text, value, rest] : rows) {
        SCOPED_TRACE(text);
        const bool cut = value.ends_with(' ');
        parsing().Bad_blkflag = 0;
        Cursor in(text);
        char dest[6] = "12345";
        const Captured all = capture([&] { scan_var_str(&in, dest, 4); });
        EXPECT_EQ(dest, value);
        EXPECT_EQ(dest[4], '5') << "wrote behind its room";
        EXPECT_EQ(in.rest(), rest);
        EXPECT_EQ(all.err, cut ? too_long("ab ", 4, text) : "");
        EXPECT_EQ(parsing().Bad_blkflag, cut);
    }
}

TEST(Blockette, VolumeIndexAndDictionaries)
{
    const std::string span = "a~b~000007";
    const std::string keys = repeated(79, "k");
    const std::string n50 = repeated(50, "n");
    std::string spans;
    for (int i = 0; i < 999; ++i)
        spans += formatted<"\t %d Start: a End: b seq# 7\n">(i);
    check({
        {10, "", "B010 99 Version 0.0 LogRecLen 0 Start: End:\n"},
        {10, " 2.3082005,001,00:00:00.00000~2005,002~~~~",
         too_long("2005,001,00:00:00.0000", 23, "2005,001,00:00:00.00000~2005,002~~~~") +
             "B010 99 Version 2.3 LogRecLen 8 Start:2005,001,00:00:00.0000 End: "
             "2005,002\nflagged\n"},
        {11, "002ANMO 000003ABCDE00000x", "B011 99 2 Stations\n\t 0 ANMO 3\n\t 1 ABCDE 0\n"},
        {11, "000", "B011 99 0 Stations\n"},
        {11, "002ANMO 000003", "B011 99 2 Stations\n\t 0 ANMO 3\n\t 1 0\n"},
        {12, "000-", "B012 99 #spans 0\n"},
        {12, "0999" + repeated(999, span), "B012 99 #spans 999\n" + spans},
        {12, "1001" + repeated(1001, span), "B012 99 #spans 999\n" + spans + "flagged\n"},
        {30, "F~000105003F1 ~ ~M", "B030 99 F id# 1 type# 50 3 keys\n\t 0 F1 \n\t 1 \n\t 2 M \n"},
        {30, "~000200000", "B030 99 id# 2 type# 0 0 keys\n"},
        {30, "~000200001" + keys + "k~",
         too_long(keys, 80, keys + "k") + "B030 99 id# 2 type# 0 1 keys\n\t 0 " + keys +
             " \nflagged\n"},
        {31, "0044 Gap~000", "B031 99 Id# 44 Class: units: 0 'Gap'\n"},
        {32, "07A~B~C~", "B032 99 Id# 7 Author:A Catalog/Date:B Publisher:C\n"},
        {33, "001" + n50 + "~", "B033 99 Id# 1 '" + n50 + "'\n"},
        {33, "001" + n50 + "n~",
         too_long(n50, 51, n50 + "n~") + "B033 99 Id# 1 '" + n50 + "'\nflagged\n"},
        {34, "  1M/S~Velocity~", "B034 99 Id# 1 Unit:'M/S' Desc:'Velocity'\n"},
        {99, "", "quarl: WARNING(parse_blk) - Unknown blockette: 99\nUnknown blockette: 99\n"},
    });
}

/// Needs a process in which no station was parsed before.
TEST(Blockette, StationAndItsComments)
{
    EXPECT_STREQ(as<blk_051_t>(parsed(51, "2001~~00010")).network_code, "") << "no station yet";
    EXPECT_STREQ(as<blk_052_t>(parsed(52, b052({.subchannel = 1}))).network_code, "");
    EXPECT_NE(getarr(parsing().Geoscope_channels, ":BHZ1"), nullptr);
    // The numbers of channels and comments are not read, whatever they hold.
    const std::string site = "ANMO  34.945900-106.457200 1850.0  x?  2Site~001321010~~NIU";
    check({{50, site,
            "B050 99 ANMO IU ( 34.945900,-106.457200) 1850.0m @ 'Site' NetId# 1 Long:3210 Word:10 "
            "Order Start: End: Update:N\n"},
           {51, "2001,001~~   1-00002", "B051 99 Start: 2001,001 End: Id# 1 Level# -2\n"}});
    EXPECT_STREQ(as<blk_050_t>(parsed(50, site.substr(0, site.size() - 1))).network_code, "I");
    const Record comment = parsed(51, "2001~~00010");
    EXPECT_STREQ(as<blk_051_t>(comment).station, "ANMO");
    EXPECT_STREQ(as<blk_051_t>(comment).network_code, "I");
}

TEST(Blockette, ChannelOrientations)
{
    (void)parsed(50, b050({.station = "ABC"}));
    const struct {
        const char *location;
        int subchannel;
        double azimuth;
        double dip;
        std::string channel;
        const char *key; ///< without the station
    } rows[] = {{"", 0, 0, 0, "MHZ", nullptr},         {"10", 0, 0, 0, "MHZ10", nullptr},
                {"", -1, 0, 0, "MHZ", nullptr},        {"", 1, 0, -90, "MHZZ", "MHZ1"},
                {"00", 2, 178, 0, "MHZ00N", "MHZ002"}, {"", 2, 3, 0, "MHZ2", "MHZ2"},
                {"", 3, 270, 5, "MHZE", "MHZ3"},       {"", 1, 120, -60, "MHZB", "MHZ1"},
                {"", 1, 60, 60, "MHZC", "MHZ1"},       {"", 1, 180, -60, "MHZA", "MHZ1"},
                {"", 4, 189.9, 1.9, "MHZN", "MHZ4"},   {"", 4, 190, 0, "MHZ4", "MHZ4"},
                {"", 4, -1.9, 0, "MHZN", "MHZ4"},      {"", 5, 2, 90, "MHZ5", "MHZ5"},
                {"", 5, 1.9, 88.1, "MHZZ", "MHZ5"},    {"", 5, 90, 10, "MHZ5", "MHZ5"},
                {"", 5, 91.9, -9.9, "MHZE", "MHZ5"},   {"", 6, 360, 0, "MHZ6", "MHZ6"},
                {"", 6, 240, 58, "MHZ6", "MHZ6"},      {"", 6, 300, 61.9, "MHZB", "MHZ6"},
                {"", 6, 241.9, 61.9, "MHZC", "MHZ6"},  {"-1", 7, 0, -60, "MHZA", "MHZ7"},
                {"", 10, 45, 45, "MHZ:", "MHZ:"}};
    for (const auto &row : rows) {
        SCOPED_TRACE(row.channel);
        Record record;
        const Captured all = capture([&] {
            record = parsed(52, b052({.location = row.location,
                                      .channel = "MHZ",
                                      .subchannel = row.subchannel,
                                      .azimuth = row.azimuth,
                                      .dip = row.dip}));
        });
        EXPECT_EQ(as<blk_052_t>(record).channel, row.channel);
        EXPECT_STREQ(as<blk_052_t>(record).station, "ABC");
        const bool odd = row.key && row.channel == row.key;
        EXPECT_EQ(all.err, odd ? "quarl: Warning... Azimuth and Dip out of Range on ABC," +
                                     row.channel + "\n"
                               : "");
        const char *last = row.key
                               ? getarr(parsing().Geoscope_channels, std::string("ABC:") + row.key)
                               : &row.channel.back();
        ASSERT_NE(last, nullptr);
        EXPECT_EQ(*last, row.channel.back());
    }
}

TEST(Blockette, ChannelRecordLengths)
{
    (void)parsed(50, b050({.station = "ABC"}));
    for (int exponent = 0; exponent < 15; ++exponent) {
        Record record;
        const Captured all = capture([&] { record = parsed(52, b052({.exponent = exponent})); });
        const bool legal = exponent >= 8 && exponent <= 12;
        EXPECT_EQ(as<blk_052_t>(record).record_length, legal ? exponent : 12);
        EXPECT_EQ(parsing().Bad_blkflag, 0);
        EXPECT_EQ(
            all.err,
            exponent == 12 ? ""
            : legal ? formatted<"quarl: ABC:BHZ has a non-standard block length %d\n">(exponent)
                    : formatted<"quarl: ABC:BHZ block length is %d which is out of the legal range "
                                "8-12: setting to 12\n">(exponent));
    }
}

TEST(Blockette, ShortChannelLines)
{
    const std::string fields = b052({.location = "00",
                                     .instrument = 7,
                                     .comment = "vault",
                                     .units_signal = 3,
                                     .depth = 1.5,
                                     .azimuth = 90,
                                     .dip = 0,
                                     .end = "2021,001"});
    const std::string tail = " 1.50m ( 90.00, 0.00) 20.00sps 2020,001 to 2021,001 'vault'\n";
    EXPECT_EQ(shown(52, fields, {.simplified = true}), "B052 BHZ 00" + tail);
}

const std::string Poles = "\t n Poles (r, i) Errors(r, i) \n";
const std::string Zeros = "\t n Zeros (r, i) Errors(r, i) \n";
const std::string Paz = "B053 99 Type:A Stage# 1 Input Units: 1 Output Units: 2 Norm:";
const std::string Poly = "B062 99 stage#1 Input:1 Output:2 (0.0000-1.0000 ";
const std::string A01 = "A01001002";

TEST(Blockette, Responses)
{
    const std::string poly = reals("0 1 2 3 4");
    const std::string range = ") approx-range=(2.0-3.0) max_err=4.0 order=";
    check({
        {53,
         A01 + reals("2 0.5") + "001" + reals("3 -4 0 .1") + "002" + reals("-1 2 0 0 -1 -2 nan 0"),
         Paz + "2.0000e+00 @ 0.50Hz 2 Poles 1 Zeros\n" + Poles +
             "\t 0 (-1.00000E+00 +2.00000e+00)\n"
             "\t 1 (-1.00000E+00 -2.00000e+00) ( nan 0.00000e+00) \n" +
             Zeros + "\t 0 (+3.00000E+00 -4.00000e+00) ( 0.00000e+00 1.00000e-01)\n"},
        {53, A01 + reals("2 0.5") + "000000",
         Paz + "2.0000e+00 @ 0.50Hz 0 Poles 0 Zeros\n" + Poles + Zeros},
        {53, A01 + reals("2 0.5") + "001" + reals("1"), // the count exceeds the text
         Paz + "2.0000e+00 @ 0.50Hz 0 Poles 1 Zeros\n" + Poles + Zeros +
             "\t 0 (+1.00000E+00 +0.00000e+00)\n"},
        {54,
         "D02002003"
         "0001" +
             reals(".5 1") + "0002" + reals("1 -1 2 0"),
         "B054 99 Type:D stage# 2 Input: 2 Output: 3 1 Numerators, 2 Denominators\n"
         "\t 0 +5.00000E-01 +1.00000e+00\n\t 0 +1.00000E+00 -1.00000e+00\n\t 1 +2.00000E+00\n"},
        {55,
         "03001002"
         "0000",
         "B055 99 stage# 3 Input: 1 Output: 2 0 frequencies\n"},
        {58, "00" + reals("6.3e8 0.05") + "01x", // whatever the history holds, it is not read
         "B058 99 Stage# 0 Sensitivity::6.300000e+08 Freq: 0.0500Hz\n"},
        {58, "03" + reals("1 2") + "00", "B058 99 Stage# 3 Gain:1.000000e+00 Freq: 2.0000Hz\n"},
        {58, "03         E 5" + reals("2"), // the field as it was read: with the blank mended
         "quarl: Couldn't convert ' E+5' to a real number.\nB058 99 Stage# 3 Gain:0.000000e+00 "
         "Freq: 2.0000Hz\nflagged\n"},
        {59, "2001,001~~   1     0", "B059 99 Start: 2001,001 End: Comment# 1 Level# 0\n"},
        {61, "04~B0030030002" + reals(".5", 14),
         "B061 99 stage# 4 '' Symmetry: B Input: 3 Output: 3 2 "
         "Coefficients:\n\t 0 +5.00000E-01\n\t 1 +0.00000E+00\n"},
        {62, "P01001002MA" + poly + "0001" + reals("5 6"),
         Poly + "radians/s" + range + "1\n\t 0 +5.00000e+00 6.00000e+00\n"},
        // A count of three digits takes the first character of the first coefficient.
        {62, "P01001002MB" + poly + "001" + reals("1 2"),
         Poly + "hz" + range + "1\n\t 0 +1.00000e+00 2.00000e+00\n"},
    });
}

TEST(Blockette, ABadFieldAbortsTheList)
{
    const std::string bad =
        "quarl: Couldn't convert ' x' to a real number.\nquarl: Aborting input of ";
    const std::string zero = " (+0.00000E+00 +0.00000e+00)\n";
    const std::string one = " (+1.00000E+00 +0.00000e+00)\n";
    const std::string b054 = "B054 99 Type:A stage# 1 Input: 1 Output: 2 ";
    const std::string f25 = repeated(25, "F");
    check({
        {53, A01 + reals("x 0") + "001" + reals("1 2 3 4") + "001",
         bad + "paz zeros at #0\n" + Paz + "0.0000e+00 @ 0.00Hz 0 Poles 1 Zeros\n" + Poles + Zeros +
             "\t 0" + zero + "flagged\n"},
        {53,
         A01 + reals("1 0") + "003" + reals("1 0 0 0 1 x 0 0 3 0 0 0") + "001" + reals("1 0 0 0"),
         bad + "paz zeros at #2\n" + Paz + "1.0000e+00 @ 0.00Hz 0 Poles 3 Zeros\n" + Poles + Zeros +
             "\t 0" + one + "\t 1" + one + "\t 2" + zero + "flagged\n"},
        {53, A01 + reals("1 0") + "001" + reals("1 0 0 x") + "001" + reals("9 0 0 0"),
         bad + "paz poles at #0\n" + Paz + "1.0000e+00 @ 0.00Hz 1 Poles 1 Zeros\n" + Poles +
             "\t 0" + zero + Zeros + "\t 0" + one + "flagged\n"},
        {54, A01 + "0002" + reals("1 x 2 0") + "0001" + reals("9 0"),
         bad + "fir numerators at #1\n" + b054 +
             "2 Numerators, 0 Denominators\n\t 0 +1.00000E+00\n"
             "\t 1 +0.00000E+00\nflagged\n"},
        {54,
         A01 +
             "0000"
             "0002" +
             reals("x 5 2 0"),
         bad + "fir denominators at #1\n" + b054 +
             "0 Numerators, 2 Denominators\n\t 0 +0.00000E+00 +5.00000e+00\n"
             "\t 1 +0.00000E+00\nflagged\n"},
        {55, "01000 x 0001" + reals("1 2 3 4 5"),
         "quarl: Could not convert ' x ' to an integer\nquarl: Aborting input of fap response at "
         "#0\n"
         "B055 99 stage# 1 Input: 0 Output: 0 1 frequencies\n"
         "\t 0 +0.00000e+00 0.00000e+00 0.00000e+00 0.00000e+00 0.00000e+00\nflagged\n"},
        {61, "01" + f25 + "F~A0000000001" + reals("1"),
         too_long(f25, 26, f25 + "F~A0000000001 1") +
             "quarl: Aborting input of 061 fir coefficient at #0\n"
             "B061 99 stage# 1 '" +
             f25 +
             "' Symmetry: A Input: 0 Output: 0 1 Coefficients:\n\t 0 +0.00000E+00\nflagged\n"},
        {62, "P01001002MC" + reals("0 1 0 0 0") + "0002" + reals("x 1 2 3"),
         bad + "062 fir coefficient at #1\n" + Poly +
             "*invalid_units*) approx-range=(0.0-0.0) max_err=0.0 order=2\n"
             "\t 0 +0.00000e+00 1.00000e+00\n\t 1 +0.00000e+00 0.00000e+00\nflagged\n"},
    });
}

template <class Blk> void expect_context(int type, double sample_rate = 20)
{
    SCOPED_TRACE(type);
    const Record record = parsed(type, "");
    const channel_context_t &c = as<Blk>(record);
    EXPECT_EQ(formatted<"%s %s %s %s %s %d %g">(c.station, c.network_code, c.channel, c.start_date,
                                                c.end_date, c.instr_id, c.sample_rate),
              formatted<"ABC NN BHZ10 2020,001 2021,001 5 %g">(sample_rate));
}

TEST(Blockette, ChannelContext)
{
    (void)parsed(50, b050({.station = "ABC", .network = "NN"}));
    (void)parsed(52,
                 b052({.location = "10", .instrument = 5, .units_signal = 4, .end = "2021,001"}));
    expect_context<blk_053_t>(53);
    expect_context<blk_054_t>(54);
    expect_context<blk_055_t>(55);
    expect_context<blk_057_t>(57, 0);
    expect_context<blk_058_t>(58);
    expect_context<blk_059_t>(59);
    expect_context<blk_061_t>(61);
    expect_context<blk_062_t>(62);
    EXPECT_EQ(as<blk_058_t>(parsed(58, "")).units_signal, 4);
}

TEST(Blockette, TimeSpansAndEvents)
{
    const std::string event = "1999,001~011.00000000 2.00000000 3.0000";
    const std::string b071 = "B071 99 Time: 1999,001 Id# 1 ( 1.00, 2.00) Depth: 3.00km #:";
    const std::string tail = " grn=7 srn=12 gregion='Here'\n";
    const std::string mag = " 5.10Mb~03";
    const std::string series = "XYZ  00BHZ~000001  ~000002  ";
    const std::string b074 =
        " Sta: XYZ Loc: 00 Chan: BHZ Start: seq# 1 subseq# 0 End: seq# 2 subseq# 0 #repeats ";
    std::string mags;
    std::string repeats;
    for (int i = 0; i < 20; ++i)
        mags += formatted<"\t%2d Magnitude: 5.10 Source: 3 'Mb'\n">(i);
    for (int i = 0; i < 64; ++i)
        repeats += formatted<"\t %d Start: t seq# 5 subseq# 6\n">(i);
    check({
        {70, "E1999,001~~", "B070 99 Type:E Start: 1999,001 End:\n"},
        {71, event + "-10070012Here~", b071 + "-1" + tail},
        {71, event + "20" + repeated(20, mag) + "0070012Here~", b071 + "20" + tail + mags},
        {71, event + "22" + repeated(22, mag) + "0070012Here~",
         b071 + "20" + tail + mags + "flagged\n"},
        // No abort: what follows the bad magnitude is read.
        {71, event + "02    xM~01" + mag + "0070012Here~",
         "quarl: Couldn't convert ' x' to a real number.\n" + b071 + "2" + tail +
             "\t 0 Magnitude: 0.00 Source: 1 'M'\n\t 1 Magnitude: 5.10 Source: 3 'Mb'\nflagged\n"},
        {72, "XYZ    BHZ~" + reals("1.5 2 3", 10) + "P~04  ",
         "B072 99 XYZ Loc: Chan:BHZ Time: Amp: 1.50 Period: 2.00 S/N: 3.00 Phase:'P' source=4 "
         "net=\n"},
        {73, "0002XYZ  00BHZ1999,001~000001",
         "B073 99 Segment # 0 of 2 Sta: XYZ Loc: 00 Chan: BHZ Start: 1999,001 seq# 1 subseq# 0\n"
         "B073 99 Segment # 1 of 2 Sta: Loc: Chan: Start: seq# 0 subseq# 0\n"},
        {73, "0000", ""},
        {73, "0251", "quarl: ERROR(parse_073) - num_segs is too large: 251\nended 1"},
        {74, series + "000NN", "B074 99 Net: NN" + b074 + "0\n"},
        {74, series + "064" + repeated(64, "t~00000506") + "NN",
         "B074 99 Net: NN" + b074 + "64\n" + repeats},
        {74, series + "065" + repeated(65, "t~00000506") + "NN",
         "B074 99 Net: NN" + b074 + "64\n" + repeats + "flagged\n"},
    });
    EXPECT_STREQ(
        as<blk_073_t>(parsed(73, "0250" + repeated(250, "XYZ  00BHZ~00000102"))).chan_id[249],
        "BHZ");
}

TEST(Blockette, InitialisedAgain)
{
    const Record used = parsed(54, "D020020030001" + reals(".5 1") + "0000");
    auto *blk = static_cast<blk_054_t *>(used.get());
    EXPECT_EQ(blk->numer_coef.size(), 1);
    init_054(blk); // a sanitizer tells when the lists are not released
    EXPECT_EQ(std::tuple(blk->type, blk->num_numer, blk->numer_coef.size()), std::tuple(54, 0, 0));
}

/// A negative count of an allocated list ends the listing, which shows the count unsigned. For
/// other readers the list is empty, and the blockette bad.
TEST(Blockette, NegativeCounts)
{
    const std::vector<std::tuple<int, std::string, std::string>> rows = {
        {11, "-01", "10 bytes for blk->stn_id"}, // six bytes each
        {30, "~0000000-1", "15 bytes for blk->decode_key"},
        {53, std::string(33, ' ') + "-01", "15 bytes for blk->zero"},
        {53, std::string(33, ' ') + "000-01", "15 bytes for blk->pole"},
        {54, std::string(9, ' ') + "-001", "15 bytes for blk->numer_coef"},
        {54, std::string(9, ' ') + "0000-001", "15 bytes for blk->denom_coef"},
        {55, std::string(8, ' ') + "-001", "15 bytes for blk->frequency"},
        {61, "  ~       -001", "15 bytes for blk->coef"},
        {62, std::string(71, ' ') + "-001", "15 bytes for blk->coef"}};
    for (const auto &[type, fields, list] : rows) {
        const std::string text = shown(type, fields);
        const std::string end =
            "\tCan't malloc 184467440737095516" + list + ": Cannot allocate memory\nended 1";
        EXPECT_TRUE(
            text.starts_with(formatted<"quarl: Out of memory in parse_%03d at line ">(type)))
            << text;
        EXPECT_TRUE(text.ends_with(end)) << text;
        parsing().for_listing = false;
        const std::string other = shown(type, fields);
        parsing().for_listing = true;
        EXPECT_TRUE(other.starts_with("quarl: Negative count -1 of a list\n")) << other;
        EXPECT_TRUE(other.ends_with("flagged\n")) << other;
    }
}

} // namespace
