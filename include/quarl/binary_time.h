// The binary time of data records; <quarl/time.h> reads it and makes points in time of it.
#pragma once

#include <cstddef>

namespace quarl
{

/// The binary time (BTIME) of data records.
struct BinaryTime {
    int year = 0;
    int day_of_year = 0;
    int hour = 0;
    int minute = 0;
    int second = 0;
    int fraction = 0; ///< 0.0001 s, 0 to 9999

    bool operator==(const BinaryTime &) const = default;
};
inline constexpr std::size_t Binary_Time_Size = 10;

} // namespace quarl
