// Codes of channels, and times as text.
#include "platform/format.h"
#include "platform/keyed_hash.h"
#include "platform/text.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstring>
#include <quarl/contents.h>

namespace quarl
{

namespace
{

void put(char *to, std::string_view code, std::size_t size) { trimmed(code).copy(to, size); }

} // namespace

ChannelCode::ChannelCode(std::string_view network, std::string_view station,
                         std::string_view location, std::string_view channel, int subchannel)
    : subchannel_(subchannel)
{
    put(&letters_[0], network, 2);
    put(&letters_[2], station, 5);
    put(&letters_[7], location, 2);
    put(&letters_[9], channel, 3);
}

std::string ChannelCode::text() const
{
    std::string all(network());
    all += '_';
    all += station();
    if (channel().empty() && location().empty())
        return all;
    all += '_';
    all += location();
    all += '_';
    all += channel();
    if (subchannel_ != 0)
        all += ':' + std::to_string(subchannel_);
    return all;
}

std::size_t ChannelCode::hash() const
{
    std::array<std::uint64_t, 2> words{};
    std::memcpy(words.data(), letters_.data(), letters_.size());
    words[1] |= std::uint64_t{static_cast<std::uint32_t>(subchannel_)} << 32;
    return keyed_hash(words);
}

std::string time_text(double time)
{
    constexpr double Day = 86400.0;
    constexpr double Ticks = 10000.0;
    if (!(time > Always && time < Forever))
        return {};
    const double rounded = std::round(time * Ticks) / Ticks;
    const double day = std::floor(rounded / Day);
    const auto date = std::chrono::sys_days(std::chrono::days(static_cast<int>(day)));
    const std::chrono::year year = std::chrono::year_month_day(date).year();
    const auto first = std::chrono::sys_days(year / std::chrono::January / 1);
    const int day_of_year = static_cast<int>((date - first).count()) + 1;
    const auto ticks = static_cast<std::int64_t>(std::round((rounded - day * Day) * Ticks));
    std::string text = formatted<"%04d,%03d">(static_cast<int>(year), day_of_year);
    if (ticks == 0)
        return text;
    const int seconds = static_cast<int>(ticks / 10000);
    return text + formatted<",%02d:%02d:%02d.%04d">(seconds / 3600, seconds / 60 % 60, seconds % 60,
                                                    static_cast<int>(ticks % 10000));
}

} // namespace quarl
