#include "html/notation.h"

#include <algorithm>
#include <quarl/time.h>

namespace quarl::html
{

namespace
{

bool is_digit(char c) { return c >= '0' && c <= '9'; }
bool is_code(char c)
{
    return is_digit(c) || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_';
}

/// The part of a text that can be a time: "2018,191,12:30:00.0000", cut short behind any part.
std::string_view time_at(std::string_view text)
{
    constexpr std::string_view Form = "dddd,ddd,dd:dd:dd.dddddd";
    std::size_t size = 0;
    while (size < std::min(text.size(), Form.size()) &&
           (Form[size] == 'd' ? is_digit(text[size]) : text[size] == Form[size]))
        ++size;
    for (const std::size_t end : {24, 23, 22, 21, 20, 19, 17, 14, 11, 8})
        if (end <= size && (end == text.size() || !is_digit(text[end])))
            return text.substr(0, end);
    return {};
}

std::string put_name(std::string_view name)
{
    std::string put(name);
    std::replace(put.begin(), put.end(), '_', '.');
    return put;
}

} // namespace

std::string page_name(const ChannelCode &code)
{
    std::string name(code.network());
    name.append(".").append(code.station());
    if (!code.channel().empty() || !code.location().empty())
        name.append(".").append(code.location()).append(".").append(code.channel());
    if (code.subchannel() != 0)
        name.append(" (").append(std::to_string(code.subchannel())).append(")");
    return name;
}

std::string page_time(std::string_view seed)
{
    constexpr std::size_t Date = 10;
    const auto time = read_time(seed);
    std::string iso = time ? iso_text(*time) : std::string();
    if (iso.empty())
        return iso;
    iso[Date] = ' ';
    iso.pop_back(); // the zone
    iso.erase(iso.find_last_not_of('0') + 1);
    if (iso.back() == '.')
        iso.pop_back();
    if (iso.ends_with(" 00:00:00"))
        iso.resize(Date);
    return iso;
}

std::string page_time(double seconds) { return page_time(time_text(seconds)); }

void Notation::know(const ChannelCode &code) { names_.insert(code.text()); }

std::string Notation::put(std::string_view text) const
{
    std::string put;
    while (!text.empty()) {
        std::size_t size = 0;
        while (size < text.size() && is_code(text[size]))
            ++size;
        const std::string_view time = is_digit(text[0]) ? time_at(text) : std::string_view();
        if (const std::string iso = time.empty() ? "" : page_time(time); !iso.empty()) {
            put += iso;
            size = time.size();
        } else if (size > 0 && names_.contains(std::string(text.substr(0, size)))) {
            put += put_name(text.substr(0, size));
        } else {
            size = std::max<std::size_t>(size, 1);
            put += text.substr(0, size);
        }
        text.remove_prefix(size);
    }
    return put;
}

} // namespace quarl::html
