#include "html/markup.h"

#include "platform/format.h"
#include "json/text.h"

#include <array>
#include <charconv>
#include <cmath>

namespace quarl::html
{

namespace
{

constexpr unsigned char First_Shown = 0xA1; ///< Latin-1: control characters and a blank below
constexpr unsigned char Soft_Hyphen = 0xAD;

/// Bytes that stand in markup as they are.
constexpr auto Plain = [] {
    std::array<bool, 256> plain{};
    for (unsigned byte = 0x20; byte < 0x7F; ++byte)
        plain[byte] = byte != '&' && byte != '<' && byte != '>' && byte != '"' && byte != '\'';
    return plain;
}();

bool is_plain(char c) { return Plain[static_cast<unsigned char>(c)]; }

std::string_view entity(unsigned char byte)
{
    switch (byte) {
    case '&':
        return "&amp;";
    case '<':
        return "&lt;";
    case '>':
        return "&gt;";
    case '"':
        return "&quot;";
    case '\'':
        return "&#39;";
    default:
        return {};
    }
}

/// Bytes of the character that `lead` begins, and the bits of it that count; 0: none begins so.
struct Lead {
    std::size_t size;
    std::uint32_t bits;
};

Lead lead_of(unsigned char lead)
{
    if (lead < 0x80)
        return {1, lead};
    if (lead >= 0xC2 && lead < 0xE0)
        return {2, lead & 0x1FU};
    if (lead >= 0xE0 && lead < 0xF0)
        return {3, lead & 0x0FU};
    if (lead >= 0xF0 && lead < 0xF5)
        return {4, lead & 0x07U};
    return {0, 0};
}

/// A character that shows: no control, no separator, nothing that turns the direction of writing.
bool shows(std::uint32_t character, std::size_t size)
{
    constexpr std::array<std::uint32_t, 5> Least = {0, 0x20, First_Shown, 0x800, 0x10000};
    const bool surrogate = character >= 0xD800 && character < 0xE000;
    const bool formats = (character >= 0x200B && character < 0x2010) ||
                         (character >= 0x2028 && character < 0x2030) ||
                         (character >= 0x2060 && character < 0x2070) || character == Soft_Hyphen;
    return character >= Least[size] && character != 0x7F && character < 0x110000 && !surrogate &&
           !formats && character != 0xFEFF;
}

} // namespace

bool is_plain_utf8(std::string_view bytes)
{
    while (!bytes.empty()) {
        auto [size, character] = lead_of(static_cast<unsigned char>(bytes[0]));
        if (size == 0 || size > bytes.size())
            return false;
        for (std::size_t i = 1; i < size; ++i) {
            const auto byte = static_cast<unsigned char>(bytes[i]);
            if ((byte & 0xC0) != 0x80)
                return false;
            character = character << 6 | (byte & 0x3FU);
        }
        if (!shows(character, size))
            return false;
        bytes.remove_prefix(size);
    }
    return true;
}

void Markup::special(unsigned char byte)
{
    constexpr std::size_t Most = 8;
    if (const std::string_view named = entity(byte); !named.empty()) {
        out_.write(named);
        return;
    }
    char *to = out_.reserve(Most);
    if (byte >= First_Shown && byte != Soft_Hyphen) {
        *to++ = static_cast<char>(0xC0 | byte >> 6);
        *to++ = static_cast<char>(0x80 | (byte & 0x3F));
    } else {
        to = json::put_text(to, "\\x");
        to = format::put_digits<16>(to, byte, 2);
    }
    out_.commit(to);
}

void Markup::text(std::string_view latin)
{
    while (!latin.empty()) {
        std::size_t plain = 0;
        while (plain < latin.size() && is_plain(latin[plain]))
            ++plain;
        out_.write(latin.substr(0, plain));
        if (plain == latin.size())
            return;
        special(static_cast<unsigned char>(latin[plain]));
        latin.remove_prefix(plain + 1);
    }
}

void Markup::path(std::string_view name)
{
    if (!is_plain_utf8(name)) {
        text(name);
        return;
    }
    for (const char c : name) {
        if (static_cast<unsigned char>(c) >= 0x80)
            out_.write({&c, 1});
        else
            text({&c, 1});
    }
}

void Markup::number(std::int64_t value)
{
    out_.commit(json::put_number(out_.reserve(json::Number_Room), value));
}

void Markup::grouped(std::int64_t value)
{
    if (value >= 1000) {
        grouped(value / 1000);
        out_.write(formatted<",%03d">(value % 1000));
    } else {
        number(value);
    }
}

void Markup::real(double value)
{
    char *to = out_.reserve(json::Number_Room);
    if (std::isfinite(value))
        out_.commit(json::put_number(to, value));
    else
        out_.commit(std::to_chars(to, to + json::Number_Room, value).ptr);
}

} // namespace quarl::html
