// The calendar: which day of which year, and times as ISO 8601 writes them. The only place that
// counts days. UTC as POSIX counts it: a day has 86400 s.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>

namespace quarl
{

inline constexpr int Last_Year = 9999; ///< of those that texts can tell, from 1 on

/// A day of the proleptic Gregorian calendar.
struct Date {
    int year = 1970;
    int month = 1;
    int day = 1;
};

/// Days from 1970-01-01 to a day of a year; day of year 1 is 1 January. Days out of range pass
/// through linearly: day 0 is the day before. Any numbers will do.
std::int64_t days_since_1970(int year, int day_of_year);

/// The day so many days after 1970-01-01. Its year has to fit into an int.
Date date_of(std::int64_t days);

/// A day of a year, which has to exist: 1 to 366.
Date date_of(int year, int day_of_year);

/// The day of the year, from 1 on; 0 for a date that the calendar does not have.
int day_of_year(const Date &date);

int days_in_year(int year);

/// Whether the calendar has it: a year that texts can tell, and maybe second 60, since a leap
/// second may come behind any minute.
bool exists(int year, int day_of_year, int hour, int minute, int second);

/// Epoch seconds (since 1970-01-01 00:00:00 UTC) of a calendar time. Parts out of range pass
/// through linearly: day 0 is the day before 1 January, second 60 the next minute's 0.
double h2e(int year, int doy, int hour, int minute, double seconds);

/// Writes "2018-07-10"; the year has to have four digits. Returns the end.
inline constexpr std::size_t Date_Size = 10;
char *put_date(char *to, const Date &date);

/// Writes "T12:30:00"; returns the end.
char *put_clock(char *to, int hour, int minute, int second);

/// Writes "T12:30:00.000000Z" for a time of day; returns the end.
inline constexpr std::size_t Clock_Size = 17;
char *put_clock(char *to, std::chrono::microseconds of_day);

} // namespace quarl
