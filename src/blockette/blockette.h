// The blockette families: making, initialising, parsing and releasing each type's record.
#pragma once

#include "platform/allocate.h"
#include "records.h"

#include <memory>
#include <string_view>

/// new_NNN makes a record with its defaults, init_NNN sets them again, parse_NNN fills it from the
/// text of a blockette (from its three-digit type on; nothing beyond `buff` is read) and free_NNN,
/// in pfree, releases it. Parsers report bad fields and set Bad_blkflag; they never fail. Memory
/// that is not there ends the run.
#define DECLARE_FAMILY(number, name)                                                               \
    std::unique_ptr<blk_##name##_t> new_##name();                                                  \
    void init_##name(blk_##name##_t *blk);                                                         \
    void parse_##name(blk_##name##_t *blk, std::string_view buff);                                 \
    void free_##name(blk_##name##_t *blk);
SEED_BLOCKETTES(DECLARE_FAMILY)
#undef DECLARE_FAMILY

/// Builds the full channel name from channel and location codes; a subchannel's name ends in a
/// letter for its orientation and is entered in Geoscope_channels.
void fix_channel(blk_052_t *blk);

/// The last station and channel identifiers parsed; they live, and stay, for the whole run.
extern blk_050_t blk_050;
extern blk_052_t blk_052;

/// Copies the current station and channel into a response or comment.
void stamp_channel(channel_context_t *blk);
