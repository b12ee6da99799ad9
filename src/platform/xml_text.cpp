#include "platform/xml_text.h"

#include "platform/utf8.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <utility>

namespace quarl::xml
{

namespace
{

constexpr std::string_view Replacement = "\xEF\xBF\xBD"; // U+FFFD
constexpr std::size_t Enough = 1 << 17;                  ///< bytes that are handed over at a time

/// Whether XML 1.0 can hold a character that is none of Unicode's surrogates.
constexpr bool is_of_xml(std::uint32_t character)
{
    if (character < 0x20)
        return character == '\t' || character == '\n' || character == '\r';
    return character != 0xFFFE && character != 0xFFFF;
}

/// What stands for an ASCII character that has a meaning in XML, or that a reader would change.
constexpr std::string_view reference(char c)
{
    switch (c) {
    case '&':
        return "&amp;";
    case '<':
        return "&lt;";
    case '>':
        return "&gt;";
    case '"':
        return "&quot;";
    case '\t':
        return "&#9;";
    case '\n':
        return "&#10;";
    case '\r':
        return "&#13;";
    default:
        return {};
    }
}

constexpr std::array<bool, 256> Plain = [] {
    std::array<bool, 256> plain{};
    for (int c = 0x20; c < 0x80; ++c)
        plain[static_cast<std::size_t>(c)] = reference(static_cast<char>(c)).empty();
    return plain;
}();

bool is_utf8(std::string_view text)
{
    while (!text.empty()) {
        const std::size_t size = utf8_character(text).size;
        if (size == 0)
            return false;
        text.remove_prefix(size);
    }
    return true;
}

/// Appends one character of ASCII; false when XML has none such.
bool append_ascii(std::string *to, char c)
{
    if (!is_of_xml(static_cast<unsigned char>(c)))
        return false;
    const std::string_view instead = reference(c);
    if (instead.empty())
        *to += c;
    else
        *to += instead;
    return true;
}

void append_latin(std::string *to, unsigned char byte)
{
    *to += static_cast<char>(0xC0 | byte >> 6);
    *to += static_cast<char>(0x80 | (byte & 0x3F));
}

constexpr std::size_t Number_Room = 32;

/// Writes a number to where there is Number_Room; returns the end.
char *put_number(char *to, double value)
{
    constexpr double Few_Digits = 1e5; // from here on an exponent may be shorter
    const int whole = std::fabs(value) < Few_Digits ? static_cast<int>(value) : 0;
    if (whole == value && whole != 0)
        return std::to_chars(to, to + Number_Room, whole).ptr;
    if (std::isfinite(value))
        return std::to_chars(to, to + Number_Room, value).ptr;
    const std::string_view name = std::isnan(value) ? "NaN" : value > 0 ? "INF" : "-INF";
    return to + name.copy(to, name.size());
}

} // namespace

std::size_t append_escaped(std::string *to, std::string_view text)
{
    std::size_t at = 0;
    while (at < text.size() && Plain[static_cast<unsigned char>(text[at])])
        ++at;
    to->append(text.substr(0, at));
    text.remove_prefix(at);
    std::size_t replaced = 0;
    const bool utf8 = is_utf8(text);
    while (!text.empty()) {
        const auto byte = static_cast<unsigned char>(text.front());
        const Utf8Character character = utf8 ? utf8_character(text) : Utf8Character{1, byte};
        bool held = true;
        if (byte < 0x80)
            held = append_ascii(to, text.front());
        else if (!utf8)
            append_latin(to, byte);
        else if (held = is_of_xml(character.code); held)
            to->append(text.substr(0, character.size));
        if (!held) {
            *to += Replacement;
            ++replaced;
        }
        text.remove_prefix(character.size);
    }
    return replaced;
}

void append_number(std::string *to, double value)
{
    std::array<char, Number_Room> room; // not cleared: this is most of the work on a document
    to->append(room.data(), put_number(room.data(), value));
}

void Writer::declaration() { held_ += "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"; }

void Writer::begin_line() { held_.append(2 * names_.size(), ' '); }

/// Ends the tag of the element that is open.
void Writer::begin_content()
{
    if (in_tag_)
        held_ += ">\n";
    in_tag_ = false;
}

void Writer::open(Name name)
{
    begin_content();
    if (held_.size() > Enough)
        finish();
    begin_line();
    held_ += '<';
    held_ += name.text();
    names_.push_back(name.text());
    in_tag_ = true;
}

void Writer::attribute(Name name, std::string_view text)
{
    begin_attribute(name);
    replaced_ += append_escaped(&held_, text);
    held_ += '"';
}

void Writer::begin_attribute(Name name)
{
    held_ += ' ';
    held_ += name.text();
    held_ += "=\"";
}

void Writer::attribute(Name name, std::int64_t number)
{
    std::array<char, 24> room; // not cleared, as above
    begin_attribute(name);
    held_.append(room.data(), std::to_chars(room.begin(), room.end(), number).ptr);
    held_ += '"';
}

void Writer::attribute(Name name, double number)
{
    begin_attribute(name);
    append_number(&held_, number);
    held_ += '"';
}

void Writer::value(std::string_view text)
{
    held_ += '>';
    replaced_ += append_escaped(&held_, text);
    in_tag_ = false;
    has_value_ = true;
}

void Writer::value(std::int64_t number) { value(std::to_string(number)); }

void Writer::value(double number)
{
    held_ += '>';
    append_number(&held_, number);
    in_tag_ = false;
    has_value_ = true;
}

void Writer::close()
{
    const std::string_view name = names_.back();
    names_.pop_back();
    if (in_tag_) {
        held_ += "/>\n";
    } else {
        if (!has_value_)
            begin_line();
        held_ += "</";
        held_ += name;
        held_ += ">\n";
    }
    in_tag_ = false;
    has_value_ = false;
}

void Writer::row(Name name, Name attribute, std::int64_t place, double number)
{
    begin_content();
    if (held_.size() > Enough)
        finish();
    const std::size_t indent = 2 * names_.size();
    const std::size_t before = held_.size();
    const auto put = [](char *to, std::string_view text) {
        return to + text.copy(to, text.size());
    };
    held_.resize(before + indent + 2 * name.text().size() + attribute.text().size() + 80);
    char *to = held_.data() + before;
    to = put(std::fill_n(to, indent, ' '), "<");
    to = put(put(put(put(to, name.text()), " "), attribute.text()), "=\"");
    to = put(std::to_chars(to, to + 24, place).ptr, "\">");
    to = put_number(to, number);
    to = put(put(put(to, "</"), name.text()), ">\n");
    held_.resize(static_cast<std::size_t>(to - held_.data()));
}

/// Two hyphens in a row would end it.
void Writer::comment(std::string_view text)
{
    begin_content();
    begin_line();
    std::string escaped;
    replaced_ += append_escaped(&escaped, text);
    held_ += "<!-- ";
    for (const char c : escaped) {
        if (c == '-' && held_.back() == '-')
            held_ += ' ';
        held_ += c;
    }
    held_ += " -->\n";
}

void Writer::finish()
{
    sink_(held_);
    held_.clear();
}

std::size_t Writer::take_replaced() { return std::exchange(replaced_, 0); }

} // namespace quarl::xml
