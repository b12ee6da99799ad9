// Numbers: sums that stay in range; real numbers written as text, byte for byte as the C library
// does it in the "C" locale.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>

namespace quarl
{

/// The sum, or the int that is nearest to it.
constexpr int saturated_sum(int a, int b)
{
    constexpr std::int64_t Min = std::numeric_limits<int>::min();
    constexpr std::int64_t Max = std::numeric_limits<int>::max();
    return static_cast<int>(std::clamp(std::int64_t{a} + b, Min, Max));
}

/// Room that a put_ function needs at `to`: 309 digits, a sign, a point and the precision. What
/// lies behind the returned end may have been overwritten within this room.
inline constexpr std::size_t Real_Room = 352;

/// Writes `value` as printf's "%.<precision>f" does, without terminator; returns the end.
/// precision 0 to 20. Infinities and NaNs are "inf", "-inf", "nan", "-nan".
char *put_fixed(char *to, double value, int precision);

/// As put_fixed for "%.<precision>e"; `exponent_letter` 'E' gives "%.<precision>E" ("INF", "NAN"
/// too).
char *put_scientific(char *to, double value, int precision, char exponent_letter);

/// As put_fixed for "%.<precision>g".
char *put_general(char *to, double value, int precision);

} // namespace quarl
