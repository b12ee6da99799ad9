// Puts a Blockette 1000 into a data record that has none.
#pragma once

#include <cstddef>
#include <quarl/blockette_chain.h>
#include <quarl/records.h>
#include <string>
#include <string_view>

namespace quarl::mseed
{

inline constexpr std::size_t Fixed_Header = 48; ///< bytes
inline constexpr std::size_t Least_Length =
    128; ///< bytes of a record that a Blockette 1000 can tell

/// What a new Blockette 1000 says besides the length.
struct Content {
    int encoding = 0;
    bool little_endian = false;
};

/// A record with its new Blockette 1000.
struct WithAdded {
    std::string bytes;
    std::size_t begin_data = 0; ///< as its header says now
};

/// How far the data of the record at `bytes`, of which this is the header, have to move to make
/// room; 0 when there is room.
std::size_t shift_for_1000(const blk_dh_t &header, const DataBlockettes &chain, std::size_t length);

/// The record with a Blockette 1000 as the first of its blockettes, `length` bytes long: a power of
/// two, which holds the record and what it is shifted, or drops what does not fit.
WithAdded with_1000(const blk_dh_t &header, const DataBlockettes &chain, std::string_view bytes,
                    const Content &content, std::size_t length);

} // namespace quarl::mseed
