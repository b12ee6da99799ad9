// Control headers of big volumes: index, dictionaries, stations and time spans, section by section.
#pragma once

#include "compose/blockette_text.h"

#include <cstdint>
#include <quarl/time.h>
#include <string>
#include <vector>

inline constexpr int Header_Length = 4096; ///< logical record length of control headers
inline constexpr int Largest_Sequence = 999999;

/// Times are counted in 0.0001 s since 1970.
using Ticks = std::int64_t;
inline constexpr Ticks Ticks_Per_Second = 10000;

inline quarl::Time time_at(Ticks time)
{
    return quarl::Time(std::chrono::microseconds(time * (1'000'000 / Ticks_Per_Second)));
}
inline std::string seed_time(Ticks time) { return quarl::seed_text(time_at(time)); }

/// When data begin: some hours before the channels' second epoch.
inline constexpr Ticks Data_Begin = 1577793600 * Ticks_Per_Second; // 2019,365,12:00

/// How much a volume's stations carry.
struct Wealth {
    int fewest_channels = 3;
    int most_channels = 6;
    int epochs = 2;
    bool brief = false; ///< one short response: for the smallest volumes
    int exponent = 12;  ///< of the data records' length
};

struct Channel {
    std::string station;
    std::string location;
    std::string code;
    int rate; ///< samples per second
};

std::string station_code(int number);
/// The channels of station `number`; the same at every call.
std::vector<Channel> station_channels(int number, const Wealth &wealth);

/// A record number that goes on from 1 after the largest one.
constexpr int wrapped(std::int64_t number)
{
    return static_cast<int>((number - 1) % Largest_Sequence) + 1;
}

// The sections are whole logical records, the first one numbered `seq`.

std::string index_section(const std::vector<StationEntry> &stations,
                          const std::vector<SpanEntry> &spans);
std::string dictionary_section(int seq);
std::string station_section(int seq, int number, const Wealth &wealth);
std::string span_section(int seq, Ticks begin, Ticks end, const std::vector<B074> &channels);
