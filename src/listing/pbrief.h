// The listing: one line per blockette or data record, detail lines for lists.
#pragma once

#include "blockette/blockette.h"
#include "platform/out.h"

#include <quarl/volume.h>

namespace quarl
{

/// How a listing is written.
struct ListingStyle {
    bool simplified = false;        ///< the short channel line, with texts for their codes
    const Volume *volume = nullptr; ///< that defines these; null: nothing does
};

/// Writes the listing of a parsed blockette of type `blk_type` (Data_Record for a data record). The
/// caller decides when the stream is flushed.
void pbrief_blk(Out &stream, const record_t *blk, int blk_type, const ListingStyle &style = {});

/// Says that a listing has no line for a type.
void complain_of_type(int type);

/// What a listing says of an item besides the messages of the reading: types that it does not know.
void complain_of_types(const Item &item);

/// The listing of one type; pbrief goes by the record's type.
#define DECLARE_PBRIEF(name)                                                                       \
    void pbrief_##name(Out &stream, const blk_##name##_t &blk);                                    \
    inline void pbrief(Out &stream, const blk_##name##_t &blk) { pbrief_##name(stream, blk); }
SEED_BLOCKETTES(DECLARE_PBRIEF)
#undef DECLARE_PBRIEF
void pbrief_dh(Out &stream, const blk_dh_t &blk);

} // namespace quarl
