#include "platform/timeconv.h"

#include <cstdint>

namespace quarl
{

namespace
{

/// Days from 1 January of year 1 to 1 January of `year`.
constexpr std::int64_t days_before_year(std::int64_t year)
{
    // Shifted by whole 400-year cycles so that the divisions never see a negative number.
    constexpr std::int64_t Cycles = 6'000'000;
    constexpr std::int64_t Days_Per_Cycle = 146'097;
    const std::int64_t past = year - 1 + Cycles * 400;
    return past * 365 + past / 4 - past / 100 + past / 400 - Cycles * Days_Per_Cycle;
}

constexpr std::int64_t Epoch_Days = days_before_year(1970);

} // namespace

double h2e(int year, int doy, int hour, int minute, double seconds)
{
    const std::int64_t days = days_before_year(year) - Epoch_Days + doy - 1;
    const std::int64_t whole = (days * 24 + hour) * 3600 + std::int64_t{minute} * 60;
    return static_cast<double>(whole) + seconds;
}

} // namespace quarl
