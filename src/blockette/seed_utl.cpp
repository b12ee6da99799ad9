#include "blockette/seed_utl.h"

#include "platform/text.h"
#include "platform/timeconv.h"

#include <cstdio>
#include <cstring>

namespace quarl
{

namespace
{

double epoch_of(const SeedTime &t) { return h2e(t.year, t.doy, t.hour, t.minutes, t.sec); }

} // namespace

SeedTime parse_time(const char *time)
{
    SeedTime t;
    switch (std::strlen(time)) {
    case 4:
        (void)std::sscanf(time, "%d", &t.year);
        break;
    case 8:
        (void)std::sscanf(time, "%d,%d", &t.year, &t.doy);
        break;
    case 11:
        (void)std::sscanf(time, "%d,%d,%d", &t.year, &t.doy, &t.hour);
        break;
    case 14:
        (void)std::sscanf(time, "%d,%d,%d:%d", &t.year, &t.doy, &t.hour, &t.minutes);
        break;
    default:
        (void)std::sscanf(time, "%d,%d,%d:%d:%lf", &t.year, &t.doy, &t.hour, &t.minutes, &t.sec);
    }
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
