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
    if (!std::isfinite(value))
        return "no number";
    std::array<char, 40> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), value);
    return {text.data(), end.ptr};
}

std::string rounded(double value)
{
    constexpr int Digits = 7;
    if (!std::isfinite(value))
        return "no number";
    std::array<char, 40> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), value,
                                   std::chars_format::general, Digits);
    return {text.data(), end.ptr};
}

std::string shown(std::complex<double> value)
{
    return "(" + shown(value.real()) + ", " + shown(value.imag()) + ")";
}

std::string duration_text(double seconds)
{
    constexpr double Tick = 1e-4;
    constexpr double Minute = 60.0;
    constexpr std::int64_t Day = 86400;
    const double ticks = std::round(seconds / Tick);
    if (!(ticks * Tick >= Minute) || !(seconds < Forever))
        return seconds < Forever ? shown(ticks * 1e4 / 1e8) + " s" : "no end";
    const auto whole = static_cast<std::int64_t>(ticks * Tick + Tick / 2);
    const std::int64_t of_day = whole % Day;
    std::string text = whole >= Day ? std::to_string(whole / Day) + " d " : std::string();
    text += formatted<"%d:%02d:%02d">(of_day / 3600, of_day / 60 % 60, of_day % 60);
    const auto part = static_cast<std::int64_t>(ticks) - whole * 10000;
    return part > 0 ? text + formatted<".%04d">(part) : text;
}

std::string shown_time(double time)
{
    std::string text = time_text(time);
    if (!text.empty())
        return text;
    return time >= Forever ? "no end" : "no start";
}

std::string quoted(std::string_view text) { return "'" + escaped_in_ascii(text) + "'"; }

about::Epoch subject_of(const Inventory &inventory, const ChannelEpoch &epoch)
{
    const Channel &channel = inventory.channel_of(epoch);
    // Mostly the one that was added last.
    for (auto index = channel.epochs.rbegin(); index != channel.epochs.rend(); ++index)
        if (&inventory.channel_epochs()[*index] == &epoch)
            return {channel.code, epoch.start, *index};
    return {channel.code, epoch.start, 0};
}

about::Station subject_of(const Inventory &inventory, const StationEpoch &epoch)
{
    return {inventory.station_of(epoch).code, epoch.start};
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
