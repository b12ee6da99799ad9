#include "platform/json_text.h"

#include <charconv>
#include <cstdlib>

namespace quarl::json
{

namespace
{

/// The letter that stands for a control character behind "\"; NUL when there is none.
char short_escape(unsigned char byte)
{
    switch (byte) {
    case '"':
    case '\\':
        return static_cast<char>(byte);
    case '\b':
        return 'b';
    case '\t':
        return 't';
    case '\n':
        return 'n';
    case '\f':
        return 'f';
    case '\r':
        return 'r';
    default:
        return '\0';
    }
}

/// Makes "1.5e+09" and "1.5e-09" what they need: "1.5e9", "1.5e-9". Returns the end.
char *without_filling(char *begin, char *end)
{
    char *at = end - begin > 4 ? end - 4 : end;
    if (at == end || *at != 'e') // an exponent of three digits has no zeros
        return end;
    char *to = at + 1;
    if (at[1] == '-')
        ++to;
    if (at[2] != '0')
        *to++ = at[2];
    *to++ = at[3];
    return to;
}

} // namespace

char *put_special(char *to, unsigned char byte)
{
    constexpr unsigned char First_Letter = 0xA0; // Latin-1 has control characters below it too
    if (const char letter = short_escape(byte)) {
        *to++ = '\\';
        *to++ = letter;
    } else if (byte < First_Letter) {
        to = put_text(to, "\\u00");
        to = format::put_digits<16>(to, byte, 2);
    } else {
        *to++ = static_cast<char>(0xC0 | byte >> 6);
        *to++ = static_cast<char>(0x80 | (byte & 0x3F));
    }
    return to;
}

std::string quoted(std::string_view text, Charset charset)
{
    std::string all(string_room(text.size()), '\0');
    char *to = all.data();
    *to++ = '"';
    to = put_characters(to, text, charset == Charset::utf8 ? Shown_Utf8 : Shown_Latin);
    *to++ = '"';
    all.resize(static_cast<std::size_t>(to - all.data()));
    return all;
}

char *put_any_real(char *to, double value)
{
    if (!std::isfinite(value))
        return put_text(to, "null");
    return std::to_chars(to, to + Number_Room, value).ptr;
}

char *put_rounded(char *to, double value, int digits)
{
    if (!std::isfinite(value))
        return put_text(to, "null");
    return without_filling(to, put_general(to, value, digits));
}

char *put_decimals(char *to, double value, int decimals)
{
    constexpr double Most = 1e9;
    static constexpr std::array<int, 6> Powers = {1, 10, 100, 1000, 10000, 100000};
    if (!(std::abs(value) < Most))
        return put_number(to, value);
    const int scale = Powers[static_cast<std::size_t>(decimals)];
    auto units = static_cast<std::int64_t>(std::llround(value * scale));
    if (units < 0)
        *to++ = '-';
    units = std::abs(units);
    to = put_number(to, units / scale);
    auto rest = static_cast<std::uint64_t>(units % scale);
    if (rest == 0)
        return to;
    for (; rest % 10 == 0; rest /= 10)
        --decimals;
    *to++ = '.';
    return format::put_digits<10>(to, rest, decimals);
}

} // namespace quarl::json
