// Statistics of one input file: counts, bytes and shares.
#pragma once

#include "records.h"

#include <cstdint>

/// Begins a new input file.
void init_count();

/// Counts a blockette or data record; `blk` is null for a type without a parser, which counts 0
/// bytes. A volume identifier and a station header index also print their summary line.
void count_blk(const record_t *blk, int blk_num);

/// The size in bytes that counts for a record: the declared length of a blockette, the record
/// length of a data record.
std::int64_t block_size(const record_t *blk, int blk_type);

/// Prints the table for input file number `tapefile`, of which `seed_volume_size` bytes were read.
/// Nothing when nothing was counted.
void summary(int tapefile, std::int64_t seed_volume_size);
