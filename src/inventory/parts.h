// The parts of a stage, taken from the records of a channel's blockettes.
#pragma once

#include <quarl/records.h>
#include <quarl/stages.h>

namespace quarl
{

PolesZeros shape_of(const blk_053_t &blk);
Coefficients shape_of(const blk_054_t &blk);
ResponseList shape_of(const blk_055_t &blk);
Fir shape_of(const blk_061_t &blk);
Polynomial shape_of(const blk_062_t &blk);

Decimation decimation_of(const blk_057_t &blk);
Gain gain_of(const blk_058_t &blk);

} // namespace quarl
