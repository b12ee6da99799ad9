// The input stream, its logical records, and the framing of items.
#include "compose/volume.h"
#include "support/capture.h"
#include "volume/rseed.h"
#include "volume/seed.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace
{

/// Hands out `bytes` in reads of at most `chunk`, then the end of the file or an error.
struct Script : Inflater {
    std::string bytes;
    std::size_t chunk = 0;
    int error = 0;
    std::string_view reason;
    std::function<void(const char *to, std::size_t size)> on_read = [](auto...) {};

    ssize_t read(char *to, std::size_t size) override
    {
        on_read(to, size);
        const std::size_t count = bytes.copy(to, std::min(size, chunk));
        bytes.erase(0, count);
        if (count > 0 || (error == 0 && reason.empty()))
            return static_cast<ssize_t>(count);
        elog_set_reason(reason);
        errno = error;
        return -1;
    }
};

std::unique_ptr<read_handle_t> reading(std::string bytes, std::size_t chunk = 1000000,
                                       int error = 0, std::string_view reason = "")
{
    auto script = std::make_unique<Script>();
    script->bytes = std::move(bytes);
    script->chunk = chunk;
    script->error = error;
    script->reason = reason;
    auto handle = seed_read("/dev/null");
    handle->logical->stream = std::make_unique<Stream>(-1, false, std::move(script));
    run().Tapefile = 0;
    return handle;
}

std::string record(std::string_view header, std::string content, std::size_t size = 512)
{
    content.insert(0, header);
    content.resize(size, ' ');
    return content;
}

/// The next `n` bytes as read_remainder gives them; "end" when there are none.
std::string next(SeedInput *in, int n)
{
    std::string bytes(static_cast<std::size_t>(n), '#');
    return read_remainder(in, bytes.data(), n) ? bytes : "end";
}

/// Everything that is framed: type, "?" without a record; for data records their numbers.
Captured frame(read_handle_t *handle)
{
    return capture([&] {
        Record item;
        int type = 0;
        handle->on_bad_item = [](const Item &bad) { show_bad_item(&console(), bad); };
        while (read_blk(handle, &item, &type)) {
            const auto *dh =
                type == Data_Record ? static_cast<const blk_dh_t *>(item.get()) : nullptr;
            if (dh && dh->raw)
                print<"D%d.%d ">(out(), dh->seq_num, dh->sub_seq_num);
            else
                print<"%d%s ">(out(), type, std::string_view(item ? "" : "?"));
        }
    });
}
Captured frame(std::string bytes, std::size_t chunk = 1000000)
{
    return frame(reading(std::move(bytes), chunk).get());
}

TEST(Records, HeadersAreSkippedAndKept)
{
    for (const std::size_t chunk : {1, 7, 513, 1000000}) {
        const auto handle =
            reading(record("    7 V ", std::string(504, 'a')) +
                        record("000012A*", std::string(504, 'b')) + record("000013Qx", "cde"),
                    chunk);
        SeedInput *in = handle->logical.get();
        EXPECT_EQ(in->type_code(), '#');
        EXPECT_EQ(next(in, 500), std::string(500, 'a'));
        EXPECT_EQ(std::make_tuple(in->seq_num(), in->recsiz()), std::make_tuple(7, 512));
        EXPECT_EQ(next(in, 509), "aaaa" + std::string(504, 'b') + "c");
        EXPECT_EQ(std::make_tuple(in->seq_num(), in->type_code(), in->cont_code(), in->recno()),
                  std::make_tuple(13, 'Q', 'x', 3));
        EXPECT_EQ(next(in, 0) + next(in, 3), "de ");
        EXPECT_EQ(next(in, 501), "end"); // 500 are left
        EXPECT_EQ(in->totbytes(), 3 * 512);
        const int files = in->fileno();
        clrSeedInput(in);
        EXPECT_EQ(in->fileno(), files + 1);
        EXPECT_EQ(std::make_tuple(in->totbytes(), in->recsiz(), in->ending(), in->cont_code()),
                  std::make_tuple(0, 0, Ending::open, '#'));
        EXPECT_EQ(next(in, 1), "end");
    }
}

TEST(Records, LengthIsAPowerOfTwo)
{
    const auto handle = reading("");
    const int expected[][2] = {{INT_MIN, 2}, {0, 2},        {1, 2},        {2, 4},       {8, 256},
                               {16, 65536},  {30, 1 << 30}, {31, 1 << 30}, {99, 1 << 30}};
    for (const auto &[exponent, length] : expected) {
        setReadRecLen(handle->logical.get(), exponent);
        EXPECT_EQ(handle->logical->recsiz(), length) << exponent;
    }
}

TEST(Records, SequenceNumbers)
{
    const std::string bad = "quarl: Bad logical block header sequence number = '";
    const struct {
        std::string field;
        int number;
        std::string message;
    } cases[] = {
        {"000012", 12, ""},
        {"   12 ", 12, ""},
        {"      ", 0, ""},
        {" -0012", -12, ""},
        {"12ab  ", 12, bad + "12ab  '\n"},
        {"1 2   ", 1, bad + "1 2   '\n"},
        {"     -", 0, bad + "     -'\n"},
        {std::string("12\0zzz", 6), 12, ""},
    };
    for (const int verbose : {1, 2})
        for (const auto &c : cases) {
            const auto handle = reading(record(c.field + "V ", ""));
            std::string shown_numbers;
            if (verbose > 1)
                handle->logical->on_record = [&](int n) { shown_numbers = std::to_string(n); };
            const Captured shown = capture([&] { advanceLogicalRecord(handle->logical.get()); });
            EXPECT_EQ(handle->logical->seq_num(), c.number) << c.field;
            EXPECT_EQ(shown.err, c.message);
            EXPECT_EQ(shown_numbers, verbose == 1 ? "" : std::to_string(c.number));
        }
}

TEST(Records, AboveSixtyFourKibibytesAreReadWhole)
{
    constexpr int Length = 131072;
    std::string volume;
    for (char c = 'a'; c < 'e'; ++c)
        volume += record("000001V ", std::string(Length - 9, c) + '$', Length);
    for (const std::size_t chunk : {1000, 65537, 1000000}) {
        const auto handle = reading(volume, chunk);
        SeedInput *in = handle->logical.get();
        EXPECT_EQ(next(in, 1), "a");
        setReadRecLen(in, 17);
        EXPECT_EQ(next(in, Length - 9), std::string(Length - 10, 'a') + '$');
        for (char c = 'b'; c < 'e'; ++c)
            EXPECT_EQ(next(in, Length - 8), std::string(Length - 9, c) + '$') << chunk;
        EXPECT_EQ(next(in, 1), "end");
        EXPECT_EQ(in->totbytes(), 4 * Length);
    }
    // What a record claims beyond the buffer ends the input.
    const auto handle = reading(std::string(300000, '0'));
    EXPECT_EQ(next(handle->logical.get(), 1), "0");
    setReadRecLen(handle->logical.get(), 30);
    EXPECT_EQ(next(handle->logical.get(), 131074), "end");
    EXPECT_EQ(next(handle->logical.get(), 131074), "end");
    // The next file begins behind what the buffer held, not behind what was read.
    clrSeedInput(handle->logical.get());
    while (next(handle->logical.get(), 504) != "end")
        continue;
    EXPECT_EQ(handle->logical->totbytes(), 300000 - 131074);
}

TEST(Records, AreReadToWhereTheyStandInThePagesOfTheirFile)
{
    constexpr std::size_t Page = 4096;
    for (const std::size_t chunk : {777UL, 3 * Page, 1000000UL}) {
        auto script = std::make_unique<Script>();
        std::string expected;
        for (int i = 0; i < 3000; ++i) {
            expected += std::to_string(i);
            script->bytes += record("000001V ", std::to_string(i));
        }
        script->chunk = chunk;
        script->on_read = [&, left = &script->bytes,
                           size = script->bytes.size()](const char *to, std::size_t asked) {
            const std::size_t at = size - left->size();
            EXPECT_EQ((reinterpret_cast<std::uintptr_t>(to) - at) % Page, 0) << at;
            EXPECT_EQ((at + asked) % Page, 0) << at;
        };
        auto handle = reading("");
        handle->logical->stream = std::make_unique<Stream>(-1, false, std::move(script));
        std::string numbers;
        for (int i = 0; i < 3000; ++i) {
            const std::string content = next(handle->logical.get(), 504);
            numbers += content.substr(0, content.find(' '));
        }
        EXPECT_EQ(numbers, expected) << chunk;
    }
}

TEST(Records, ShorterThanTheirHeaderStillEnd)
{
    const std::pair<const char *, int> cases[] = {{"00", 2}, {"01", 2}, {"02", 4}, {"03", 8}};
    for (const auto &[exponent, length] : cases) {
        const auto handle =
            reading(record("000001V ", std::string("0100020 2.3") + exponent + "12~~~"));
        const Captured shown = frame(handle.get());
        EXPECT_TRUE(shown.out.starts_with("10 ")) << shown.out;
        EXPECT_GT(handle->logical->recno() * length, 480) << length; // each of them was stepped to
    }
}

TEST(Records, ReadErrorsWaitForTheBytesBeforeThem)
{
    const std::string volume = record("000001V ", "4000010abc4000010def");
    for (const std::size_t chunk : {100, 1000000}) {
        Captured shown = frame(reading(volume, chunk, EIO).get());
        EXPECT_EQ(shown.out, "400? 400? ");
        EXPECT_TRUE(shown.err.ends_with("quarl: input read error: Input/output error\n"));
        shown = frame(reading(volume, chunk, 0, "corrupt data").get());
        EXPECT_TRUE(shown.err.ends_with("quarl: input read error: corrupt data\n"));
    }
    Captured shown = frame(reading(record("000001V ", "4000600"), 99, EIO).get());
    EXPECT_EQ(shown.err, "quarl: input read error: Input/output error\n"
                         "quarl: Unexpected end of file reading blockette type 400 file #0: "
                         "Input/output error\n");
    shown = frame(record("000001V ", "4000600"));
    EXPECT_EQ(shown.err, "quarl: Unexpected end of file reading blockette type 400 file #0\n");
    shown = capture([] { newSeedInput("/nonexistent/file"); });
    EXPECT_EQ(shown.status, 1);
    EXPECT_EQ(shown.err,
              "quarl: Can't open input file /nonexistent/file: No such file or directory\n");
}

/// Puts control records of 512 bytes around `text`.
std::string control(std::string_view text) { return VolumeBuilder(512).text(text).volume(); }

TEST(Framing, ControlBlockettes)
{
    const std::string unknown = "quarl: WARNING(parse_blk) - Unknown blockette: ";
    const std::string log = "quarl: sdminsz: Unknown blockette type ";
    const struct {
        const char *what;
        std::string volume, out, err;
    } cases[] = {
        {"the longest that four digits say",
         control("4009999" + std::string(9992, 'x') + "0340012001~~"), "400? 34 ",
         unknown + "400\n"},
        {"prefix over the end of a record",
         record("000001V ", "4000500" + std::string(493, 'x') + "0340") +
             record("000002V ", "0340012001~~"),
         "400? 34 ", unknown + "400\n"},
        {"prefix that just fits",
         record("000001V ", "4000497" + std::string(490, 'x') + "0340012") +
             record("000002V ", "001~~"),
         "400? 34 ", unknown + "400\n"},
        {"cut short", "000001V 0340012001~", "34 ",
         "quarl: Input ends inside logical record #1: 19 of 512 bytes\n"},
        {"too small", control("03400100010340012002~~"), "34 34 ",
         "quarl: Blockette type 34 size = 10: too small! (file #0)\n"},
        {"no length", control("034abcd0340012001~~"), "34 34 ",
         "quarl: Blockette type 34 size = 0: too small! (file #0)\n"
         "quarl: Could not convert 'abcd' to an integer\nquarl: Error at BLK034 : \n"
         "B034   0 Id#  0 Unit:'' Desc:'' <Units Abbreviation>\n"},
        {"no type", control("abc0010xyz0340012001~~"), "0? 34 ", log + "0\n" + unknown + "0\n"},
        {"sizes below the prefix", control("405000640500052020000"), "405? 405? 202? ",
         unknown + "405\nquarl: Blockette type 405 size = 5: too small! (file #0)\n" + unknown +
             "405\n" + unknown + "202\n"},
        {"negative length", control("400-0050340012001~~"), "400? 34 ",
         "quarl: Blockette type 400 size = -5: too small! (file #0)\n" + unknown + "400\n"},
        {"type of a data record", control("-010048" + std::string(41, '1') + "0340012001~~"),
         "-1 34 ", ""},
        {"bad field", control("0340012ab1~~0340012002~~"), "34 34 ",
         "quarl: Could not convert 'ab1' to an integer\n"
         "quarl: Error at BLK034 : 0340012ab1~~\n"
         "B034  12 Id#  0 Unit:'' Desc:'' <Units Abbreviation>\n"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        for (const std::size_t chunk : {11, 1000000}) {
            const Captured shown = frame(c.volume, chunk);
            EXPECT_EQ(shown.status, -1);
            EXPECT_EQ(shown.out, c.out);
            EXPECT_EQ(shown.err, c.err);
        }
    }
}

TEST(Framing, DataRecordsAreNumberedWithinTheirSequenceNumber)
{
    VolumeBuilder volume(512);
    for (const int seq : {5, 5, 5, 6, 5})
        volume.data({.seq = seq, .quality = seq == 6 ? 'Q' : 'M', .b1000 = DataOnly{}});
    const auto handle = reading(volume.volume());
    EXPECT_EQ(frame(handle.get()).out, "D5.1 D5.2 D5.3 D6.1 D5.1 ");
    // The next file goes on counting.
    handle->logical->stream = std::move(reading(volume.volume())->logical->stream);
    clrSeedInput(handle->logical.get());
    EXPECT_TRUE(frame(handle.get()).out.starts_with("D5.2 D5.3 D5.4 "));
}

/// Reads `count` items and checks that the last is a data record with these bytes.
void expect_whole(read_handle_t *handle, int count, const std::string &bytes, int begin)
{
    Record item;
    int type = 0;
    const Captured shown = capture([&] {
        for (int i = 0; i < count; ++i)
            EXPECT_EQ(read_blk(handle, &item, &type), 1);
    });
    ASSERT_EQ(type, Data_Record) << shown.err;
    const auto *header = static_cast<const blk_dh_t *>(item.get());
    EXPECT_EQ(std::string(header->raw, 512), "000000D " + bytes.substr(8));
    EXPECT_EQ(header->data, begin < 0 || begin >= 512 ? nullptr : header->raw + begin);
}

std::string in_place(const std::string &record)
{
    return VolumeBuilder(512).blockette(400, std::string(2000, 'x')).raw(record).volume();
}

/// Behind a data record of 128 bytes, the header of the next runs over two logical records.
std::string gathered(const std::string &record)
{
    return VolumeBuilder(512)
        .blockette(400, std::string(2000, 'x'))
        .raw(data_record_bytes({.length = 128, .b1000 = DataOnly{.exponent = 7}}, 2))
        .raw(record.substr(0, 128))
        .raw("000004D ")
        .raw(record.substr(128))
        .volume();
}

TEST(Framing, DataRecordsAreHeldWhole)
{
    for (const int begin : {64, 511, 512, -1, 0}) {
        std::string bytes = data_record_bytes({.b1000 = DataOnly{}, .payload = "0123456789"}, 3);
        bytes.replace(44, 2, {static_cast<char>(begin >> 8), static_cast<char>(begin)});
        expect_whole(reading(in_place(bytes)).get(), 2, bytes, begin);
        expect_whole(reading(gathered(bytes)).get(), 3, bytes, begin);
    }
}

TEST(Framing, NumbersOfRecordsAreNoBlockettes)
{
    for (int first = 0; first < 8; ++first) {
        std::string bytes = data_record_bytes({.length = 4096, .first_blockette = first}, 3);
        bytes.replace(first, 8, {"\x03\xe8\0\0\0\0\x07\0", 8}); // a Blockette 1000, 128 bytes
        bytes[6] = 'D';
        const std::string err = frame(in_place(bytes)).err;
        EXPECT_EQ(err.find("different record sizes"), std::string::npos) << first << err;
    }
}

TEST(Framing, OnlyACutRecordIsSaidToBeCut)
{
    const std::string small =
        data_record_bytes({.length = 128, .b1000 = DataOnly{.exponent = 7}}, 2);
    const std::string two = VolumeBuilder(512).blockette(400, std::string(600, 'x')).volume();
    const std::string large = VolumeBuilder(4096)
                                  .blockette(10, " 2.4122024,061~~~~~")
                                  .blockette(400, std::string(9000, 'x'))
                                  .blockette(400, std::string(9000, 'x'))
                                  .volume();
    ASSERT_EQ(large.size(), 5 * 4096);
    const std::string nuls(100, '\0');
    const struct {
        std::string bytes;
        const char *cut; // "" for none
    } cases[] = {
        {small, ""},
        {small.substr(0, 127), "1: 127 of 128"},
        {small.substr(0, 20), "1: 20 of 4096"},
        {small.substr(0, 10), "1: 10 of 4096"},
        {"000001V 0100000" + std::string(51, ' '), ""},
        {two, ""},
        {two.substr(0, 1000), "2: 488 of 512"}, // of padding
        {two.substr(0, 512), ""},
        {two.substr(0, 517), "2: 5 of 512"},
        {two + "\n", ""},
        {two + nuls, ""},
        {two + nuls + std::string(800, ' ') + "\n", ""},
        {two + nuls + "1", "3: 101 of 512"},
        {two + std::string(520, '\0'), ""},
        {large, ""},
        {large.substr(0, 18432), "5: 2048 of 4096"},
        {large.substr(0, 16389), "5: 5 of 4096"},
        {large + "\n", ""},
    };
    for (const auto &[bytes, cut] : cases)
        for (const std::size_t chunk : {13, 1000000}) {
            const std::string told =
                "Input ends inside logical record #" + std::string(cut) + " bytes\n";
            const std::string err = frame(bytes, chunk).err;
            const std::size_t at = err.find("Input ends");
            EXPECT_EQ(at == std::string::npos ? "" : err.substr(at, told.size()), *cut ? told : "")
                << bytes.size();
            EXPECT_EQ(at, err.rfind("Input ends"));
        }
    EXPECT_EQ(frame(reading(two.substr(0, 1000), 13, EIO).get()).err,
              frame(two).err + "quarl: input read error: Input/output error\n");
}

} // namespace
