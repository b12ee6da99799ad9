// Times of SEED volumes: as text, in ten bytes, and as data records tell them. All are UTC.
//
//     if (const auto start = quarl::read_time(channel->start_date))
//         std::puts(quarl::iso_text(*start).c_str()); // 2018-07-10T12:30:00.000000Z
//     const double end = quarl::end_seconds(channel->end_date); // since 1970, or quarl::Forever
#pragma once

#include <array>
#include <bit>
#include <chrono>
#include <cstddef>
#include <optional>
#include <quarl/binary_time.h>
#include <string>
#include <string_view>

namespace quarl
{

struct blk_dh_t;

/// A point in time, to the microsecond. It counts as POSIX does: every day has 86400 s, and second
/// 60, which the minute of a leap second has, is the next minute's 0.
using Time = std::chrono::sys_time<std::chrono::microseconds>;

/// Seconds since 1970-01-01 00:00 that stand for "since ever" and for "without an end".
inline constexpr double Always = -9999999999.999;
inline constexpr double Forever = 9999999999.999;

/// Since 1970-01-01 00:00. Of today's times a double still tells microseconds apart.
double seconds(Time time);
/// The microsecond next to so many seconds since 1970; of what is no number, or beyond the years 0
/// to 9999, none.
std::optional<Time> time_of(double seconds);

/// A time in the parts of a SEED text.
struct TimeParts {
    int year = 1970;     ///< 1 to 9999
    int day_of_year = 1; ///< 1 to 366, as the year has them
    int hour = 0;
    int minute = 0;
    int second = 0; ///< 60 in a leap second, which may come behind any minute
    int microsecond = 0;

    bool operator==(const TimeParts &) const = default;
};
Time time_of(const TimeParts &parts);
/// Of a time in the years 0 to 9999.
TimeParts parts_of(Time time);

/// Reads "YYYY,DDD,HH:MM:SS.FFFF", which may be cut short behind any part: "2018" is the beginning
/// of that year. Decimals behind the sixth do not count. Nothing when `text` is no such time, or
/// when the calendar does not have it.
std::optional<TimeParts> read_time_parts(std::string_view text);
std::optional<Time> read_time(std::string_view text);

/// Reads "2018-07-10T12:30:00.000000Z" or the like: with the day of the year ("2018-191"), cut
/// short behind any part ("2018", "2018-07", "2018-07-10T12"), with a blank for the T, with an
/// offset ("+02:00") or, for UTC, nothing at the end. Decimals behind the sixth do not count.
/// Nothing when `text` is no such time, or when the calendar does not have it.
std::optional<Time> read_iso_time(std::string_view text);

/// Seconds since 1970 of the start or the end of an epoch. An empty text is Always, or Forever, as
/// is an end in the year 2500 or later, by which some volumes spell "open". One that is no time is
/// no number (NaN).
double start_seconds(std::string_view text);
double end_seconds(std::string_view text);

/// "2018,191,12:30:00.0000"; what is below 0.0001 s is cut. Empty beyond the years 0 to 9999.
std::string seed_text(Time time);
/// "2018-07-10T12:30:00.000000Z". Empty beyond the years 0 to 9999.
std::string iso_text(Time time);
/// The nearest 0.0001 s as volumes mostly tell it: "2018,191" for a midnight, else
/// "2018,191,12:30:00.0000"; "" for Always and Forever.
std::string time_text(double seconds);

/// Ten bytes as they stand in a volume, fields unchecked; of fewer, what is missing is 0.
BinaryTime read_binary_time(std::string_view bytes, std::endian order);
std::array<char, Binary_Time_Size> bytes_of(const BinaryTime &time, std::endian order);
/// Nothing when the calendar does not have it.
std::optional<Time> time_of(const BinaryTime &time);
/// What is below 0.0001 s is cut. Of a time in the years 0 to 9999.
BinaryTime binary_time(Time time);

/// When the samples of a data record were taken.
struct DataTimes {
    Time start; ///< the first sample
    Time end;   ///< the last sample; without samples or a rate: start
    Time next;  ///< the sample behind the last; without samples or a rate: start
};

/// What blockettes behind a data header say more precisely.
struct DataRefinement {
    int microseconds = 0;     ///< to be added to the start (1001)
    double sample_rate = 0.0; ///< Hz (100); 0: as factor and multiplier have it
};

/// The times of a data record as it was read, its time correction applied, and leap seconds within
/// it that its activity flags announce: a positive one lets the end come a second earlier. Nothing
/// when the header's time is none of the calendar, or its fraction is above 9999. Times that Time
/// cannot hold are Time::max().
std::optional<DataTimes> data_times(const blk_dh_t &header, const DataRefinement &more = {});

} // namespace quarl
