// Statistics of one input file: counts and bytes.
#pragma once

#include "platform/current.h"

#include <array>
#include <cstdint>
#include <quarl/item.h>

namespace quarl
{

/// The numbers of the input file at hand.
struct Count {
    static constexpr int Types = 500; ///< types -1 to 498, each at the index one above

    std::int64_t nblks = 0; ///< everything counted, types outside the table included
    std::array<std::int64_t, Types> blk_cnt{};
    std::array<std::int64_t, Types> tot_siz{}; ///< bytes
};

/// Begins a new input file.
void init_count();

/// Counts a blockette or data record; `blk` is null for a type without a parser, which counts 0
/// bytes.
void count_blk(const record_t *blk, int blk_num);

/// What count_blk does for a data record of `length` bytes.
inline void count_data(Count *count, int length)
{
    ++count->nblks;
    ++count->blk_cnt[0];
    count->tot_siz[0] += length;
}

/// The size in bytes that counts for a record: the declared length of a blockette, the record
/// length of a data record.
std::int64_t block_size(const record_t *blk, int blk_type);

/// What was counted, of an input file of `bytes` bytes in `records` logical records.
Statistics statistics(std::int64_t bytes, std::int64_t records);

} // namespace quarl
