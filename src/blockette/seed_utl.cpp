#include "blockette/seed_utl.h"

#include "platform/calendar.h"
#include "platform/read_number.h"
#include "platform/text.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace quarl
{

namespace
{

double epoch_of(const SeedTime &t) { return h2e(t.year, t.doy, t.hour, t.minutes, t.sec); }

/// How many parts a text of so many characters has.
std::ptrdiff_t count_parts(std::size_t size)
{
    constexpr std::array<std::size_t, 4> Cut{4, 8, 11, 14};
    return std::find(Cut.begin(), Cut.end(), size) - Cut.begin() + 1;
}

} // namespace

SeedTime parse_time(const char *time)
{
    constexpr std::string_view Marks = ",,::";
    SeedTime t;
    std::string_view text(time);
    auto left = count_parts(text.size());
    const char *mark = Marks.data();
    for (int *part : {&t.year, &t.doy, &t.hour, &t.minutes}) {
        std::size_t used = 0;
        const int value = leading_int(text, &used);
        if (used == 0)
            return t;
        *part = value;
        text.remove_prefix(used);
        if (--left == 0 || !text.starts_with(*mark++))
            return t;
        text.remove_prefix(1);
    }
    (void)scan_real(text, &t.sec);
    return t;
}

SeedTime parse_start(const char *time) { return parse_time(time); }

SeedTime parse_end(const char *time) { return parse_time(time); }

double seed2epoch(const char *seed_time)
{
    return *seed_time ? epoch_of(parse_time(seed_time)) : Open_End;
}

double start_epoch(const char *seed_time)
{
    return *seed_time ? epoch_of(parse_start(seed_time)) : Open_Start;
}

double end_epoch(const char *seed_time)
{
    return *seed_time ? epoch_of(parse_end(seed_time)) : Open_End;
}

} // namespace quarl
