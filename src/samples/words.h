// Samples that are words of one size each: integers, reals, gain-ranged ones, text.
#pragma once

#include "samples/decoding.h"

namespace quarl
{

void decode_text(const Decoding &task);
void decode_int16(const Decoding &task);
void decode_int24(const Decoding &task);
void decode_int32(const Decoding &task);
void decode_float32(const Decoding &task);
void decode_float64(const Decoding &task);
void decode_geoscope_24(const Decoding &task);
void decode_geoscope_gain3(const Decoding &task);
void decode_geoscope_gain4(const Decoding &task);
void decode_cdsn(const Decoding &task);
void decode_sro(const Decoding &task);

} // namespace quarl
