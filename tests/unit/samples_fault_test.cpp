// What is wrong with the samples of data records is told, and the rest is given.
#include "compose/samples.h"
#include "support/capture.h"
#include "support/samples.h"

#include <gtest/gtest.h>
#include <numeric>
#include <optional>

namespace
{

using Values = std::vector<double>;

/// 100 samples, 5 to 104, in a record of 512 bytes: seven in each word of the first frame, nine in
/// the second, and 5 frames of fill.
DataRecord sound_record()
{
    std::vector<std::int32_t> ramp(100);
    std::iota(ramp.begin(), ramp.end(), 5);
    return {.samples = 100,
            .b1000 = DataOnly{},
            .payload = steim_frames(ramp, {.frames = 7, .previous = 4, .fill = true}).bytes};
}

/// Gives a word of a frame, both counted from 0, the control code `code`, and `value` as its first
/// byte.
void set_word(RecordInMemory &record, std::size_t frame, std::size_t word, int code, int value)
{
    char *at = record.bytes.data() + 64 * (frame + 1);
    const auto shift = static_cast<int>(6 - 2 * (word % 4));
    at[4 * word] = static_cast<char>(value);
    at[word / 4] = static_cast<char>((at[word / 4] & ~(3 << shift)) | code << shift);
}

TEST(Samples, FaultsOfRecordsAreToldAndTheRestIsGiven)
{
    using Edit = void (*)(RecordInMemory &);
    const std::string misplaced = "has a control code for a word that holds no differences\n";
    const std::string impossible = "has an impossible control code for word ";
    const struct {
        const char *what;
        Edit edit;
        std::size_t given;
        std::string problems;
    } rows[] = {
        {"sound", [](RecordInMemory &) {}, 100, ""},
        {"none", [](RecordInMemory &r) { r.header.nsamps = 0; }, 0, ""},
        {"none, from nowhere",
         [](RecordInMemory &r) {
             r.header.nsamps = r.header.beg_data = 0;
             r.header.encoding = 99;
         },
         0, ""},
        {"a count that is too high", [](RecordInMemory &r) { r.header.nsamps = -1; }, 100,
         "count: the data hold 100 of 65535 samples\n"},
        {"a count that is too low", [](RecordInMemory &r) { r.header.nsamps = 99; }, 99,
         "last-sample: the last sample is 103, but 104 by the reverse integration constant\n"},
        {"a frame that is not whole", [](RecordInMemory &r) { r.header.length = 191; }, 91,
         "count: the data hold 91 of 100 samples\n"},
        {"no frame", [](RecordInMemory &r) { r.header.beg_data = 449; }, 0,
         "count: the data hold 0 of 100 samples\n"},
        {"data in the header", [](RecordInMemory &r) { r.header.beg_data = 47; }, 0,
         "data-offset: the data begin at byte 47, inside the fixed header\n"},
        {"data behind the record", [](RecordInMemory &r) { r.header.beg_data = 512; }, 0,
         "data-offset: the data begin at byte 512 of a record of 512\n"},
        {"data far behind", [](RecordInMemory &r) { r.header.beg_data = -1; }, 0,
         "data-offset: the data begin at byte 65535 of a record of 512\n"},
        {"no record", [](RecordInMemory &r) { r.header.raw = nullptr; }, 0,
         "data-offset: the data begin at byte 64 of a record of 0\n"},
        {"a code of a control word", [](RecordInMemory &r) { set_word(r, 0, 0, 1, 3); }, 100,
         "control-code: frame 1 " + misplaced},
        {"a code of a constant", [](RecordInMemory &r) { set_word(r, 0, 2, 3, 0); }, 100,
         "control-code: frame 1 " + misplaced},
        {"a code of the next control word", [](RecordInMemory &r) { set_word(r, 1, 0, 3, 0x38); },
         100, "control-code: frame 2 " + misplaced},
        {"an impossible code", [](RecordInMemory &r) { set_word(r, 0, 3, 2, 0x3F); }, 0,
         "control-code: frame 1 " + impossible + "3, behind 0 of 100 samples\n"},
        {"the other one, in a last word", [](RecordInMemory &r) { set_word(r, 0, 15, 3, 0xC0); },
         84, "control-code: frame 1 " + impossible + "15, behind 84 of 100 samples\n"},
        {"one in the next frame", [](RecordInMemory &r) { set_word(r, 1, 2, 2, 0); }, 98,
         "control-code: frame 2 " + impossible + "2, behind 98 of 100 samples\n"},
        {"one behind the last sample", [](RecordInMemory &r) { set_word(r, 1, 4, 3, 0xFF); }, 100,
         ""},
        {"one in the fill", [](RecordInMemory &r) { set_word(r, 2, 0, 3, 0xFF); }, 100, ""},
        {"a word without differences", [](RecordInMemory &r) { set_word(r, 0, 9, 0, 0); }, 93,
         "count: the data hold 93 of 100 samples\n"},
        {"the other order", [](RecordInMemory &r) { r.header.word_order = 0; }, 100,
         "other-order: the frames are big-endian, other than the record says\n"},
        {"no order", [](RecordInMemory &r) { r.header.word_order = 7; }, 100, ""},
        {"no public rule", [](RecordInMemory &r) { r.header.encoding = 15; }, 0,
         "no-rule: there is no public rule how to decode encoding 15, US National Network\n"},
        {"an unknown code", [](RecordInMemory &r) { r.header.encoding = 99; }, 0,
         "no-encoding: encoding 99 is not known\n"},
        {"no code", [](RecordInMemory &r) { r.header.encoding = -1; }, 0,
         "no-encoding: nothing tells how the samples are encoded\n"},
    };
    SampleBuffer buffer;
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        RecordInMemory record(sound_record());
        row.edit(record);
        const Samples samples = decode(record.header, buffer);
        EXPECT_EQ(problems_of(samples), row.problems);
        Values ramp(row.given);
        std::iota(ramp.begin(), ramp.end(), 5);
        EXPECT_EQ(values_of(samples), ramp);
    }
}

TEST(Samples, FaultsOfOtherEncodings)
{
    const struct {
        Encoding encoding;
        std::string data;
        std::size_t count;
        std::optional<Values> given; ///< empty: undecodable
        const char *problems;
        bool little = false;
    } rows[] = {
        {Encoding::ascii, "A\r\n\t~ ", 6, Values{65, 13, 10, 9, 126, 32}, ""},
        {Encoding::ascii, "ABC", 2, Values{65, 66}, ""},
        {Encoding::ascii, "AB", 3, Values{65, 66}, "count: the data hold 2 of 3 samples\n"},
        {Encoding::ascii, std::string("A\0\x7F\x80Z", 5), 5, Values{65, 0, 127, -128, 90},
         "no-text-bytes: 3 bytes are no text, the first is byte 1, 0x00\n"},
        {Encoding::int16, std::string("\0\1\0\2\0", 5), 3, Values{1, 2},
         "count: the data hold 2 of 3 samples\n"},
        {Encoding::int24, "", 1, Values{}, "count: the data hold 0 of 1 samples\n"},
        {Encoding::sro, "\xA0\1\xA0\2\xB0\3\xF0\4", 4, Values{1, 2},
         "gain-code: sample 3 of 4 has gain code 11, above 10: nothing is decoded from there on\n"},
        {Encoding::sro, "\1\xA0\2\xBF", 2, Values{1},
         "gain-code: sample 2 of 2 has gain code 11, above 10: nothing is decoded from there on\n",
         true},
        {Encoding::none, "ABCD", 1, {}, "no-encoding: nothing tells how the samples are encoded\n"},
        {Encoding::rstn,
         "ABCD",
         1,
         {},
         "no-rule: there is no public rule how to decode encoding 33, RSTN gain-ranged\n"}};
    SampleBuffer buffer;
    for (const auto &row : rows) {
        const Samples samples = decode({row.data, row.encoding, row.little, row.count}, buffer);
        EXPECT_EQ(problems_of(samples), row.problems);
        EXPECT_EQ(samples.is_decoded(), row.given.has_value());
        EXPECT_EQ(values_of(samples), row.given.value_or(Values()));
    }
}

TEST(Samples, TheBufferIsUsedAgain)
{
    SampleBuffer buffer;
    const std::string data(4000, 'x');
    const auto decoded = [&](std::size_t count) {
        return decode({data, Encoding::int32, false, count}, buffer);
    };
    const std::int32_t *first = decoded(1000).get<Integers>()->data();
    EXPECT_EQ(decoded(10).get<Integers>()->data(), first);
    EXPECT_EQ(decoded(2000).problems.size(), 1U);
    EXPECT_EQ(decoded(1000).problems.size(), 0U);
    EXPECT_EQ(decoded(1000).get<Integers>()->data(), first);
}

} // namespace
