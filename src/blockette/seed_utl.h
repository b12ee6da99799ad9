// SEED time as the listing takes it: text of the form YYYY,DDD,HH:MM:SS.FFFF, possibly cut short
// after any part, of which nothing is checked. <quarl/time.h> has the calendar's reading.
#pragma once

#include <quarl/time.h>

namespace quarl
{

inline constexpr double Open_End = Forever;  ///< an empty time: no end
inline constexpr double Open_Start = Always; ///< an empty start time: since always

/// The parts of a SEED time; parts that the text lacks are 0. Malformed text is not reported.
struct SeedTime {
    int year = 0;
    int doy = 0;
    int hour = 0;
    int minutes = 0;
    double sec = 0.0;
};

/// Splits `time` by its length: 4, 8, 11 or 14 characters hold just the first one to four parts.
SeedTime parse_time(const char *time);
SeedTime parse_start(const char *time); ///< as parse_time: missing parts of a start are 0
SeedTime parse_end(const char *time);   ///< as parse_time: missing parts of an end are 0 too

/// Epoch seconds of a SEED time. An empty one is Open_End, as a start Open_Start.
double seed2epoch(const char *seed_time);
double start_epoch(const char *seed_time);
double end_epoch(const char *seed_time);

} // namespace quarl
