#include "json/text.h"

#include <charconv>

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

std::string quoted(std::string_view text, bool is_utf8)
{
    std::string all(string_room(text.size()), '\0');
    char *to = all.data();
    *to++ = '"';
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (Stays[byte] || (is_utf8 && byte >= 0x80))
            *to++ = c;
        else
            to = put_special(to, byte);
    }
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

} // namespace quarl::json
