#include "json/time.h"

#include "platform/calendar.h"
#include "platform/format.h"
#include "platform/json_text.h"

#include <algorithm>
#include <chrono>
#include <cstring>

namespace quarl::json
{

namespace
{

constexpr int Last_Fraction = 9999; // of a second, in 0.0001 s

using Days = std::chrono::sys_days;

Days day_of(Time time) { return std::chrono::floor<std::chrono::days>(time); }

Date date_on(Days day) { return date_of(day.time_since_epoch().count()); }

/// The date has to be that of the time. Null when its year has no text.
char *put_time(char *to, const Date &date, std::chrono::microseconds of_day)
{
    if (date.year < 1 || date.year > Last_Year)
        return nullptr;
    *to = '"';
    to = put_clock(put_date(to + 1, date), of_day);
    *to = '"';
    return to + 1;
}

} // namespace

char *put_time(char *to, std::string_view text)
{
    constexpr std::size_t Point = 17;
    const auto parts = read_time_parts(text);
    if (!parts)
        return nullptr;
    *to = '"';
    to = put_date(to + 1, date_of(parts->year, parts->day_of_year));
    to = put_clock(to, parts->hour, parts->minute, parts->second);
    if (text.size() == Point + 5 && text[Point] == '.') { // as nearly all have
        std::memcpy(to, text.data() + Point, 5);
        to += 5;
    } else if (const std::size_t point = text.find('.'); point < text.size() - 1) {
        to = std::copy(text.begin() + static_cast<std::ptrdiff_t>(point), text.end(), to);
    }
    return put_text(to, "Z\"");
}

char *put_time(char *to, const BinaryTime &time)
{
    if (time.fraction > Last_Fraction ||
        !exists(time.year, time.day_of_year, time.hour, time.minute, time.second))
        return nullptr;
    *to = '"';
    to = put_date(to + 1, date_of(time.year, time.day_of_year));
    to = put_clock(to, time.hour, time.minute, time.second);
    *to = '.';
    format::put_fixed_digits<4>(to + 1, static_cast<std::uint32_t>(time.fraction));
    return put_text(to + 5, "Z\"");
}

char *put_data_times(char *to, const blk_dh_t &header, const DataRefinement &more, bool *bad)
{
    char *value = put_text(to, ",\"start\":");
    const auto times = data_times(header, more);
    const Days day = times ? day_of(times->start) : Days();
    const Date date = date_on(day);
    char *end = times ? put_time(value, date, times->start - day) : nullptr;
    *bad = end == nullptr;
    if (!end)
        return put_text(value, "null,\"end\":null");
    value = put_text(end, ",\"end\":");
    const Days last = day_of(times->end);
    if (char *behind = put_time(value, last == day ? date : date_on(last), times->end - last))
        return behind;
    *bad = true;
    return put_text(value, "null");
}

} // namespace quarl::json
