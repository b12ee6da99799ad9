#include "platform/calendar.h"

#include "platform/format.h"

namespace quarl
{

namespace
{

// The calendar repeats itself after so many years. Counted within them, no year is too large for
// <chrono>.
constexpr std::int64_t Cycle_Years = 400;
constexpr std::int64_t Cycle_Days = 146'097;

/// The quotient, rounded down.
constexpr std::int64_t quotient_below(std::int64_t a, std::int64_t b)
{
    return a / b - (a % b < 0);
}

char *put_pair(char *to, char before, int value)
{
    *to = before;
    format::put_pair(to + 1, static_cast<std::size_t>(value));
    return to + 3;
}

} // namespace

std::int64_t days_since_1970(int year, int day_of_year)
{
    const std::int64_t cycle = quotient_below(year, Cycle_Years);
    const std::chrono::year within(static_cast<int>(year - cycle * Cycle_Years));
    const auto first = std::chrono::sys_days(within / std::chrono::January / 1);
    return cycle * Cycle_Days + first.time_since_epoch().count() + day_of_year - 1;
}

Date date_of(std::int64_t days)
{
    const std::int64_t cycle = quotient_below(days, Cycle_Days);
    const std::chrono::days within(days - cycle * Cycle_Days);
    const std::chrono::year_month_day date{std::chrono::sys_days(within)};
    return {static_cast<int>(static_cast<int>(date.year()) + cycle * Cycle_Years),
            static_cast<int>(static_cast<unsigned>(date.month())),
            static_cast<int>(static_cast<unsigned>(date.day()))};
}

Date date_of(int year, int day_of_year)
{
    constexpr int January_And_February = 59;
    const int from_march = day_of_year - 1 - January_And_February - (days_in_year(year) - 365);
    if (from_march < 0) {
        const int february = day_of_year > 31;
        return {year, 1 + february, day_of_year - 31 * february};
    }
    const int months = (5 * from_march + 2) / 153; // from March on, five have 153 days
    return {year, 3 + months, from_march - (153 * months + 2) / 5 + 1};
}

int day_of_year(const Date &date)
{
    if (date.month < 1 || date.month > 12 || date.day < 1 || date.day > 31)
        return 0;
    // The cycle of leap years is shorter than what std::chrono's years reach.
    const std::chrono::year year(static_cast<int>(date.year % Cycle_Years));
    const std::chrono::year_month_day day(year,
                                          std::chrono::month(static_cast<unsigned>(date.month)),
                                          std::chrono::day(static_cast<unsigned>(date.day)));
    if (!day.ok())
        return 0;
    const std::chrono::sys_days first = year / std::chrono::January / 1;
    return static_cast<int>((std::chrono::sys_days(day) - first).count()) + 1;
}

int days_in_year(int year)
{
    return std::chrono::year(static_cast<int>(year % Cycle_Years)).is_leap() ? 366 : 365;
}

bool exists(int year, int day_of_year, int hour, int minute, int second)
{
    return year >= 1 && year <= Last_Year && day_of_year >= 1 &&
           day_of_year <= days_in_year(year) && hour >= 0 && hour < 24 && minute >= 0 &&
           minute < 60 && second >= 0 && second <= 60;
}

double h2e(int year, int doy, int hour, int minute, double seconds)
{
    const std::int64_t days = days_since_1970(year, doy);
    const std::int64_t whole = (days * 24 + hour) * 3600 + std::int64_t{minute} * 60;
    return static_cast<double>(whole) + seconds;
}

char *put_date(char *to, const Date &date)
{
    format::put_pair(to, static_cast<std::size_t>(date.year / 100));
    format::put_pair(to + 2, static_cast<std::size_t>(date.year % 100));
    return put_pair(put_pair(to + 4, '-', date.month), '-', date.day);
}

char *put_clock(char *to, int hour, int minute, int second)
{
    return put_pair(put_pair(put_pair(to, 'T', hour), ':', minute), ':', second);
}

char *put_clock(char *to, std::chrono::microseconds of_day)
{
    constexpr std::uint64_t Second = 1'000'000;
    const auto time = static_cast<std::uint64_t>(of_day.count());
    const auto seconds = static_cast<int>(time / Second);
    to = put_clock(to, seconds / 3600, seconds / 60 % 60, seconds % 60);
    *to++ = '.';
    format::put_fixed_digits<6>(to, static_cast<std::uint32_t>(time % Second));
    to += 6;
    *to++ = 'Z';
    return to;
}

} // namespace quarl
