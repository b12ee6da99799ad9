// The statistics table and the volume's summary lines.
#pragma once

#include "platform/out.h"

#include <quarl/item.h>

namespace quarl
{

/// Prints the table for input file number `tapefile`. Nothing when nothing was counted.
void summary(Out &stream, int tapefile, const Statistics &statistics);

/// The volume summary lines, written when a volume identifier or a station header index is counted.
void summary_010(Out &stream, int tapefile, const blk_010_t &blk);
void summary_011(Out &stream, const blk_011_t &blk);

} // namespace quarl
