// How values are put in findings, and what several rules ask about channels.
#include "check/rule.h"

#include "platform/escaped.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <numbers>

namespace quarl
{

std::string shown(double value)
{
    std::array<char, 40> text{};
    const auto short_text = std::to_chars(text.data(), text.data() + text.size(), value);
    if (short_text.ptr - text.data() <= 9)
        return {text.data(), short_text.ptr};
    const auto end =
        std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::general, 7);
    return {text.data(), end.ptr};
}

std::string shown_time(double time)
{
    std::string text = time_text(time);
    if (!text.empty())
        return text;
    return time >= Forever ? "no end" : "no start";
}

std::string quoted(std::string_view text) { return "'" + escaped_in_ascii(text) + "'"; }

std::string subject_of(const Inventory &inventory, const ChannelEpoch &epoch)
{
    const std::string start = time_text(epoch.start);
    const std::string code = inventory.channel_of(epoch).code.text();
    return start.empty() ? code : code + " " + start;
}

double distance(double latitude, double longitude, double other_latitude, double other_longitude)
{
    constexpr double Radius = 6371.0;
    constexpr double Degree = std::numbers::pi / 180.0;
    const double north = std::sin((other_latitude - latitude) * Degree / 2);
    const double east = std::sin((other_longitude - longitude) * Degree / 2);
    const double half = north * north + std::cos(latitude * Degree) *
                                            std::cos(other_latitude * Degree) * east * east;
    return 2 * Radius * std::asin(std::sqrt(std::clamp(half, 0.0, 1.0)));
}

bool is_log(const Inventory &inventory, const ChannelEpoch &epoch)
{
    static constexpr std::array<std::string_view, 10> Codes = {"LOG", "ACE", "OCF", "SOH", "LCE",
                                                               "LCL", "LCQ", "GLA", "GPL", "GNS"};
    constexpr int Text_Family = 80;
    if (epoch.flags.find_first_of("HFM") != std::string::npos)
        return true;
    const DictionaryEntry *format = inventory.entry(Dictionary::data_formats, epoch.format);
    if (format && format->family == Text_Family)
        return true;
    const std::string_view code = inventory.channel_of(epoch).code.channel();
    return std::find(Codes.begin(), Codes.end(), code) != Codes.end();
}

} // namespace quarl
