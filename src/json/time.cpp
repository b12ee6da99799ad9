#include "json/time.h"

#include "platform/json_text.h"
#include "platform/text.h"

namespace quarl::json
{

namespace
{

constexpr int Last_Year = 9999;

struct Parts {
    int year = 0;
    int day_of_year = 1;
    int hour = 0;
    int minute = 0;
    int second = 0;
    std::string_view decimals;
};

/// Takes up to `most` digits off the front of `text`; none: false.
bool take_number(std::string_view *text, std::size_t most, int *value)
{
    std::size_t size = 0;
    for (*value = 0; size < most && size < text->size() && is_digit((*text)[size]); ++size)
        *value = *value * 10 + ((*text)[size] - '0');
    text->remove_prefix(size);
    return size > 0;
}

bool take(std::string_view *text, char mark)
{
    if (!text->starts_with(mark))
        return false;
    text->remove_prefix(1);
    return true;
}

/// Hours, minutes, seconds and decimals as far as they are there; true at the end of `text`.
bool take_time_of_day(std::string_view text, Parts *parts)
{
    if (!take_number(&text, 2, &parts->hour))
        return false;
    if (text.empty())
        return true;
    if (!take(&text, ':') || !take_number(&text, 2, &parts->minute))
        return false;
    if (text.empty())
        return true;
    if (!take(&text, ':') || !take_number(&text, 2, &parts->second))
        return false;
    if (text.empty())
        return true;
    parts->decimals = text.substr(1);
    return take(&text, '.') && text.find_first_not_of("0123456789") == std::string_view::npos;
}

/// Takes `text` apart where it has all parts and four decimals, as nearly all have.
bool split_whole(std::string_view text, Parts *parts)
{
    constexpr std::string_view Whole = "0000,000,00:00:00.0000";
    if (text.size() != Whole.size())
        return false;
    bool fits = true;
    for (std::size_t i = 0; i < Whole.size(); ++i)
        fits &= Whole[i] == '0' ? is_digit(text[i]) : text[i] == Whole[i];
    const auto two = [&](std::size_t i) { return (text[i] - '0') * 10 + (text[i + 1] - '0'); };
    parts->year = two(0) * 100 + two(2);
    parts->day_of_year = (text[5] - '0') * 100 + two(6);
    parts->hour = two(9);
    parts->minute = two(12);
    parts->second = two(15);
    parts->decimals = text.substr(18);
    return fits;
}

bool split(std::string_view text, Parts *parts)
{
    if (split_whole(text, parts))
        return true;
    *parts = Parts();
    const std::size_t size = text.size();
    if (!take_number(&text, 4, &parts->year) || size - text.size() != 4)
        return false;
    if (text.empty())
        return true;
    if (!take(&text, ',') || !take_number(&text, 3, &parts->day_of_year))
        return false;
    return text.empty() || (take(&text, ',') && take_time_of_day(text, parts));
}

/// Whether the calendar has it; a leap second may come behind any minute.
bool exists(const Parts &parts)
{
    return parts.day_of_year >= 1 && parts.day_of_year <= 365 + is_leap_year(parts.year) &&
           parts.hour < 24 && parts.minute < 60 && parts.second <= 60;
}

char *put_pair(char *to, char before, int value)
{
    *to = before;
    format::put_pair(to + 1, static_cast<std::size_t>(value));
    return to + 3;
}

/// "YYYY-MM-DD".
char *put_date(char *to, int year, int day_of_year)
{
    constexpr int January_And_February = 59;
    const int behind = day_of_year - 1 - January_And_February - is_leap_year(year);
    // From March on, months have 153 days in five.
    const int from_march = (5 * behind + 2) / 153;
    const bool early = behind < 0;
    const int february = day_of_year > 31;
    const int month = early ? 1 + february : from_march + 3;
    const int day = early ? day_of_year - 31 * february : behind - (153 * from_march + 2) / 5 + 1;
    format::put_pair(to, static_cast<std::size_t>(year / 100));
    format::put_pair(to + 2, static_cast<std::size_t>(year % 100));
    return put_pair(put_pair(to + 4, '-', month), '-', day);
}

char *put_parts(char *to, const Parts &parts)
{
    *to++ = '"';
    to = put_date(to, parts.year, parts.day_of_year);
    to = put_pair(to, 'T', parts.hour);
    to = put_pair(to, ':', parts.minute);
    to = put_pair(to, ':', parts.second);
    if (parts.decimals.size() == 4) {
        *to++ = '.';
        std::memcpy(to, parts.decimals.data(), 4);
        to += 4;
    } else if (!parts.decimals.empty()) {
        *to++ = '.';
        std::memcpy(to, parts.decimals.data(), parts.decimals.size());
        to += parts.decimals.size();
    }
    return put_text(to, "Z\"");
}

/// The quotient, rounded down.
Ticks quotient_below(Ticks a, Ticks b) { return a / b - (a % b < 0); }

} // namespace

bool is_leap_year(int year) { return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0; }

std::int64_t days_since_1970(int year, int day_of_year)
{
    constexpr int Era = 400; // years, to stay positive
    constexpr int Era_Days = 146097;
    constexpr int Until_1970 = 719162; // days from 0001-01-01
    const int y = year - 1 + Era;
    return std::int64_t{365} * y + y / 4 - y / 100 + y / 400 - Era_Days - Until_1970 + day_of_year -
           1;
}

char *put_time(char *to, std::string_view text)
{
    Parts parts;
    return split(text, &parts) && exists(parts) ? put_parts(to, parts) : nullptr;
}

char *put_time(char *to, Ticks time)
{
    const Ticks day = quotient_below(time, Ticks_Per_Day);
    const Ticks year = 1970 + quotient_below(day * 400, 146097);
    if (year < -1 || year > Last_Year + 1)
        return nullptr;
    // The mean year is a day or two off at most.
    auto exact = static_cast<int>(year);
    exact -= day < days_since_1970(exact, 1);
    exact += day >= days_since_1970(exact + 1, 1);
    if (exact < 0 || exact > Last_Year)
        return nullptr;
    const auto day_of_year = static_cast<int>(day - days_since_1970(exact, 1)) + 1;
    return put_time(to, exact, day_of_year, time - day * Ticks_Per_Day);
}

char *put_time(char *to, int year, int day_of_year, Ticks of_day)
{
    const auto ticks = static_cast<std::uint32_t>(of_day);
    const auto seconds = static_cast<int>(ticks / Ticks_Per_Second);
    char decimals[4];
    format::put_fixed_digits<4>(decimals, ticks % Ticks_Per_Second);
    return put_parts(to, {year, day_of_year, seconds / 3600, seconds / 60 % 60, seconds % 60,
                          std::string_view(decimals, sizeof decimals)});
}

} // namespace quarl::json
