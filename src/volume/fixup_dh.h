// Completion of data record headers.
#pragma once

#include "volume/handle.h"

#include <cstdint>
#include <quarl/records.h>

namespace quarl
{

/// The low 16 bits as a signed number when bit 15 is set, else `value` unchanged.
constexpr int word_comp(int value)
{
    constexpr int Sign_Bit = 0x8000;
    return value & Sign_Bit ? static_cast<std::int16_t>(value & 0xFFFF) : value;
}

/// Derives sample rate and start text from the header as it was read. The word orders are ignored.
void fix_dh(blk_dh_t *blk, int long_order, int word_order);

/// Completes a parsed header: time, epoch, and record length and format from the volume's channel
/// dictionary or, for a channel that the volume does not describe, from the database's table
/// seedformat. A channel that an open database does not know either is complained about.
/// Returns whether the channel dictionary has its length.
bool fixup_dh(blk_dh_t *blk, const read_handle_t *handle);

} // namespace quarl
