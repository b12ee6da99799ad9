#include "html/markup.h"

#include "platform/format.h"
#include "platform/json_text.h"
#include "platform/utf8.h"

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

} // namespace

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
