#include "samples/words.h"

#include "platform/format.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <type_traits>

namespace quarl
{

namespace
{

/// The `Size` bytes at `at` as an unsigned number.
template <std::size_t Size, bool Little> std::uint64_t read_word(const char *at)
{
    std::uint64_t word = 0;
    for (std::size_t i = 0; i < Size; ++i) // a load and a swap, to a compiler
        word |= std::uint64_t{static_cast<unsigned char>(at[i])} << 8 * (Little ? i : Size - 1 - i);
    return word;
}

/// The lowest `Bits` bits as a number in two's complement.
template <int Bits> constexpr std::int32_t to_signed(std::uint64_t word)
{
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(word) << (32 - Bits)) >>
           (32 - Bits);
}

/// The value of a word whose bits are its own.
template <class T> struct SameBits {
    T operator()(std::uint64_t word) const
    {
        using Word = std::conditional_t<sizeof(T) == sizeof(word), std::uint64_t, std::uint32_t>;
        return std::bit_cast<T>(static_cast<Word>(word));
    }
};

template <std::size_t Size, bool Little, class T, class F>
void convert(const char *from, std::size_t count, T *to, F f)
{
    constexpr bool Native = Little == (std::endian::native == std::endian::little);
    if constexpr (Native && std::is_same_v<F, SameBits<T>>) {
        if (count > 0)
            std::memcpy(to, from, count * Size);
        return;
    }
    for (std::size_t i = 0; i < count; ++i)
        to[i] = f(read_word<Size, Little>(from + i * Size));
}

/// Samples of `Size` bytes each, `f` of a word being its value; they go into `room`. Returns how
/// many there are.
template <std::size_t Size, class T, class F>
std::size_t decode_words(const Decoding &task, std::vector<T> *room, F f)
{
    const EncodedSamples &encoded = task.encoded;
    const std::size_t count = std::min(encoded.count, encoded.data.size() / Size);
    T *to = take_room(room, count);
    if (encoded.little_endian)
        convert<Size, true>(encoded.data.data(), count, to, f);
    else
        convert<Size, false>(encoded.data.data(), count, to, f);
    task.samples.values = std::span<const T>(to, count);
    task.complain_of_count(count);
    return count;
}

template <std::size_t Size, class F> std::size_t decode_integers(const Decoding &task, F f)
{
    return decode_words<Size>(task, &task.room.integers, f);
}
template <std::size_t Size, class F> std::size_t decode_floats(const Decoding &task, F f)
{
    return decode_words<Size>(task, &task.room.floats, f);
}

/// Bits 0 to 11 are the mantissa, what is above it, as far as the mask goes, the gain: a power of 2
/// to divide by.
template <int Mask> float geoscope(std::uint64_t word)
{
    constexpr int Middle = 2048;
    const int gain = static_cast<int>(word >> 12) & Mask;
    return static_cast<float>(static_cast<int>(word & 0xFFF) - Middle) /
           static_cast<float>(1 << gain);
}

constexpr int Sro_Unity = 10; ///< the gain code of factor 1

int sro_gain(std::uint64_t word) { return static_cast<int>(word >> 12); }

bool is_text(char c)
{
    return (c >= ' ' && c <= '~') || c == '\r' || c == '\n' || c == '\t' || c == '\f';
}

} // namespace

void decode_text(const Decoding &task)
{
    const std::string_view data = task.encoded.data.substr(0, task.encoded.count);
    char *to = take_room(&task.room.text, data.size());
    std::copy(data.begin(), data.end(), to);
    task.samples.values = Text(to, data.size());
    task.complain_of_count(data.size());
    const auto odd = std::find_if_not(data.begin(), data.end(), is_text);
    if (odd != data.end())
        task.complain(
            SampleFault::no_text_bytes,
            formatted<"%d bytes are no text, the first is byte %d, 0x%02x">(
                data.size() - std::count_if(odd, data.end(), is_text) - (odd - data.begin()),
                odd - data.begin(), static_cast<unsigned char>(*odd)));
}

void decode_int16(const Decoding &task) { decode_integers<2>(task, to_signed<16>); }
void decode_int24(const Decoding &task) { decode_integers<3>(task, to_signed<24>); }
void decode_int32(const Decoding &task) { decode_integers<4>(task, SameBits<std::int32_t>()); }
void decode_float32(const Decoding &task) { decode_floats<4>(task, SameBits<float>()); }
void decode_float64(const Decoding &task)
{
    decode_words<8>(task, &task.room.doubles, SameBits<double>());
}

void decode_geoscope_24(const Decoding &task)
{
    decode_floats<3>(task,
                     [](std::uint64_t word) { return static_cast<float>(to_signed<24>(word)); });
}
void decode_geoscope_gain3(const Decoding &task) { decode_floats<2>(task, geoscope<7>); }
void decode_geoscope_gain4(const Decoding &task) { decode_floats<2>(task, geoscope<15>); }

void decode_cdsn(const Decoding &task)
{
    decode_integers<2>(task, [](std::uint64_t word) {
        constexpr std::array<std::int32_t, 4> Factors = {1, 1 << 2, 1 << 4, 1 << 7};
        constexpr std::int32_t Middle = 8191;
        return (static_cast<std::int32_t>(word & 0x3FFF) - Middle) * Factors[word >> 14];
    });
}

void decode_sro(const Decoding &task)
{
    int largest = 0;
    const std::size_t count = decode_integers<2>(task, [&](std::uint64_t word) {
        const int gain = sro_gain(word);
        largest = std::max(largest, gain);
        return to_signed<12>(word) * (1 << std::max(Sro_Unity - gain, 0));
    });
    if (largest <= Sro_Unity)
        return;
    const std::size_t high = task.encoded.little_endian ? 1 : 0; // byte of the gain
    std::size_t good = 0;
    const auto gain_at = [&](std::size_t i) {
        return static_cast<unsigned char>(task.encoded.data[2 * i + high]) >> 4;
    };
    while (gain_at(good) <= Sro_Unity)
        ++good;
    task.samples.values = Integers(task.room.integers.data(), good);
    task.complain(SampleFault::gain_code,
                  formatted<"sample %d of %d has gain code %d, above %d: nothing is decoded from "
                            "there on">(good + 1, count, gain_at(good), Sro_Unity));
}

} // namespace quarl
