// Samples of data records: encodings, byte orders, lengths.
#include "compose/blockette_text.h"
#include "compose/files.h"
#include "compose/samples.h"
#include "support/capture.h"
#include "support/plain_steim.h"
#include "support/samples.h"
#include <quarl/volume.h>

#include <climits>
#include <filesystem>
#include <gtest/gtest.h>
#include <optional>
#include <random>
#include <sstream>
#include <unistd.h>

namespace
{

using Values = std::vector<double>;

/// The words of a text of hexadecimal numbers.
std::vector<std::uint64_t> words_of(const std::string &text)
{
    std::istringstream in(text);
    std::vector<std::uint64_t> words;
    for (std::uint64_t word = 0; in >> std::hex >> word;)
        words.push_back(word);
    return words;
}

/// The values, and what they are.
std::string shown(const Samples &samples)
{
    constexpr std::array Kinds = {"nothing", "integers", "floats", "doubles", "text"};
    std::string all = Kinds[samples.values.index()];
    for (const double value : values_of(samples))
        all += formatted<" %.17g">(value);
    return all;
}

TEST(Samples, WordsOfEveryEncodingInBothOrders)
{
    const struct {
        int encoding;
        int size;
        const char *words;
        const char *values;
    } rows[] = {
        {1, 2, "0 1 7FFF 8000 FFFE", "integers 0 1 32767 -32768 -2"},
        {2, 3, "010203 7FFFFF 800000 FFFFFF", "integers 66051 8388607 -8388608 -1"},
        {3, 4, "01020304 7FFFFFFF 80000000 FFFFFFFF",
         "integers 16909060 2147483647 -2147483648 -1"},
        {4, 4, "3F800000 C0490FDB 7F7FFFFF 00000001",
         "floats 1 -3.1415927410125732 3.4028234663852886e+38 1.4012984643248171e-45"},
        {5, 8, "3FF0000000000001 FFEFFFFFFFFFFFFF",
         "doubles 1.0000000000000002 -1.7976931348623157e+308"},
        {12, 3, "010203 7FFFFF 800000", "floats 66051 8388607 -8388608"},
        {13, 2, "0000 0FFF 1801 7FFF FFFF", "floats -2048 2047 0.5 15.9921875 15.9921875"},
        {14, 2, "0000 0FFF 1801 8801 F000", "floats -2048 2047 0.5 0.00390625 -0.0625"},
        {16, 2, "0000 3FFF 7FFF 9FFE BFFF FFFF C000",
         "integers -8191 8192 32768 -16 131072 1048576 -1048448"},
        {30, 2, "0001 07FF 0800 9FFF A7FF AFFF", "integers 1024 2096128 -2097152 -2 2047 -1"},
        {32, 2, "0102 7FFF 8000", "integers 258 32767 -32768"}};
    SampleBuffer buffer;
    for (const auto &row : rows)
        for (const bool little : {false, true}) {
            SCOPED_TRACE(formatted<"encoding %d, little-endian %d">(row.encoding, int{little}));
            const auto words = words_of(row.words);
            const std::string packed = packed_words(words, row.size, little);
            const std::vector<char> data(packed.begin(), packed.end());
            const auto decoded = [&](std::size_t count) {
                return decode(EncodedSamples{{data.data(), data.size()},
                                             static_cast<Encoding>(row.encoding),
                                             little,
                                             count},
                              buffer);
            };
            EXPECT_EQ(shown(decoded(words.size())), row.values);
            EXPECT_EQ(problems_of(decoded(words.size())), "");
            EXPECT_EQ(decoded(1).size(), 1U);
            EXPECT_EQ(problems_of(decoded(1)) + problems_of(decoded(0)), "");
        }
}

/// Samples that start at `first` and go up and down by the largest differences of `bits` bits.
std::vector<std::int32_t> swings(int bits, std::int32_t first, std::size_t count)
{
    std::vector<std::int32_t> values;
    auto value = static_cast<std::uint32_t>(first);
    for (std::size_t i = 0; i < count; ++i) {
        values.push_back(static_cast<std::int32_t>(value));
        const std::uint32_t half = std::uint32_t{1} << (bits - 1);
        value += i % 2 == 0 ? 0U - half : half - 1;
    }
    return values;
}

TEST(Samples, SteimDifferencesOfAllWidths)
{
    const struct {
        int version;
        int bits;
        std::size_t in_word;
    } rows[] = {{1, 8, 4}, {1, 16, 2}, {1, 32, 1}, {2, 4, 7},  {2, 5, 6},
                {2, 6, 5}, {2, 8, 4},  {2, 10, 3}, {2, 15, 2}, {2, 30, 1}};
    SampleBuffer buffer;
    for (const auto &row : rows)
        for (const bool little : {false, true})
            for (const std::int32_t first : {0, INT_MAX, INT_MIN, -1}) {
                SCOPED_TRACE(formatted<"Steim-%d, %d bits, from %d">(row.version, row.bits, first));
                const std::size_t count = 28 * row.in_word; // 13 + 15 words
                const auto values = swings(row.bits, first, count);
                const std::int32_t before = static_cast<std::int32_t>(
                    static_cast<std::uint32_t>(first) - (std::uint32_t{1} << (row.bits - 1)) + 1);
                const SteimFrames frames =
                    steim_frames(values, {row.version, little, 2, before, false});
                ASSERT_EQ(frames.samples, count) << "other widths were used";
                const std::vector<char> data(frames.bytes.begin(), frames.bytes.end());
                const Samples samples =
                    decode(EncodedSamples{{data.data(), data.size()},
                                          static_cast<Encoding>(9 + row.version),
                                          little,
                                          count},
                           buffer);
                EXPECT_EQ(problems_of(samples), "");
                EXPECT_EQ(values_of(samples), Values(values.begin(), values.end()));
                ASSERT_TRUE(samples.steim);
                EXPECT_EQ(samples.steim->forward, first);
                EXPECT_EQ(samples.steim->reverse, values.back());
                EXPECT_EQ(static_cast<std::uint32_t>(samples.steim->first_difference),
                          static_cast<std::uint32_t>(first) - static_cast<std::uint32_t>(before));
            }
}

TEST(Samples, FramesOfAnyBytesAgainstThePlainWay)
{
    std::mt19937 random(24);
    SampleBuffer buffer;
    int cut_short = 0;
    for (int round = 0; round < 20000; ++round) {
        std::vector<char> data(random() % 300);
        for (char &byte : data)
            byte = static_cast<char>(random());
        if (round % 2 == 0) // codes that stand for something, as a rule
            for (std::size_t at = 0; at + 64 <= data.size(); at += 64)
                for (std::size_t i = 0; i < 64; i += 4)
                    data[at + i] = static_cast<char>(i == 0 ? random() & 0x15 : 0x40);
        const int version = static_cast<int>(1 + random() % 2);
        const std::size_t count = random() % 200;
        const bool little = random() % 2 == 0;
        const std::string_view bytes(data.data(), data.size());
        const Samples samples =
            decode({bytes, static_cast<Encoding>(9 + version), little, count}, buffer);
        const auto plain = plain_steim(version, samples.little_endian, bytes, count);
        ASSERT_EQ(values_of(samples), Values(plain.begin(), plain.end())) << "round " << round;
        ASSERT_TRUE(samples.size() == count || !samples.problems.empty());
        cut_short += samples.size() < count;
    }
    EXPECT_GT(cut_short, 1000);
    EXPECT_LT(cut_short, 19000);
}

/// Differences of many widths.
std::vector<std::int32_t> wavy(std::size_t count)
{
    std::vector<std::int32_t> values;
    for (std::size_t i = 0; i < count; ++i)
        values.push_back(static_cast<std::int32_t>(i * i % 977) - 488);
    return values;
}

TEST(Samples, RecordsOfAllLengths)
{
    SampleBuffer buffer;
    for (int exponent = 6; exponent <= 16; ++exponent)
        for (const int encoding : {3, 10, 11})
            for (const bool little : {false, true}) {
                SCOPED_TRACE(formatted<"2^%d bytes, encoding %d">(exponent, encoding));
                const int length = 1 << exponent;
                const int begin = length == 64 ? 48 : 64;
                const std::size_t room = length - begin;
                auto values = wavy(encoding == 3 ? room / 4 : 65535);
                SteimFrames frames;
                if (encoding == 3)
                    frames = {packed(values, 4, little), values.size()};
                else
                    frames = steim_frames(values, {encoding - 9, little, room / 64, 0, true});
                values.resize(frames.samples);
                const RecordInMemory record(DataRecord{.samples = static_cast<int>(values.size()),
                                                       .length = length,
                                                       .little = little,
                                                       .begin_data = begin,
                                                       .payload = frames.bytes});
                blk_dh_t header = record.header;
                header.encoding = encoding; // and no word order: the header's own
                const Samples samples = decode(header, buffer);
                EXPECT_EQ(samples.little_endian, little);
                EXPECT_EQ(samples.expected, values.size());
                EXPECT_EQ(problems_of(samples), "");
                EXPECT_EQ(values_of(samples), Values(values.begin(), values.end()));
            }
}

/// The encoding, order, first sample and problems of each data record of a volume.
std::string samples_listed(const std::string &bytes)
{
    const std::string path =
        std::filesystem::temp_directory_path() / formatted<"quarl_samples_%d">(getpid());
    write_file(path, bytes);
    Volume volume(path, {.format_aliases = {{"16 bits", "DWWSSN SUN IEEE short integer"}},
                         .message = [](const Message &) {}});
    std::filesystem::remove(path);
    SampleBuffer buffer;
    std::string all;
    for (const Item &item : volume) {
        const Samples samples = decode(item, buffer);
        if (!item.get<blk_dh_t>()) {
            EXPECT_FALSE(samples.is_decoded());
            continue;
        }
        const Values values = values_of(samples);
        all += formatted<"%d %s %g|">(static_cast<int>(samples.encoding),
                                      samples.little_endian ? "little" : "big",
                                      values.empty() ? -1.0 : values[0]) +
               problems_of(samples);
    }
    return all;
}

TEST(Samples, EncodingAndOrderFromBlockette1000DictionaryAndHeader)
{
    const struct {
        const char *name; ///< of the dictionary
        bool little;      ///< header
        std::optional<DataOnly> b1000;
        const char *expected;
    } rows[] = {
        {"32-Bit Integer Format", false, {}, "3 big 1|"},
        {"32-Bit Integer Format", true, {}, "3 little 1|"},
        {"SUN IEEE integer", true, {}, "3 big 1.67772e+07|"},
        {"SRO Gain-Ranged Format", false, {}, "30 big 0|"},
        {"CDSN Gain-Ranged Format", false, {}, "16 big -8191|"},
        {"DWWSSN SUN IEEE short integer", false, {}, "1 big 0|"},
        {"DWWSSN SUN IEEE short integer", true, {}, "1 big 256|"},
        {"16 bits", true, {}, "1 little 1|"},
        {"DWWSSN Integer Format", true, {}, "32 little 1|"},
        {"Steim Integer Compression Format", false, {}, "10 big 1|"},
        {"Steim2 Integer Compression Format", true, {}, "11 little 1|"},
        {"IEEE single precision real", false, {}, "4 big 1.4013e-45|"},
        {"SUN IEEE single precision real", true, {}, "4 big 2.35099e-38|"},
        {"DWWSSN demultiplexed short (16 bit) 68000 integer", true, {}, "32 big 256|"},
        {"Geoscope gain-range on 3 bits", false, {}, "13 big -2048|"},
        {"Geoscope-3 byte (switched gain)", true, {}, "12 little 1|"},
        {"Geoscope gain range on 4 bits", false, {}, "14 big -2048|"},
        {"ASCII RefTek Log Files, State of Health",
         false,
         {},
         "0 big 0|no-text-bytes: 1 bytes are no text, the first is byte 0, 0x00\n"},
        {"ASRO Gain-Ranged Format",
         false,
         {},
         "-1 big -1|no-rule: there is no public rule how to decode the data format 'ASRO "
         "Gain-Ranged Format'\n"},
        {"USNSN Integer Compression",
         false,
         {},
         "15 big -1|no-rule: there is no public rule how to decode encoding 15, US National "
         "Network\n"},
        {"Integer",
         false,
         {},
         "-1 big -1|no-encoding: how samples are encoded is not known of the data format "
         "'Integer'\n"},
        {"SUN IEEE integer", false, DataOnly{3, 0, 9}, "3 little 1.67772e+07|"},
        {"ASRO Gain-Ranged Format", true, DataOnly{3, 1, 9}, "3 big 1.67772e+07|"},
        {"SUN IEEE integer", true, DataOnly{3, 2, 9}, "3 little 1|"},
        {"SUN IEEE integer", false, DataOnly{19, 1, 9},
         "19 big -1|no-rule: there is no public rule how to decode encoding 19, Steim-3\n"}};
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        const bool is_steim = std::string_view(row.name).starts_with("Steim");
        VolumeBuilder volume(512);
        volume.header('V').blockette(10, b010(2.4, 9, "2020,001", "", "", "", ""));
        volume.header('A').blockette(30, b030(row.name, 1, 0, {}));
        volume.header('S').blockette(50, b050({}));
        volume.blockette(52, b052({.exponent = 9}));
        volume.data({.samples = 1,
                     .little = row.little,
                     .b1000 = row.b1000,
                     .payload = is_steim
                                    ? steim_frames({1}, {.little = row.little, .fill = true}).bytes
                                    : packed({1, 0}, 4, row.little)});
        EXPECT_EQ(samples_listed(volume.volume()), row.expected);
    }
}

} // namespace
