#include "json/data_times.h"

#include "platform/json_text.h"
#include "json/time.h"

#include <cstdlib>

namespace quarl::json
{

namespace
{

/// Whether the calendar has the time that the record holds, before any correction.
bool exists(const blk_dh_t &h)
{
    constexpr int Correction_Applied = 0x02;
    const std::int64_t ticks =
        std::int64_t{h.sec_frac} - (h.activity & Correction_Applied ? 0 : h.time_cor);
    return h.year >= 0 && h.year <= 9999 && h.doy >= 1 && h.doy <= 365 + is_leap_year(h.year) &&
           h.hour >= 0 && h.hour < 24 && h.minutes >= 0 && h.minutes < 60 && h.sec_int >= 0 &&
           h.sec_int <= 60 && ticks >= 0 && ticks < Ticks_Per_Second;
}

/// The first sample, from the beginning of the header's day.
Ticks start_of(const blk_dh_t &h)
{
    const Ticks seconds = (h.hour * 60 + h.minutes) * 60 + h.sec_int;
    return seconds * Ticks_Per_Second + h.sec_frac;
}

/// A time that is told from the beginning of the header's day.
char *put_from_day(char *to, const blk_dh_t &h, Ticks time)
{
    if (time >= 0 && time < Ticks_Per_Day)
        return put_time(to, h.year, h.doy, time);
    return put_time(to, days_since_1970(h.year, h.doy) * Ticks_Per_Day + time);
}

Ticks rounded_quotient(Ticks a, Ticks b) { return (a + b / 2) / b; }

/// From the first sample to the last, exact as long as factor and multiplier are: negative ones
/// are divisors. The fields have 16 bits each.
Ticks duration(const blk_dh_t &h)
{
    if (h.nsamps < 2 || h.rate_f == 0 || h.rate_m == 0)
        return 0;
    Ticks time = (h.nsamps - 1) * Ticks_Per_Second;
    Ticks divisor = 1;
    for (const int part : {h.rate_f, h.rate_m})
        (part > 0 ? divisor : time) *= std::abs(part);
    return rounded_quotient(time, divisor);
}

} // namespace

char *put_data_times(char *to, const blk_dh_t &header, bool *bad)
{
    char *value = put_text(to, ",\"start\":");
    const Ticks start = start_of(header);
    char *end = exists(header) ? put_from_day(value, header, start) : nullptr;
    *bad = end == nullptr;
    if (!end) {
        end = put_string(value, header.start_time);
        return put_text(end, ",\"end\":null");
    }
    value = put_text(end, ",\"end\":");
    if (char *behind = put_from_day(value, header, start + duration(header)))
        return behind;
    *bad = true;
    return put_text(value, "null");
}

} // namespace quarl::json
