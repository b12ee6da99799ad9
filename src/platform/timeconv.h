// Calendar time to epoch seconds.
#pragma once

namespace quarl
{

/// Epoch seconds (since 1970-01-01 00:00:00 UTC) of a calendar time in the proleptic Gregorian
/// calendar; day of year 1 is 1 January. Parts out of range pass through linearly: day 0 is the day
/// before 1 January, second 60 the next minute's 0.
double h2e(int year, int doy, int hour, int minute, double seconds);

} // namespace quarl
