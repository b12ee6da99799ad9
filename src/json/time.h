// Times as members of an object: ISO 8601 in UTC, all of one width, so that they sort as texts do.
#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <optional>
#include <quarl/records.h>
#include <quarl/time.h>
#include <string_view>

namespace quarl::json
{

/// Characters of a time with its quotes.
inline constexpr std::size_t Time_Room = 32;

/// What a field tells as a time.
struct TimeTold {
    std::optional<TimeParts> parts; ///< nothing: not given, open or no time; second 59 at most
    bool leap_second = false;       ///< it is in a second 60, told as the next minute's 0
    bool shows_raw = false;         ///< there is more in the text than in `parts`
    bool bad = false;               ///< it is no time
};

/// Of a SEED time, which may be cut short behind any part. An end in the year 2500 or later is
/// open.
TimeTold told_by(std::string_view text, bool is_end);
TimeTold told_by(const BinaryTime &time, bool is_end);

/// Write a time with six decimals, quotes included; return the end.
char *put_time(char *to, const TimeParts &parts);

/// The date of a day as text: many times of one object are of one day.
struct DayText {
    std::chrono::sys_days day;
    std::array<char, 10> text{}; ///< empty before the first
    bool has_text = false;
};
/// Null when its year has no text.
char *put_time(char *to, Time time, DayText *day);

/// Writes the seconds since 1970 with six decimals.
char *put_seconds(char *to, Time time);

} // namespace quarl::json
