// Goes on reading behind damage.
#pragma once

#include "volume/handle.h"

namespace quarl
{

inline constexpr int Prefix = 7; ///< type and length of a control blockette

/// Where the reading stands behind the prefix of an item.
enum class Step {
    right, ///< it is one
    found, ///< it was none; the reading stands where one may be
    end    ///< there is none any more
};

/// Whether an item begins with the prefix that was read; when none does, goes on to where one may.
Step find_step(read_handle_t *handle);

/// The reading of a blockette met a record that does not go on with it, which is told.
bool broke_off(read_handle_t *handle, int type);

} // namespace quarl
