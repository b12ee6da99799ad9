// Binary helpers for data records: byte order, quality indicators, Blockette 1000.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace quarl
{

/// True for the quality indicators of data records: D, R, Q and M.
constexpr bool is_ok_msd_quality(char c) { return c == 'D' || c == 'R' || c == 'Q' || c == 'M'; }

inline constexpr int Max_Record_Exponent = 30;

/// The length in bytes that an exponent of 2 stands for in a volume: of none is below 2, nor above
/// the largest power that an int holds.
constexpr int record_length(int exponent)
{
    return 1 << std::clamp(exponent, 1, Max_Record_Exponent);
}

/// Copies `count` 2-byte (4-byte) values with their bytes reversed. No alignment is assumed; source
/// and destination may be the same.
inline void swap2(const void *from, void *to, int count)
{
    const auto *source = static_cast<const char *>(from);
    auto *target = static_cast<char *>(to);
    for (; count > 0; --count, source += 2, target += 2) {
        std::uint16_t value = 0;
        std::memcpy(&value, source, sizeof value);
        value = __builtin_bswap16(value);
        std::memcpy(target, &value, sizeof value);
    }
}
inline void swap4(const void *from, void *to, int count)
{
    const auto *source = static_cast<const char *>(from);
    auto *target = static_cast<char *>(to);
    for (; count > 0; --count, source += 4, target += 4) {
        std::uint32_t value = 0;
        std::memcpy(&value, source, sizeof value);
        value = __builtin_bswap32(value);
        std::memcpy(target, &value, sizeof value);
    }
}

/// The byte order test of data record headers: a 2-byte year that reads 1970 to 2030 in host order
/// is in host order, anything else is swapped.
inline bool year_is_swapped(const char *year)
{
    std::uint16_t value = 0;
    std::memcpy(&value, year, sizeof value);
    return value < 1970 || value > 2030;
}

/// What msdhdr_unpack works on and fills in.
struct MsdHeader {
    const char *record;    ///< in: the record from its byte 0
    std::size_t available; ///< in: bytes of it that may be read
    int encoding;          ///< out: encoding format code of Blockette 1000
    int record_length;     ///< in: preset; out: 2 to the power of Blockette 1000's exponent
    int word_order;        ///< out: word order of Blockette 1000
};

/// Finds the first Blockette 1000 in the record's chain of data blockettes. 0 when it is there,
/// whole and usable (record length exponent 7 to 30); otherwise -1 and the outputs are untouched.
[[nodiscard]] int msdhdr_unpack(MsdHeader *header);

} // namespace quarl
