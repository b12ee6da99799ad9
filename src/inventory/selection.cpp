#include "inventory/selection.h"

#include "platform/format.h"
#include "platform/glob.h"

#include <algorithm>
#include <quarl/records.h>

namespace quarl
{

namespace
{

constexpr std::size_t Dots = 3; ///< between the codes of a channel
constexpr std::string_view No_Location = "--";

std::size_t count_dots(std::string_view text)
{
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), '.'));
}

/// The pattern without the dashes that may stand for an empty location.
std::string without_dashes(std::string_view glob)
{
    std::string pattern(glob);
    if (count_dots(glob) != Dots)
        return pattern;
    const std::size_t location = glob.find('.', glob.find('.') + 1) + 1;
    if (glob.substr(location, glob.find('.', location) - location) == No_Location)
        pattern.erase(location, No_Location.size());
    return pattern;
}

std::string dotted(const ChannelCode &code)
{
    std::string text(code.network());
    for (const std::string_view part : {code.station(), code.location(), code.channel()})
        text.append(1, '.').append(part);
    return text;
}

/// Reads a bound of the times into `bound`. Returns what is wrong with it, or "".
std::string read_bound(std::string_view text, std::optional<Time> *bound)
{
    *bound = read_iso_time(text);
    if (!*bound)
        *bound = read_time(text);
    return *bound ? "" : formatted<"no time: %s">(text);
}

} // namespace

std::string ChannelSelection::add(std::string_view globs)
{
    for (std::size_t at = 0; at <= globs.size();) {
        const std::size_t end = std::min(globs.find(',', at), globs.size());
        const std::string_view glob = globs.substr(at, end - at);
        at = end + 1;
        const std::size_t dots = count_dots(glob);
        if (dots > Dots || (dots < Dots && glob.find('*') == std::string_view::npos))
            return formatted<"no glob of NETWORK.STATION.LOCATION.CHANNEL: %s">(glob);
        globs_.push_back(without_dashes(glob));
    }
    return {};
}

std::string ChannelSelection::check_order() const
{
    return start_ && end_ && *start_ >= *end_ ? "the end is not behind the start" : "";
}

std::string ChannelSelection::set_start(std::string_view time)
{
    std::string fault = read_bound(time, &start_);
    return fault.empty() ? check_order() : fault;
}

std::string ChannelSelection::set_end(std::string_view time)
{
    std::string fault = read_bound(time, &end_);
    return fault.empty() ? check_order() : fault;
}

bool ChannelSelection::has(const ChannelCode &code) const
{
    if (globs_.empty())
        return true;
    const std::string text = dotted(code);
    return std::any_of(globs_.begin(), globs_.end(),
                       [&](const std::string &glob) { return matches_glob(glob, text); });
}

bool ChannelSelection::has(double start, double end) const
{
    return (!end_ || start < seconds(*end_)) && (!start_ || end > seconds(*start_));
}

bool ChannelSelection::has(const std::optional<DataTimes> &times) const
{
    if (!has_times())
        return true;
    return times && (!end_ || times->start < *end_) && (!start_ || times->end >= *start_);
}

bool ChannelSelection::has(const Item &item, const blk_dh_t &header) const
{
    return has(code_of(header)) &&
           (!has_times() || has(data_times(header, item.data_blockettes().refinement())));
}

} // namespace quarl
