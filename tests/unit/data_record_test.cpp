// Data records: the fixed header, its completion, Blockette 1000 and format identification.
#include "blockette/data_format.h"
#include "blockette/data_header.h"
#include "blockette/msd.h"
#include "compose/files.h"
#include "platform/text.h"
#include "support/capture.h"
#include "support/recipe.h"
#include "volume/fixup_dh.h"
#include "volume/format_lookup.h"
#include "volume/seed.h"

#include <climits>
#include <filesystem>
#include <gtest/gtest.h>
#include <random>
#include <unistd.h>

namespace
{

/// The header of a data record (words of a recipe), completed without dictionaries.
std::unique_ptr<blk_dh_t> header_of(const std::string &words, bool complete = true)
{
    const std::string bytes = parse_recipe("data " + words).volume();
    auto header = new_dh();
    parse_dh(header.get(), std::string_view(bytes).substr(8, 128));
    if (complete)
        fixup_dh(header.get(), std::make_unique<read_handle_t>().get());
    return header;
}

TEST(DataRecord, HeaderInBothByteOrders)
{
    for (const std::string order : {"big", "little"}) {
        const auto h = header_of(
            "sta=\\sAB chan=BHZ net=N time=2001,060,01:02:03.4567 samples=40000 rate=-300,7 "
            "activity=80 io=7f flags=ff correction=-70000 blockettes=200 begin=64 "
            "first=32769 order=" +
                order,
            false);
        EXPECT_EQ(h->byteswap, order == "little" ? 0 : -1);
        EXPECT_EQ(formatted<"%s|%s|%s|%s|%d %d %d %d %d %d">(
                      h->stn_id, h->loc_id, h->chan_id, h->network_code, h->year, h->doy, h->hour,
                      h->minutes, h->sec_int, h->sec_frac),
                  "AB||BHZ|N|2001 60 1 2 3 4567");
        EXPECT_EQ(formatted<"%d %d %d %x %x %x %d %d %d %d">(
                      h->nsamps, h->rate_f, h->rate_m, h->activity, h->io_flags, h->quality,
                      h->blks_fol, h->time_cor, h->beg_data, h->beg_blks),
                  "-25536 -300 7 ffffff80 7f ffffffff -56 -70000 64 -32767");
    }
    // Years outside of 1970 to 2030 in host order count as swapped.
    for (const auto &[year, read] :
         {std::pair(1969, -20217), {1970, 1970}, {2030, 2030}, {2031, -4345}})
        EXPECT_EQ(header_of(formatted<"order=little time=%d,001,00:00:00.0000">(year), false)->year,
                  read);
    EXPECT_STREQ(header_of("time=65535,65535,255:255:255.65535")->start_time,
                 "-001,-01,-1:-1:-1.-001");
}

TEST(DataRecord, CodesAreTrimmedTexts)
{
    constexpr std::string_view Odd("AZ  ~!\x7f\x80\xff\t\n\x01\x1f\0", 14);
    std::mt19937 random(7);
    std::string codes(40, ' ');
    for (int round = 0; round < 200000; ++round) {
        for (char &c : codes) // half of the rounds: blanks and letters only
            c = Odd[random() % (round % 2 == 0 ? 4 : Odd.size())];
        const auto text = [&](std::size_t at, std::size_t size) {
            return trimmed(up_to_nul(std::string_view(codes).substr(at, size)));
        };
        blk_dh_t header;
        parse_dh(&header, codes);
        ASSERT_EQ(header.stn_id, text(0, 5));
        ASSERT_EQ(header.loc_id, text(5, 2));
        ASSERT_EQ(header.chan_id, text(7, 3));
        ASSERT_EQ(header.network_code, text(10, 2));
    }
}

TEST(DataRecord, RatesAndTimes)
{
    const std::vector<std::tuple<int, int, double>> rates = {
        {1, 20, 20}, {20, -2, 10}, {-10, 1, 0.1},          {-10, -2, 0.05},
        {0, 5, 0},   {5, 0, 0},    {-32768, 1, 1 / 32768.}};
    for (const auto &[factor, multiplier, rate] : rates) {
        const auto h = header_of(formatted<"rate=%d,%d">(factor, multiplier));
        EXPECT_DOUBLE_EQ(h->samp_rate, rate);
        EXPECT_EQ(h->rate_f, rate == 0 ? 0 : factor);
        EXPECT_EQ(h->rate_m, rate == 0 ? 0 : multiplier);
    }
    const std::vector<std::tuple<std::string, double, int>> times = {
        // activity bit 1: already corrected
        {"correction=5000", 0.75, 7500},
        {"correction=5000 activity=2", 0.25, 2500},
        {"correction=-5000 activity=fd", -0.25, -2500},
        {"correction=20000 activity=1", 2.25, 22500},
        {"correction=2147483647", 214748.3647, 2147483647}};
    for (const auto &[words, seconds, fraction] : times) {
        const auto h = header_of("time=2023,318,22:13:20.2500 " + words);
        EXPECT_STREQ(h->start_time, "2023,318,22:13:20.2500") << "shown before the correction";
        EXPECT_DOUBLE_EQ(h->epoch, 1700000000 + seconds);
        EXPECT_EQ(h->sec_frac, fraction);
        EXPECT_EQ(h->length, 4096);
        EXPECT_STREQ(h->format, "");
    }
}

TEST(DataRecord, Blockette1000InAHostileChain)
{
    const auto link = [](int type, int next) {
        return std::string{char(type >> 8), char(type), char(next >> 8), char(next)};
    };
    const auto b1000 = [&](int exponent, int next = 0) {
        return link(1000, next) + std::string{11, 1, char(exponent), 0};
    };
    const struct {
        int first;
        std::vector<std::pair<int, std::string>> blockettes; ///< by offset
        int length;                                          ///< 0: none is usable
    } rows[] = {
        {48, {{48, b1000(9)}}, 512},
        {0, {{48, b1000(9)}}, 0},
        {65535, {}, 0},
        {133, {}, 0},
        {48, {{48, link(1001, 56)}, {56, link(100, 128)}, {128, b1000(9)}}, 512}, // to the very end
        {48, {{48, link(1001, 129)}, {129, b1000(9)}}, 0}, // not wholly there
        {48, {{48, link(1001, 48)}}, 0},                   // to itself
        {64, {{64, link(1001, 48)}, {48, b1000(9)}}, 0},   // backwards
        {132, {{132, link(1001, 0)}}, 0},
        {48, {{48, b1000(6)}}, 0},
        {48, {{48, b1000(7)}}, 128},
        {48, {{48, b1000(30)}}, 1 << 30},
        {48, {{48, b1000(31)}}, 0},
        {48, {{48, b1000(-1)}}, 0},
        {48, {{48, b1000(8, 56)}, {56, b1000(10)}}, 256}, // the first counts
        {48, {{48, b1000(5, 56)}, {56, b1000(10)}}, 0}};
    for (const auto &row : rows) {
        SCOPED_TRACE(&row - rows);
        std::string record =
            parse_recipe(formatted<"data length=136 first=%d">(row.first)).volume();
        for (const auto &[at, bytes] : row.blockettes)
            record.replace(at, bytes.size(), bytes).resize(136);
        const std::vector<char> exact(record.begin(), record.end());
        MsdHeader header = {exact.data(), exact.size(), -1, 0, -1};
        EXPECT_EQ(msdhdr_unpack(&header), row.length ? 0 : -1);
        EXPECT_EQ(header.record_length, row.length);
        EXPECT_EQ(header.encoding, row.length ? 11 : -1);
    }
}

TEST(DataFormat, NamesAliasesAndEncodings)
{
    const std::string path =
        std::filesystem::temp_directory_path() / formatted<"quarl_pf_%d">(getpid());
    std::filesystem::create_directory(path);
    write_file(path + "/quarl.pf",
               "[data_type_aliases]\nSTEIM2 = \"Steim2 Integer Compression Format\"\n"
               "\"CDSN Gain-Ranged Format\" = \"ASRO Gain-Ranged Format\"\nloop = \"STEIM2\"\n");
    setenv("QUARL_PFPATH", path.c_str(), 1);
    ASSERT_EQ(pfread("quarl", &run().Parameters), 0);
    std::filesystem::remove_all(path);
    const std::vector<std::pair<const char *, int>> names = {
        {"Steim2 Integer Compression Format", 9},
        {"STEIM2", 9},
        {"steim integer compression format", 0},
        {"", 0},
        {"USNSN Integer Compression", 17},
        {"USNSN Integer Compression ", 0},
        {"CDSN Gain-Ranged Format", 3},
        {"loop", 0},
        {"ASCII RefTek Log Files, State of Health", 16}};
    for (const auto &[name, index] : names)
        EXPECT_EQ(sd_data_type(name), index) << name;
    for (const auto &[type, name] : {std::pair(9, names[0].first),
                                     {17, names[4].first},
                                     {18, ""},
                                     {0, ""},
                                     {-1, ""},
                                     {INT_MAX, ""}})
        EXPECT_EQ(seed_format(type).seed, name) << type;
    std::map<int, int> indices = {{1, 6}, {3, 1}, {4, 10}, {10, 8}, {11, 9}, {15, 17}, {16, 3}};
    for (int encoding = 0; encoding < 256; ++encoding) {
        const std::string record = parse_recipe(formatted<"data b1000=%d,1,9">(encoding)).volume();
        const B1000 found = parse_b1000(record.data(), 136);
        EXPECT_TRUE(found.usable);
        EXPECT_EQ(!encoding_name(found.encoding).empty(), indices.contains(encoding));
        EXPECT_EQ(found.index, indices[encoding]) << encoding;
    }
}

TEST(DataFormat, DisagreementIsToldOncePerChannel)
{
    const Captured all = capture([] {
        for (const char *location : {"loc=00", "", "loc=00"})
            b030_problem(*header_of(std::string("sta=ONCE ") + location), "one", "two");
    });
    const auto told = [](const std::string &channel) {
        return "quarl: \n*** Serious inconsistency in seed volume.\n    For the channel " +
               channel +
               ", the 030 blockettes indicate the datatype\n        one\n    but the blockette "
               "1000 embedded in the "
               "data says the data is\n        two\n    This inconsistency may cause problems.\n";
    };
    EXPECT_EQ(all.err, told("XX_ONCE_BHZ_00") + told("XX_ONCE_BHZ"));
}

/// Prints length, format row and format name of every data record of a volume.
void list_data(const std::string &recipe)
{
    const std::string path =
        std::filesystem::temp_directory_path() / formatted<"quarl_volume_%d">(getpid());
    write_file(path, parse_recipe(recipe).volume());
    const auto handle = seed_read(path);
    std::filesystem::remove(path);
    Record record;
    for (int type = 0; read_blk(handle.get(), &record, &type);) {
        if (type == Data_Record) {
            const auto &header = *static_cast<const blk_dh_t *>(record.get());
            EXPECT_EQ(header.data - header.raw, 64);
            print<"%d %d %s\n">(out(), header.length, header.type, header.format);
        }
    }
}

TEST(DataRecord, LengthAndFormatFromDictionaryAndBlockette1000)
{
    const std::string channel =
        "|0000|001|~001|002| 34.945900|-106.457200| 1850.0|000.0|000.0|-90.0|";
    const Captured all = capture([&] {
        list_data(
            "records 256\nheader V\n010  2.4|08|~~~~~\nheader A\n030 STEIM2~000105000\n030 Steim "
            "Integer "
            "Compression Format~000205000\nheader S\n050 QRL\\s\\s| 34.945900|-106.457200| "
            "1850.0|0002|001|~001|"
            "3210|10|2020,001~~N|XX\n052 \\s\\s|BHZ" +
            channel + "0002|09|2.0000E+01|0.0000E+00|0000|~2020,001~2020,002~N\n052 \\s\\s|BHN" +
            channel +
            "0003|10|2.0000E+01|0.0000E+00|0000|~2020,001~~N\npad\n"
            "data time=2020,001,00:00:00.0000\n"
            "data time=2020,001,23:59:59.9999\n"
            "data time=2020,001,23:59:59.9999 correction=1 length=4096\n" // the end is outside
            "data time=2019,365,23:59:59.9999 length=4096\n"
            "data chan=BHN time=2030,001,00:00:00.0000 length=1024\n"
            "data time=2020,001,00:00:00.0000 length=256 b1000=11,1,8\n"
            "data time=2020,001,00:00:00.0000 length=1024 b1000=19,1,10\n"
            "data sta=X length=8192 b1000=1,1,13\n"
            "data sta=X length=4096\n"
            "data sta=X length=16384 b1000=1,1,14\n");
    });
    const std::string steim = "Steim Integer Compression Format\n";
    EXPECT_EQ(all.out, "512 8 " + steim + "512 8 " + steim + "4096 0 \n4096 0 \n1024 0 \n256 9 " +
                           steim + "1024 8 " + steim + "8192 6 \n4096 0 \n");
    EXPECT_TRUE(all.err.ends_with(
        "different record sizes in 030 blockette (4096) and 1000 blockette (16384)\n"
        "quarl: Data blockette size = 16384: too large for internal buffer.\n"));
    EXPECT_NE(all.err.find("*** Serious inconsistency"), std::string::npos);
    EXPECT_NE(
        all.err.find("different record sizes in 030 blockette (512) and 1000 blockette (1024)\n"),
        std::string::npos);
    EXPECT_EQ(all.status, 1);
}

} // namespace
