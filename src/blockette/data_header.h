// The fixed header of data records: making, releasing and parsing.
#pragma once

#include "blockette/flaws.h"
#include "blockette/msd.h"

#include <cstdint>
#include <cstring>
#include <memory>
#include <quarl/records.h>
#include <string_view>

namespace quarl
{

std::unique_ptr<blk_dh_t> new_dh();
void init_dh(blk_dh_t *blk);
void free_dh(blk_dh_t *blk);

/// Fills the header from `buff`, which begins at byte 8 of the record. The year decides the byte
/// order: 1970 to 2030 in host order is host order. Every 16-bit and 8-bit field is sign-extended.
void parse_dh(blk_dh_t *blk, std::string_view buff);

/// Takes the counts and offsets that have no sign as they are, where parse_dh extends their sign.
void take_unsigned(blk_dh_t *blk);

/// Says which fields of the header a record lacks of which `size` bytes are there.
void note_missing(const blk_dh_t &blk, int size, Flaws *flaws);

/// Reads one 4-, 2- or 1-byte value at `src`, sign-extended; a non-zero `swap` reverses its bytes.
inline int int2int(const char *src, int swap)
{
    std::int32_t value = 0;
    std::memcpy(&value, src, sizeof value);
    if (swap)
        swap4(&value, &value, 1);
    return value;
}
inline int short2int(const char *src, int swap)
{
    std::int16_t value = 0;
    std::memcpy(&value, src, sizeof value);
    if (swap)
        swap2(&value, &value, 1);
    return value;
}
inline int char2int(const char *src) { return static_cast<signed char>(*src); }

} // namespace quarl
