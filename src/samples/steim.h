// Steim's compressions of integers.
#pragma once

#include "samples/decoding.h"

namespace quarl
{

void decode_steim1(const Decoding &task);
void decode_steim2(const Decoding &task);

} // namespace quarl
