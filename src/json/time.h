// Times as ISO 8601 in UTC, quotes included.
#pragma once

#include <cstddef>
#include <quarl/records.h>
#include <quarl/time.h>
#include <string_view>

namespace quarl::json
{

/// Characters of a time with `decimals` and its quotes.
constexpr std::size_t time_room(std::size_t decimals) { return 32 + decimals; }

/// Writes a SEED time, which may be cut short after any part, with the decimals that it has, as a
/// JSON string; returns the end. Null when `text` is no time.
char *put_time(char *to, std::string_view text);

/// Writes a binary time with four decimals. Null when it is no time.
char *put_time(char *to, const BinaryTime &time);

/// Writes the members `start` and `end` with six decimals: the first and the last sample, a time
/// correction applied that the record says is not. Without samples or a rate both are the same. A
/// header whose time is none gives null, and `*bad` becomes true then.
char *put_data_times(char *to, const blk_dh_t &header, const DataRefinement &more, bool *bad);

} // namespace quarl::json
