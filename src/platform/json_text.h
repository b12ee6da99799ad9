// JSON text of single values, written to where there is room for it.
#pragma once

#include "platform/format.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace quarl::json
{

/// Characters of the longest number.
inline constexpr std::size_t Number_Room = 32;

/// Characters that a string of `size` bytes may take, quotes included.
constexpr std::size_t string_room(std::size_t size) { return 6 * size + 2; }

/// What a text is written in.
enum class Charset { latin1, utf8 };

/// True for each byte that a string shows as it is.
using Shown = std::array<bool, 256>;

/// `besides` is escaped too.
constexpr Shown shown(Charset charset, char besides = '"')
{
    Shown shown{};
    for (int byte = 0x20; byte < 0x7F; ++byte)
        shown[byte] = byte != '"' && byte != '\\' && byte != besides;
    for (int byte = 0x80; byte < 0x100; ++byte)
        shown[byte] = charset == Charset::utf8;
    return shown;
}
inline constexpr Shown Shown_Latin = shown(Charset::latin1);
inline constexpr Shown Shown_Utf8 = shown(Charset::utf8);

/// One byte that is not shown as it is: escaped, or Latin-1 in UTF-8.
char *put_special(char *to, unsigned char byte);

/// The characters of a string, without its quotes; returns the end.
inline char *put_characters(char *to, std::string_view text, const Shown &shown)
{
    for (const char c : text) {
        if (const auto byte = static_cast<unsigned char>(c); shown[byte])
            *to++ = c;
        else
            to = put_special(to, byte);
    }
    return to;
}

/// True when all eight bytes of a word stay.
inline bool all_stay(std::uint64_t word)
{
    constexpr std::uint64_t Ones = 0x0101010101010101;
    constexpr std::uint64_t High = 0x80 * Ones;
    const auto has_zero = [](std::uint64_t w) { return (w - Ones) & ~w & High; };
    const std::uint64_t below_blank = word - 0x20 * Ones; // borrows only behind such a byte
    const std::uint64_t above_tilde = word + Ones;
    return ((word | below_blank | above_tilde | has_zero(word ^ '"' * Ones) |
             has_zero(word ^ '\\' * Ones)) &
            High) == 0;
}

/// Writes a text of Latin-1 as a JSON string; returns the end.
inline char *put_string(char *to, std::string_view text)
{
    *to++ = '"';
    for (std::uint64_t word = 0; text.size() >= sizeof word; text.remove_prefix(sizeof word)) {
        std::memcpy(&word, text.data(), sizeof word);
        if (!all_stay(word))
            break;
        std::memcpy(to, &word, sizeof word);
        to += sizeof word;
    }
    to = put_characters(to, text, Shown_Latin);
    *to++ = '"';
    return to;
}

/// A text as a JSON string.
std::string quoted(std::string_view text, Charset charset = Charset::latin1);

/// The shortest text that reads back as the same double; "null" when it is no finite number.
char *put_any_real(char *to, double value);

/// With `digits` significant ones at most, in Real_Room.
char *put_rounded(char *to, double value, int digits);

/// Rounded to so many decimals (5 at most), without zeros at the end.
char *put_decimals(char *to, double value, int decimals);

inline char *put_number(char *to, std::int64_t value)
{
    auto rest = static_cast<std::uint64_t>(value);
    if (value < 0) {
        *to++ = '-';
        rest = ~rest + 1;
    }
    if (rest < 10) { // as most are
        *to = static_cast<char>('0' + rest);
        return to + 1;
    }
    char *const end = to + format::decimal_digits(rest);
    char *at = end;
    for (; rest >= 100; rest /= 100)
        format::put_pair(at -= 2, rest % 100);
    if (rest >= 10)
        format::put_pair(at - 2, rest);
    else
        at[-1] = static_cast<char>('0' + rest);
    return end;
}
inline char *put_number(char *to, int value) { return put_number(to, std::int64_t{value}); }

inline char *put_number(char *to, double value)
{
    constexpr double Few_Digits = 10000; // from here on an exponent may be shorter
    if (std::fabs(value) < Few_Digits && (value != 0 || !std::signbit(value)))
        if (const int whole = static_cast<int>(value); whole == value)
            return put_number(to, whole);
    return put_any_real(to, value);
}

/// Copies a text whose size is known to the compiler.
template <std::size_t N> char *put_text(char *to, const char (&text)[N])
{
    std::memcpy(to, text, N - 1);
    return to + N - 1;
}

inline char *put_bool(char *to, bool value)
{
    std::copy_n(value ? "true " : "false", 5, to); // of one size: faster than by the real one
    return to + (value ? 4 : 5);
}

} // namespace quarl::json
