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

/// True for a byte that a string shows as it is.
inline constexpr auto Stays = [] {
    std::array<bool, 256> stays{};
    for (int byte = 0x20; byte < 0x7F; ++byte)
        stays[byte] = byte != '"' && byte != '\\';
    return stays;
}();

/// One byte that does not stay: escaped, or in UTF-8.
char *put_special(char *to, unsigned char byte);

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
    for (const char c : text) {
        if (const auto byte = static_cast<unsigned char>(c); Stays[byte])
            *to++ = c;
        else
            to = put_special(to, byte);
    }
    *to++ = '"';
    return to;
}

/// A text as a JSON string: of Latin-1, or of UTF-8 where it `is_utf8`.
std::string quoted(std::string_view text, bool is_utf8 = false);

/// The shortest text that reads back as the same double; "null" when it is no finite number.
char *put_any_real(char *to, double value);

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
