// Times as text, in ten bytes, and of data records.
#include "platform/calendar.h"
#include "platform/format.h"
#include "platform/text.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <quarl/records.h>
#include <quarl/time.h>

namespace quarl
{

namespace
{

using std::chrono::microseconds;

constexpr int Second = 1'000'000; ///< microseconds
constexpr int Tick = 100;         ///< those of the 0.0001 s in which volumes tell time
constexpr int Ticks_Per_Second = Second / Tick;

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

/// The first six of `decimals`, which stand behind the point; false when they are none.
bool take_decimals(std::string_view decimals, int *microsecond)
{
    int unit = Second;
    for (const char c : decimals) {
        if (!is_digit(c))
            return false;
        unit /= 10;
        *microsecond += unit * (c - '0');
    }
    return true;
}

/// Hours, minutes, seconds and decimals as far as they are there; true at the end of `text`.
bool take_time_of_day(std::string_view text, TimeParts *parts)
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
    return text.empty() || (take(&text, '.') && take_decimals(text, &parts->microsecond));
}

constexpr std::string_view Whole = "0000,000,00:00:00.0000";

/// What may be added to each byte's difference from Whole, so that it stays below 0x10.
constexpr auto Slack = [] {
    std::array<char, Whole.size()> slack{};
    for (std::size_t i = 0; i < Whole.size(); ++i)
        slack[i] = Whole[i] == '0' ? 0x0F - 9 : 0x0F;
    return slack;
}();

/// Eight bytes that have digits and marks where Whole has them; else not 0.
std::uint64_t misfit(const char *text, std::size_t at)
{
    constexpr std::uint64_t High = 0xF0F0F0F0F0F0F0F0;
    const auto word = [at](const char *from) {
        std::uint64_t bytes = 0;
        std::memcpy(&bytes, from + at, sizeof bytes);
        return bytes;
    };
    const std::uint64_t difference = word(text) ^ word(Whole.data());
    return (difference | (difference + word(Slack.data()))) & High;
}

/// Takes `text` apart where it has all parts and four decimals, as nearly all have.
bool split_whole(std::string_view text, TimeParts *parts)
{
    if (text.size() != Whole.size() ||
        (misfit(text.data(), 0) | misfit(text.data(), 8) | misfit(text.data(), 14)) != 0)
        return false;
    const auto two = [&](std::size_t i) { return (text[i] - '0') * 10 + (text[i + 1] - '0'); };
    parts->year = two(0) * 100 + two(2);
    parts->day_of_year = (text[5] - '0') * 100 + two(6);
    parts->hour = two(9);
    parts->minute = two(12);
    parts->second = two(15);
    parts->microsecond = (two(18) * 100 + two(20)) * Tick;
    return true;
}

bool split(std::string_view text, TimeParts *parts)
{
    if (split_whole(text, parts))
        return true;
    *parts = TimeParts();
    const std::size_t size = text.size();
    if (!take_number(&text, 4, &parts->year) || size - text.size() != 4)
        return false;
    if (text.empty())
        return true;
    if (!take(&text, ',') || !take_number(&text, 3, &parts->day_of_year))
        return false;
    return text.empty() || (take(&text, ',') && take_time_of_day(text, parts));
}

/// The beginning of a calendar's second.
Time second_of(int year, int day_of_year, int hour, int minute, int second)
{
    const std::int64_t days = days_since_1970(year, day_of_year);
    return Time(std::chrono::seconds(((days * 24 + hour) * 60 + minute) * 60 + second));
}

bool has_text(Time time)
{
    static const Time First = second_of(1, 1, 0, 0, 0);
    static const Time Behind = second_of(Last_Year + 1, 1, 0, 0, 0);
    return time >= First && time < Behind;
}

/// What is longer is cut: a start that has a text is far from overflowing by it.
constexpr std::int64_t Most = std::numeric_limits<std::int64_t>::max() / 2;

/// How long so many samples last, rounded to microseconds; exact before, as factor and multiplier
/// are: negative ones are divisors.
std::int64_t duration(std::int64_t samples, int factor, int multiplier)
{
    if (factor == 0 || multiplier == 0)
        return 0;
    std::int64_t time = samples * Second;
    std::int64_t divisor = 1;
    for (const std::int64_t part : {factor, multiplier}) {
        if (part > 0)
            divisor *= part;
        else
            time = time > Most / -part ? Most : time * -part;
    }
    return (time + divisor / 2) / divisor;
}

std::int64_t duration(std::int64_t samples, double rate)
{
    const double time = static_cast<double>(samples * Second) / rate;
    return time < static_cast<double>(Most) ? std::llround(time) : Most;
}

/// `time`, which comes behind `from`, as clocks tell it when the record has a leap second. That one
/// is at the end of the day if the record reaches it, else of the record's first minute.
Time with_leap_second(Time from, Time time, int activity)
{
    constexpr int Positive = 0x10;
    constexpr int Negative = 0x20;
    constexpr std::chrono::seconds One(1);
    if (!(activity & (Positive | Negative)))
        return time;
    const Time midnight = std::chrono::ceil<std::chrono::days>(from);
    const Time leap = time >= midnight ? midnight : std::chrono::ceil<std::chrono::minutes>(from);
    if (activity & Positive)
        return time >= leap + One ? time - One : time;
    return time >= leap - One ? time + One : time;
}

/// One byte; 0 behind the end.
int at(std::string_view bytes, std::size_t i)
{
    return i < bytes.size() ? static_cast<unsigned char>(bytes[i]) : 0;
}

} // namespace

double seconds(Time time) { return static_cast<double>(time.time_since_epoch().count()) / Second; }

std::optional<Time> time_of(double seconds)
{
    constexpr double Any = 1e12; // beyond all that has a text
    if (!(std::abs(seconds) < Any))
        return std::nullopt;
    const Time time{microseconds(std::llround(seconds * Second))};
    return has_text(time) ? std::optional(time) : std::nullopt;
}

Time time_of(const TimeParts &parts)
{
    return second_of(parts.year, parts.day_of_year, parts.hour, parts.minute, parts.second) +
           microseconds(parts.microsecond);
}

TimeParts parts_of(Time time)
{
    const auto day = std::chrono::floor<std::chrono::days>(time);
    const std::int64_t days = day.time_since_epoch().count();
    const int year = date_of(days).year;
    const std::int64_t of_day = (time - day).count();
    const auto seconds = static_cast<int>(of_day / Second);
    return {year,           static_cast<int>(days - days_since_1970(year, 1)) + 1,
            seconds / 3600, seconds / 60 % 60,
            seconds % 60,   static_cast<int>(of_day % Second)};
}

std::optional<TimeParts> read_time_parts(std::string_view text)
{
    TimeParts parts;
    if (split(text, &parts) &&
        exists(parts.year, parts.day_of_year, parts.hour, parts.minute, parts.second))
        return parts;
    return std::nullopt;
}

std::optional<Time> read_time(std::string_view text)
{
    const auto parts = read_time_parts(text);
    return parts ? std::optional(time_of(*parts)) : std::nullopt;
}

double start_seconds(std::string_view text)
{
    if (text.empty())
        return Always;
    const auto time = read_time(text);
    return time ? seconds(*time) : std::numeric_limits<double>::quiet_NaN();
}

double end_seconds(std::string_view text)
{
    constexpr int First_Open_Year = 2500;
    if (text.empty())
        return Forever;
    const auto parts = read_time_parts(text);
    if (!parts)
        return std::numeric_limits<double>::quiet_NaN();
    return parts->year < First_Open_Year ? seconds(time_of(*parts)) : Forever;
}

std::string seed_text(Time time)
{
    if (!has_text(time))
        return {};
    const TimeParts parts = parts_of(time);
    return formatted<"%04d,%03d,%02d:%02d:%02d.%04d">(parts.year, parts.day_of_year, parts.hour,
                                                      parts.minute, parts.second,
                                                      parts.microsecond / Tick);
}

std::string iso_text(Time time)
{
    if (!has_text(time))
        return {};
    const auto day = std::chrono::floor<std::chrono::days>(time);
    std::string text(Date_Size + Clock_Size, '\0');
    (void)put_clock(put_date(text.data(), date_of(day.time_since_epoch().count())), time - day);
    return text;
}

std::string time_text(double seconds)
{
    constexpr double Ticks = 10000.0;
    if (!(seconds > Always && seconds < Forever))
        return {};
    const Time time{microseconds(std::llround(seconds * Ticks) * Tick)};
    const bool is_midnight = time == std::chrono::floor<std::chrono::days>(time);
    return seed_text(time).substr(0, is_midnight ? 8 : std::string::npos);
}

BinaryTime read_binary_time(std::string_view bytes, std::endian order)
{
    const auto two = [&](std::size_t i) {
        const bool big = order == std::endian::big;
        return at(bytes, big ? i : i + 1) << 8 | at(bytes, big ? i + 1 : i);
    };
    return {two(0), two(2), at(bytes, 4), at(bytes, 5), at(bytes, 6), two(8)};
}

std::array<char, Binary_Time_Size> bytes_of(const BinaryTime &time, std::endian order)
{
    std::array<char, Binary_Time_Size> bytes{};
    const auto two = [&](std::size_t i, int value) {
        const bool big = order == std::endian::big;
        bytes[big ? i : i + 1] = static_cast<char>(value >> 8 & 0xFF);
        bytes[big ? i + 1 : i] = static_cast<char>(value & 0xFF);
    };
    two(0, time.year);
    two(2, time.day_of_year);
    bytes[4] = static_cast<char>(time.hour);
    bytes[5] = static_cast<char>(time.minute);
    bytes[6] = static_cast<char>(time.second);
    two(8, time.fraction);
    return bytes;
}

std::optional<Time> time_of(const BinaryTime &time)
{
    if (time.fraction < 0 || time.fraction >= Ticks_Per_Second ||
        !exists(time.year, time.day_of_year, time.hour, time.minute, time.second))
        return std::nullopt;
    return second_of(time.year, time.day_of_year, time.hour, time.minute, time.second) +
           microseconds(time.fraction * Tick);
}

BinaryTime binary_time(Time time)
{
    const TimeParts parts = parts_of(time);
    return {parts.year,   parts.day_of_year, parts.hour,
            parts.minute, parts.second,      parts.microsecond / Tick};
}

std::optional<DataTimes> data_times(const blk_dh_t &header, const DataRefinement &more)
{
    constexpr int Correction_Applied = 0x02;
    const bool is_corrected = (header.activity & Correction_Applied) != 0;
    const std::int64_t as_stored =
        std::int64_t{header.sec_frac} - (is_corrected ? 0 : header.time_cor);
    if (as_stored < 0 || as_stored >= Ticks_Per_Second ||
        !exists(header.year, header.doy, header.hour, header.minutes, header.sec_int))
        return std::nullopt;
    const Time start =
        second_of(header.year, header.doy, header.hour, header.minutes, header.sec_int) +
        microseconds(std::int64_t{header.sec_frac} * Tick + more.microseconds);
    const Time from = start - std::chrono::seconds(header.sec_int / 60);
    const auto after = [&](std::int64_t samples) {
        if (samples <= 0)
            return start;
        const std::int64_t time = more.sample_rate > 0.0
                                      ? duration(samples, more.sample_rate)
                                      : duration(samples, header.rate_f, header.rate_m);
        return with_leap_second(from, start + microseconds(time), header.activity);
    };
    return DataTimes{start, after(std::int64_t{header.nsamps} - 1), after(header.nsamps)};
}

} // namespace quarl
