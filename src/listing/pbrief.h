// The listing: one line per blockette or data record, detail lines for lists.
#pragma once

#include "blockette/blockette.h"
#include "platform/out.h"

namespace quarl
{

/// Writes the listing of a parsed blockette of type `blk_type` (Data_Record for a data record). The
/// caller decides when the stream is flushed.
void pbrief_blk(Out &stream, const record_t *blk, int blk_type);

/// The listing of one type; pbrief goes by the record's type.
#define DECLARE_PBRIEF(name)                                                                       \
    void pbrief_##name(Out &stream, const blk_##name##_t &blk);                                    \
    inline void pbrief(Out &stream, const blk_##name##_t &blk) { pbrief_##name(stream, blk); }
SEED_BLOCKETTES(DECLARE_PBRIEF)
#undef DECLARE_PBRIEF
void pbrief_dh(Out &stream, const blk_dh_t &blk);

} // namespace quarl
