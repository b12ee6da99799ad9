#include "json/time.h"

#include "platform/calendar.h"
#include "platform/format.h"
#include "platform/json_text.h"

#include <algorithm>
#include <chrono>

namespace quarl::json
{

namespace
{

constexpr int Last_Fraction = 9999; // of a second, in 0.0001 s
constexpr int First_Open_Year = 2500;
constexpr std::size_t Most_Decimals = 6;

/// Digits behind the sixth decimal that are not 0.
bool has_more_decimals(std::string_view text)
{
    const std::size_t point = text.find('.');
    return point < text.size() && text.size() - point - 1 > Most_Decimals &&
           text.find_first_not_of('0', point + 1 + Most_Decimals) < text.size();
}

/// Second 60 is the next minute's 0.
void normalise(TimeTold *told)
{
    constexpr int Leap_Second = 60;
    if (!told->parts || told->parts->second < Leap_Second)
        return;
    told->leap_second = true;
    const TimeParts parts = parts_of(time_of(*told->parts));
    told->parts.reset();
    told->shows_raw = parts.year < 1 || parts.year > Last_Year;
    if (!told->shows_raw)
        told->parts = parts;
}

} // namespace

TimeTold told_by(std::string_view text, bool is_end)
{
    TimeTold told;
    if (text.empty())
        return told;
    told.parts = read_time_parts(text);
    told.bad = !told.parts;
    told.shows_raw = told.bad || has_more_decimals(text);
    if (is_end && told.parts && told.parts->year >= First_Open_Year) {
        told.parts.reset();
        told.shows_raw = true;
    }
    normalise(&told);
    return told;
}

TimeTold told_by(const BinaryTime &time, bool /*is_end*/)
{
    constexpr int Microseconds = 100; ///< of a fraction's unit
    TimeTold told;
    if (time == BinaryTime())
        return told;
    told.bad = told.shows_raw =
        time.fraction > Last_Fraction ||
        !exists(time.year, time.day_of_year, time.hour, time.minute, time.second);
    if (!told.bad)
        told.parts = {time.year,   time.day_of_year, time.hour,
                      time.minute, time.second,      time.fraction * Microseconds};
    normalise(&told);
    return told;
}

char *put_time(char *to, const TimeParts &parts)
{
    *to = '"';
    to = put_date(to + 1, date_of(parts.year, parts.day_of_year));
    to = put_clock(to, parts.hour, parts.minute, parts.second);
    *to = '.';
    format::put_fixed_digits<6>(to + 1, static_cast<std::uint32_t>(parts.microsecond));
    return put_text(to + 7, "Z\"");
}

char *put_time(char *to, Time time, DayText *known)
{
    const auto day = std::chrono::floor<std::chrono::days>(time);
    if (!known->has_text || known->day != day) {
        const Date date = date_of(day.time_since_epoch().count());
        if (date.year < 1 || date.year > Last_Year)
            return nullptr;
        put_date(known->text.data(), date);
        known->day = day;
        known->has_text = true;
    }
    *to = '"';
    to = std::copy(known->text.begin(), known->text.end(), to + 1);
    to = put_clock(to, time - day);
    *to = '"';
    return to + 1;
}

char *put_seconds(char *to, Time time)
{
    constexpr std::uint64_t Second = 1'000'000;
    const std::int64_t count = time.time_since_epoch().count();
    auto size = static_cast<std::uint64_t>(count);
    if (count < 0) {
        *to++ = '-';
        size = ~size + 1;
    }
    to = put_number(to, static_cast<std::int64_t>(size / Second));
    *to = '.';
    format::put_fixed_digits<6>(to + 1, static_cast<std::uint32_t>(size % Second));
    return to + 7;
}

} // namespace quarl::json
