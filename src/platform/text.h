// Small helpers for fixed-width text, in the "C" locale.
#pragma once

#include <cstring>
#include <string>
#include <string_view>

namespace quarl
{

/// isspace of the "C" locale.
constexpr bool is_space(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

constexpr bool is_digit(char c) { return c >= '0' && c <= '9'; }

/// isalnum of the "C" locale.
constexpr bool is_alnum(char c)
{
    return is_digit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

/// `text` up to its first NUL.
inline std::string_view up_to_nul(std::string_view text) { return text.substr(0, text.find('\0')); }

/// `text` without white space at either end.
inline std::string_view trimmed(std::string_view text)
{
    while (!text.empty() && is_space(text.back()))
        text.remove_suffix(1);
    while (!text.empty() && is_space(text.front()))
        text.remove_prefix(1);
    return text;
}

/// True when `text` is empty or all white space.
bool blank(std::string_view text);

/// `text` with its small letters as capitals.
std::string upper(std::string_view text);

/// The leading decimal integer of `text` as strtol reads it (white space, sign, digits), narrowed
/// to int. `*used` is the number of characters converted, 0 when there is no number.
int leading_int(std::string_view text, std::size_t *used);

/// leading_int without the count; 0 when there is no number.
int to_int(std::string_view text);

/// What follows the last slash of a path.
inline std::string_view base_name(std::string_view path)
{
    return path.substr(path.rfind('/') + 1);
}

/// Copies as much of `from` as fits into `to` and terminates it.
template <std::size_t N> void copy_text(char (&to)[N], std::string_view from)
{
    const std::size_t size = from.copy(to, N - 1);
    std::memset(to + size, 0, N - size);
}

} // namespace quarl
