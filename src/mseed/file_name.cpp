#include "mseed/file_name.h"

#include "platform/calendar.h"
#include "platform/format.h"
#include "platform/text.h"

#include <algorithm>

namespace quarl::mseed
{

namespace
{

constexpr std::string_view Letters = "nslcqYmdjHMS%";

bool is_plain(std::string_view code)
{
    return std::all_of(code.begin(), code.end(),
                       [](char c) { return is_alnum(c) || c == '-' || c == '_'; });
}

Date date_of_parts(const TimeParts &time) { return date_of(time.year, time.day_of_year); }

std::string value_of(char letter, const NameParts &parts, const TimeParts &time)
{
    switch (letter) {
    case 'n':
        return std::string(parts.channel.network());
    case 's':
        return std::string(parts.channel.station());
    case 'l':
        return std::string(parts.channel.location());
    case 'c':
        return std::string(parts.channel.channel());
    case 'q':
        return {parts.quality};
    case 'Y':
        return formatted<"%04d">(time.year);
    case 'm':
        return formatted<"%02d">(date_of_parts(time).month);
    case 'd':
        return formatted<"%02d">(date_of_parts(time).day);
    case 'j':
        return formatted<"%03d">(time.day_of_year);
    case 'H':
        return formatted<"%02d">(time.hour);
    case 'M':
        return formatted<"%02d">(time.minute);
    case 'S':
        return formatted<"%02d">(time.second);
    default:
        return "%";
    }
}

/// Whether what stands between two slashes of a pattern can be the name of a file or folder.
bool names_something(std::string_view pattern, std::string_view name)
{
    return !name.empty() || pattern.empty();
}

} // namespace

bool has_plain_codes(const ChannelCode &code)
{
    return is_plain(code.network()) && is_plain(code.station()) && is_plain(code.location()) &&
           is_plain(code.channel());
}

std::string archive_name(const NameParts &parts)
{
    const ChannelCode &code = parts.channel;
    if (!has_plain_codes(code) || code.network().empty() || code.station().empty() ||
        code.channel().empty())
        return {};
    const TimeParts time = parts_of(parts.start);
    return formatted<"%04d/%s/%s/%s.D/%s.%s.%s.%s.D.%04d.%03d">(
        time.year, code.network(), code.station(), code.channel(), code.network(), code.station(),
        code.location(), code.channel(), time.year, time.day_of_year);
}

std::string NamePattern::set(std::string_view pattern)
{
    pattern_ = pattern;
    for (std::size_t at = pattern.find('%'); at != std::string_view::npos;
         at = pattern.find('%', at + 2))
        if (at + 1 == pattern.size() || Letters.find(pattern[at + 1]) == std::string_view::npos)
            return formatted<"%s stands for nothing in a name">(pattern.substr(at, 2));
    if (base_name(pattern).empty())
        return "the pattern names no file";
    return {};
}

std::string NamePattern::name(const NameParts &parts) const
{
    if (!has_plain_codes(parts.channel))
        return {};
    const TimeParts time = parts_of(parts.start);
    std::string all;
    for (std::size_t at = 0; at <= pattern_.size();) {
        const std::size_t end = std::min(pattern_.find('/', at), pattern_.size());
        const std::string_view piece = std::string_view(pattern_).substr(at, end - at);
        std::string name;
        for (std::size_t i = 0; i < piece.size(); ++i)
            name += piece[i] == '%' ? value_of(piece[++i], parts, time) : std::string(1, piece[i]);
        if (!names_something(piece, name))
            return {};
        all.append(at == 0 ? "" : "/").append(name);
        at = end + 1;
    }
    return all;
}

std::string NamePattern::folder() const
{
    const std::string fixed = pattern_.substr(0, pattern_.find('%'));
    const std::size_t slash = fixed.rfind('/');
    if (slash == std::string::npos)
        return ".";
    return slash == 0 ? "/" : fixed.substr(0, slash);
}

} // namespace quarl::mseed
