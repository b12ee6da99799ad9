// Times as ISO 8601 in UTC.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace quarl::json
{

/// A point in time: 0.0001 s since 1970-01-01.
using Ticks = std::int64_t;
inline constexpr Ticks Ticks_Per_Second = 10000;
inline constexpr Ticks Ticks_Per_Day = 86400 * Ticks_Per_Second;

/// Characters of a time with `decimals` and its quotes.
constexpr std::size_t time_room(std::size_t decimals) { return 32 + decimals; }

/// The day of a year as days since 1970-01-01, in the proleptic Gregorian calendar.
std::int64_t days_since_1970(int year, int day_of_year);

bool is_leap_year(int year);

/// Writes a SEED time, which may be cut short after any part, with the decimals that it has, as a
/// JSON string; returns the end. Null when `text` is no time.
char *put_time(char *to, std::string_view text);

/// Writes a time of a day that exists, with four decimals, as a JSON string.
char *put_time(char *to, int year, int day_of_year, Ticks of_day);

/// Writes a point in time with four decimals as a JSON string. Null when its year has no four
/// digits.
char *put_time(char *to, Ticks time);

} // namespace quarl::json
