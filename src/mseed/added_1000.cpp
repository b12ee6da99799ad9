#include "mseed/added_1000.h"

#include <algorithm>
#include <bit>
#include <cstdint>

namespace quarl::mseed
{

namespace
{

constexpr std::size_t Blockette_Size = 8;
constexpr std::size_t Frame = 64; ///< data begin at multiples of it

// Places in the fixed header.
constexpr std::size_t Number_Of_Blockettes = 39;
constexpr std::size_t Begin_Data = 44;
constexpr std::size_t First_Blockette = 46;

constexpr std::size_t Next_Blockette = 2; ///< place in a blockette

/// The bytes that blockettes take, up to what bounds them.
struct Layout {
    std::size_t first = 0; ///< blockette; 0: there is none
    std::size_t end = 0;   ///< behind the last
    std::size_t limit = 0; ///< data, or the end of the record
    bool has_data = false;
};

Layout layout_of(const blk_dh_t &header, const DataBlockettes &chain, std::size_t length)
{
    const std::size_t data = static_cast<std::uint16_t>(header.beg_data);
    Layout layout;
    layout.has_data = data >= Fixed_Header && data < length;
    layout.limit = layout.has_data ? data : length;
    if (chain.list.empty())
        return layout;
    const DataBlockette &last = chain.list.back();
    layout.first = static_cast<std::size_t>(chain.list.front().offset);
    layout.end = static_cast<std::size_t>(last.offset) + last.size;
    if (last.record.index() == 0) // nobody knows how long it is
        layout.end = std::max(layout.end, layout.limit);
    return layout;
}

/// Whether the bytes behind the fixed header are free.
bool is_free_in_front(const Layout &layout)
{
    constexpr std::size_t End = Fixed_Header + Blockette_Size;
    return layout.limit >= End && (layout.first == 0 || layout.first >= End);
}

void put_u16(std::string *record, std::size_t at, std::size_t value, bool swapped)
{
    auto number = static_cast<std::uint16_t>(value);
    if (swapped)
        number = static_cast<std::uint16_t>(number << 8 | number >> 8);
    const auto bytes = std::bit_cast<std::array<char, 2>>(number);
    std::copy(bytes.begin(), bytes.end(), record->begin() + static_cast<std::ptrdiff_t>(at));
}

/// Lets the links of blockettes follow them, `shift` bytes further; the last links to none.
void move_links(const DataBlockettes &chain, std::size_t shift, bool swapped, std::string *record)
{
    for (const DataBlockette &blockette : chain.list) {
        const std::size_t at = static_cast<std::size_t>(blockette.offset) + shift;
        const bool is_last = &blockette == &chain.list.back();
        if (at + Next_Blockette + 2 <= record->size())
            put_u16(record, at + Next_Blockette,
                    is_last ? 0 : static_cast<std::size_t>(blockette.next) + shift, swapped);
    }
}

} // namespace

std::size_t shift_for_1000(const blk_dh_t &header, const DataBlockettes &chain, std::size_t length)
{
    const Layout layout = layout_of(header, chain, length);
    if (is_free_in_front(layout) ||
        (layout.first >= Fixed_Header && layout.end + Blockette_Size <= layout.limit))
        return 0;
    const std::size_t past = layout.has_data ? layout.limit + Blockette_Size : 0;
    return Blockette_Size + (Frame - past % Frame) % Frame;
}

WithAdded with_1000(const blk_dh_t &header, const DataBlockettes &chain, std::string_view bytes,
                    const Content &content, std::size_t length)
{
    const bool swapped = header.byteswap != 0;
    const Layout layout = layout_of(header, chain, bytes.size());
    const std::size_t data_shift = shift_for_1000(header, chain, bytes.size());
    std::size_t shift = data_shift; // of the blockettes
    if (data_shift == 0 && !is_free_in_front(layout))
        shift = Blockette_Size;
    WithAdded made;
    std::string &record = made.bytes;
    record.assign(bytes);
    if (data_shift > 0)
        record.insert(Fixed_Header, data_shift, '\0');
    else if (shift > 0) // only the blockettes move, into the gap in front of the data
        record.erase(layout.end, shift).insert(Fixed_Header, shift, '\0');
    record.resize(length, '\0');
    move_links(chain, shift, swapped, &record);
    const auto exponent = static_cast<char>(std::countr_zero(length));
    const auto count = static_cast<unsigned char>(header.blks_fol & 0xFF);
    put_u16(&record, Fixed_Header, 1000, swapped);
    put_u16(&record, Fixed_Header + Next_Blockette, layout.first == 0 ? 0 : layout.first + shift,
            swapped);
    record[Fixed_Header + 4] = static_cast<char>(content.encoding);
    record[Fixed_Header + 5] = content.little_endian ? '\0' : '\1';
    record[Fixed_Header + 6] = exponent;
    record[Fixed_Header + 7] = '\0';
    record[Number_Of_Blockettes] = static_cast<char>(std::min(count + 1, 255));
    put_u16(&record, First_Blockette, Fixed_Header, swapped);
    made.begin_data = static_cast<std::uint16_t>(header.beg_data);
    if (layout.has_data) {
        made.begin_data += data_shift;
        put_u16(&record, Begin_Data, made.begin_data, swapped);
    }
    return made;
}

} // namespace quarl::mseed
