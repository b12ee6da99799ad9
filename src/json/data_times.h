// When the samples of a data record were taken.
#pragma once

#include <quarl/records.h>

namespace quarl::json
{

/// Writes the members `start` and `end`: the first and the last sample, a time correction applied
/// that the record says is not. Without samples or a rate both are the same. A header whose time is
/// none gives its text as it stands, and null; `*bad` becomes true then.
char *put_data_times(char *to, const blk_dh_t &header, bool *bad);

} // namespace quarl::json
