// The listing: one line per blockette or data record, detail lines for lists.
#pragma once

#include "platform/out.h"
#include "records.h"

/// Writes the listing of a parsed blockette of type `blk_type` (Data_Record for a data record). The
/// caller decides when the stream is flushed.
void pbrief_blk(Out &stream, const record_t *blk, int blk_type);

#define DECLARE_PBRIEF(number, name) void pbrief_##name(Out &stream, const blk_##name##_t &blk);
SEED_BLOCKETTES(DECLARE_PBRIEF)
#undef DECLARE_PBRIEF
void pbrief_dh(Out &stream, const blk_dh_t &blk);

/// The volume summary lines, written when a volume identifier or a station header index is counted.
void summary_010(Out &stream, const blk_010_t &blk);
void summary_011(Out &stream, const blk_011_t &blk);
