#include "samples/steim.h"

#include "platform/format.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <utility>

namespace quarl
{

namespace
{

// Which differences a word holds changes from word to word as it likes, so that a branch on it is
// predicted wrong again and again: that took most of the time. Instead, each word is multiplied by
// a row of powers of two, which brings one difference each to the highest bits, and all of them
// are stored, whether there are as many or not. The next word overwrites what were none.

constexpr std::size_t Frame_Size = 64;
constexpr std::size_t Words = 16; ///< of a frame, the control word included
constexpr std::size_t Lanes = 4;
using Unsigned4 [[gnu::vector_size(16)]] = std::uint32_t;
using Signed4 [[gnu::vector_size(16)]] = std::int32_t;

/// A word of one control code, with the two highest bits of the word as another.
struct Row {
    alignas(16) std::array<std::uint32_t, 2 * Lanes> powers{}; ///< 0: no difference
    int unused_bits = 0;                                       ///< beside a difference in 32 bits
    std::uint32_t count = 0;                                   ///< of differences
    bool bad = false;                                          ///< there is no such code
};

using Layout = std::array<Row, 16>;

/// `count` differences of `width` bits each, the last one in the lowest bits of the word.
constexpr Row differences(int count, int width)
{
    Row row;
    row.unused_bits = 32 - width;
    row.count = count;
    for (int i = 0; i < count; ++i)
        row.powers[i] = std::uint32_t{1} << (32 - width * (count - i));
    return row;
}

constexpr Row None = {};
constexpr Row Bad = {.bad = true};

constexpr Layout whole_words(const Row &bytes, const Row &halves, const Row &word)
{
    return {None,   None,   None,   None,   bytes, bytes, bytes, bytes,
            halves, halves, halves, halves, word,  word,  word,  word};
}

constexpr Layout Steim1 = whole_words(differences(4, 8), differences(2, 16), differences(1, 32));

constexpr Row Four = differences(4, 8);
constexpr Layout Steim2 = {None,
                           None,
                           None,
                           None,
                           Four,
                           Four,
                           Four,
                           Four,
                           Bad,
                           differences(1, 30),
                           differences(2, 15),
                           differences(3, 10),
                           differences(5, 6),
                           differences(6, 5),
                           differences(7, 4),
                           Bad};

const Row &row_of(const Layout &layout, std::uint32_t code, std::uint32_t word)
{
    return layout[code << 2 | word >> 30];
}

template <bool Swapped> std::uint32_t read_word(const char *frame, std::size_t word)
{
    std::uint32_t value = 0;
    std::memcpy(&value, frame + sizeof value * word, sizeof value);
    return Swapped ? __builtin_bswap32(value) : value;
}

/// Control code of a word.
std::uint32_t code_of(std::uint32_t control, std::size_t word)
{
    return control >> 2 * (Words - 1 - word) & 3;
}

// The codes of words that are no differences.
constexpr std::uint32_t Control_Code = 0xC0000000;
constexpr std::uint32_t First_Codes = 0xFC000000; ///< with the two integration constants

/// How far the frames were read.
struct Unpacked {
    std::size_t count = 0;     ///< samples, of those that should be there
    std::size_t frames = 0;    ///< that were looked at
    std::size_t bad_word = 0;  ///< of the last frame: its code stands for nothing; 0: none
    std::size_t bad_frame = 0; ///< the first with codes of words that are no differences; 0: none
    SteimConstants constants;

    [[nodiscard]] bool is_sound(const std::int32_t *values, std::size_t expected) const
    {
        return bad_word == 0 && bad_frame == 0 && count == expected &&
               (count == 0 || values[count - 1] == constants.reverse);
    }
};

/// Writes the differences of a word, and as many vectors as `Vectors` say, whatever they hold.
template <std::size_t Vectors>
void unpack_word(const Row &row, std::uint32_t word, std::int32_t *to)
{
    const Unsigned4 copies = {word, word, word, word};
    for (std::size_t i = 0; i < Vectors; ++i) {
        Unsigned4 powers;
        std::memcpy(&powers, &row.powers[i * Lanes], sizeof powers);
        const Signed4 values = std::bit_cast<Signed4>(copies * powers) >> row.unused_bits;
        std::memcpy(to + i * Lanes, &values, sizeof values);
    }
}

/// Finds the first word of a frame whose code stands for nothing, if it comes before the last of
/// `wanted` differences. `*count` differences come before it.
template <bool Swapped>
std::size_t find_bad_word(const Layout &layout, const char *frame, std::uint32_t control,
                          std::size_t wanted, std::size_t *count)
{
    for (std::size_t i = 1; i < Words && *count < wanted; ++i) {
        const Row &row = row_of(layout, code_of(control, i), read_word<Swapped>(frame, i));
        if (row.bad)
            return i;
        *count += row.count;
    }
    return 0;
}

/// Unpacks the differences of as many frames as it takes to get `wanted` of them. `to` has room for
/// those of one frame more.
template <std::size_t Vectors, bool Swapped>
Unpacked unpack(const Layout &layout, std::string_view data, std::size_t wanted, std::int32_t *to)
{
    Unpacked done;
    std::int32_t *at = to;
    std::uint32_t odd_codes = First_Codes;
    bool bad = false;
    for (; !bad && done.count < wanted && data.size() >= Frame_Size;
         data.remove_prefix(Frame_Size)) {
        const char *frame = data.data();
        std::uint32_t control = read_word<Swapped>(frame, 0);
        ++done.frames;
        if ((control & odd_codes) != 0 && done.bad_frame == 0)
            done.bad_frame = done.frames;
        control &= ~odd_codes;
        odd_codes = Control_Code;
        for (std::size_t i = 1; i < Words; ++i) {
            const std::uint32_t word = read_word<Swapped>(frame, i);
            const Row &row = row_of(layout, code_of(control, i), word);
            unpack_word<Vectors>(row, word, at);
            at += row.count;
            bad |= row.bad;
        }
        if (bad)
            done.bad_word = find_bad_word<Swapped>(layout, frame, control, wanted, &done.count);
        else
            done.count = static_cast<std::size_t>(at - to);
    }
    done.count = std::min(done.count, wanted);
    return done;
}

/// Turns each value into the sum of all up to it, modulo 2^32, four at a time: up to three behind
/// the last may change.
void add_up(std::int32_t *values, std::size_t count)
{
    Unsigned4 before = {};
    constexpr Unsigned4 Zeros = {};
    for (std::size_t i = 0; i < count; i += Lanes) {
        Unsigned4 sums;
        std::memcpy(&sums, values + i, sizeof sums);
        sums += __builtin_shufflevector(Zeros, sums, 0, 4, 5, 6);
        sums += __builtin_shufflevector(Zeros, sums, 0, 1, 4, 5);
        sums += before;
        before = __builtin_shufflevector(sums, sums, 3, 3, 3, 3);
        std::memcpy(values + i, &sums, sizeof sums);
    }
}

template <std::size_t Vectors, bool Swapped>
Unpacked integrate(const Layout &layout, std::string_view data, std::size_t wanted,
                   std::int32_t *to)
{
    Unpacked done = unpack<Vectors, Swapped>(layout, data, wanted, to);
    if (done.frames == 0)
        return done;
    done.constants.forward = static_cast<std::int32_t>(read_word<Swapped>(data.data(), 1));
    done.constants.reverse = static_cast<std::int32_t>(read_word<Swapped>(data.data(), 2));
    if (done.count > 0)
        done.constants.first_difference = std::exchange(to[0], done.constants.forward);
    add_up(to, done.count);
    return done;
}

template <std::size_t Vectors>
Unpacked integrate_in_order(const Layout &layout, bool little, std::string_view data,
                            std::size_t wanted, std::int32_t *to)
{
    if (little == (std::endian::native == std::endian::little))
        return integrate<Vectors, false>(layout, data, wanted, to);
    return integrate<Vectors, true>(layout, data, wanted, to);
}

void complain_of_frames(const Decoding &task, const Unpacked &done, const std::int32_t *values)
{
    const std::size_t expected = task.encoded.count;
    if (done.bad_frame != 0)
        task.complain(SampleFault::control_code,
                      formatted<"frame %d has a control code for a word that holds no differences">(
                          done.bad_frame));
    if (done.bad_word != 0)
        task.complain(SampleFault::control_code,
                      formatted<"frame %d has an impossible control code for word %d, behind %d "
                                "of %d samples">(done.frames, done.bad_word, done.count, expected));
    else if (done.count < expected)
        task.complain_of_count(done.count);
    else if (values[done.count - 1] != done.constants.reverse)
        task.complain(SampleFault::last_sample,
                      formatted<"the last sample is %d, but %d by the reverse integration "
                                "constant">(values[done.count - 1], done.constants.reverse));
}

template <std::size_t Vectors> void decode_steim(const Decoding &task, const Layout &layout)
{
    const EncodedSamples &encoded = task.encoded;
    constexpr std::size_t Most_In_Frame = 2 * Lanes * Words;
    const std::size_t wanted =
        std::min(encoded.count, encoded.data.size() / Frame_Size * Most_In_Frame);
    std::int32_t *to = take_room(&task.room.integers, wanted + Most_In_Frame);
    const auto run = [&](bool little) {
        return integrate_in_order<Vectors>(layout, little, encoded.data, wanted, to);
    };
    bool little = encoded.little_endian;
    Unpacked done = run(little);
    if (!done.is_sound(to, encoded.count)) {
        little = !little;
        done = run(little);
        if (done.is_sound(to, encoded.count)) {
            task.complain(SampleFault::other_order,
                          little ? "the frames are little-endian, other than the record says"
                                 : "the frames are big-endian, other than the record says");
        } else {
            little = !little;
            done = run(little);
            complain_of_frames(task, done, to);
        }
    }
    task.samples.little_endian = little;
    task.samples.values = Integers(to, done.count);
    if (done.frames > 0)
        task.samples.steim = done.constants;
}

} // namespace

void decode_steim1(const Decoding &task) { decode_steim<1>(task, Steim1); }
void decode_steim2(const Decoding &task) { decode_steim<2>(task, Steim2); }

} // namespace quarl
