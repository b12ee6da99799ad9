#include "blockette/msd.h"

#include <algorithm>
#include <cstring>

namespace quarl
{

namespace
{

std::uint16_t read_u16(const char *from, bool swapped)
{
    std::uint16_t value = 0;
    std::memcpy(&value, from, sizeof value);
    return swapped ? __builtin_bswap16(value) : value;
}

constexpr std::size_t Year_At = 20;
constexpr std::size_t First_Blockette_At = 46;
constexpr std::size_t Blockette_1000_Size = 8;
constexpr int Min_Exponent = 7;

} // namespace

int msdhdr_unpack(MsdHeader *header)
{
    const char *record = header->record;
    if (header->available < First_Blockette_At + 2)
        return -1;
    const bool swapped = year_is_swapped(record + Year_At);
    std::size_t at = read_u16(record + First_Blockette_At, swapped);
    for (std::size_t last = 0; at > last && at + 4 <= header->available;) {
        const char *blockette = record + at;
        if (read_u16(blockette, swapped) == 1000) {
            if (at + Blockette_1000_Size > header->available)
                return -1;
            const int exponent = static_cast<unsigned char>(blockette[6]);
            if (exponent < Min_Exponent || exponent > Max_Record_Exponent)
                return -1;
            header->encoding = static_cast<unsigned char>(blockette[4]);
            header->word_order = static_cast<unsigned char>(blockette[5]);
            header->record_length = record_length(exponent);
            return 0;
        }
        last = at;
        at = read_u16(blockette + 2, swapped);
    }
    return -1;
}

} // namespace quarl
