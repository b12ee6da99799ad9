#include "blockette/chain.h"

#include "platform/format.h"
#include "platform/text.h"

#include <algorithm>
#include <array>
#include <bit>
#include <concepts>
#include <cstring>
#include <type_traits>

namespace quarl
{

namespace
{

constexpr std::size_t Header_Size = 48; ///< bytes of a record before its first blockette
constexpr std::size_t Head = 4;         ///< type of a blockette and offset of the next one

/// Bytes in the order of the record.
class Bytes
{
public:
    Bytes(std::string_view bytes, bool swapped) : bytes_(bytes), swapped_(swapped) {}

    [[nodiscard]] std::size_t size() const { return bytes_.size(); }
    [[nodiscard]] std::string_view text(std::size_t at, std::size_t size) const
    {
        return bytes_.substr(std::min(at, bytes_.size()), size);
    }
    /// These have to be there.
    template <std::unsigned_integral T> [[nodiscard]] T number(std::size_t at) const
    {
        std::array<char, sizeof(T)> stored{};
        std::memcpy(stored.data(), bytes_.data() + at, sizeof(T));
        if (swapped_)
            std::reverse(stored.begin(), stored.end());
        return std::bit_cast<T>(stored);
    }

private:
    std::string_view bytes_;
    bool swapped_;
};

// How a member is read from the volume.

template <std::integral T> void read(const Bytes &in, std::size_t at, T *to)
{
    *to = static_cast<T>(in.number<std::make_unsigned_t<T>>(at));
}
void read(const Bytes &in, std::size_t at, float *to)
{
    *to = std::bit_cast<float>(in.number<std::uint32_t>(at));
}
template <std::size_t N> void read(const Bytes &in, std::size_t at, char (*to)[N])
{
    copy_text(*to, trimmed(up_to_nul(in.text(at, N - 1))));
}
template <std::size_t N> void read(const Bytes &in, std::size_t at, std::array<std::uint8_t, N> *to)
{
    for (std::size_t i = 0; i < N; ++i)
        read(in, at + i, &(*to)[i]);
}
void read(const Bytes &in, std::size_t at, BinaryTime *to)
{
    to->year = in.number<std::uint16_t>(at);
    to->day_of_year = in.number<std::uint16_t>(at + 2);
    to->hour = in.number<std::uint8_t>(at + 4);
    to->minute = in.number<std::uint8_t>(at + 5);
    to->second = in.number<std::uint8_t>(at + 6);
    to->fraction = in.number<std::uint16_t>(at + 8);
}

/// Reads the fields of a layout as far as the blockette has them.
template <class T> void read_fields(const Bytes &in, T *record)
{
    for_each_field<T>([&](const auto &field) {
        if constexpr (requires {
                          record->*field.member;
                          field.Begin;
                      }) {
            auto &member = record->*field.member;
            if constexpr (requires { read(in, 0, &member); })
                if (field.End <= in.size())
                    read(in, field.Begin, &member);
        }
    });
}

// What follows the fixed part of a blockette, as far as it goes: up to byte `limit`.
template <class T> std::size_t read_rest(const Bytes & /*in*/, std::size_t /*limit*/, T * /*blk*/)
{
    return T::Size;
}

std::size_t read_rest(const Bytes &in, std::size_t limit, blk_405_t *blk)
{
    std::size_t at = Head;
    for (; at + 2 <= std::min(limit, in.size()); at += 2)
        blk->delay_values.push_back(in.number<std::uint16_t>(at));
    return at;
}

std::size_t read_rest(const Bytes &in, std::size_t /*limit*/, blk_2000_t *blk)
{
    if (in.size() < blk_2000_t::Size)
        return blk_2000_t::Size;
    blk->number_of_header_fields = in.number<std::uint8_t>(blk_2000_t::Size - 1);
    const std::size_t total = std::max<std::size_t>(blk->total_length, blk_2000_t::Size);
    const std::size_t data = std::clamp<std::size_t>(blk->data_offset, blk_2000_t::Size, total);
    std::string_view texts = in.text(blk_2000_t::Size, data - blk_2000_t::Size);
    for (int i = 0; i < blk->number_of_header_fields; ++i) {
        const std::size_t size = texts.find('~');
        if (size == std::string_view::npos)
            break; // fewer than promised
        blk->header_fields.push_back(texts.substr(0, size));
        texts.remove_prefix(size + 1);
    }
    blk->opaque_data = in.text(data, total - data);
    return total;
}

/// Makes `blockette` one of type T when that is its number. Returns whether it is.
template <class T>
bool read_as(const Bytes &in, std::size_t limit, DataBlockette *blockette, std::size_t *size)
{
    if constexpr (!std::is_same_v<T, std::monostate>) {
        if (blockette->type != T::Number)
            return false;
        T &record = blockette->record.template emplace<T>();
        read_fields(in, &record);
        *size = read_rest(in, limit, &record);
        return true;
    }
    return false;
}

template <class... T>
std::size_t read_any(const Bytes &in, std::size_t limit, DataBlockette *blockette,
                     const std::variant<T...> & /*records*/)
{
    std::size_t size = Head;
    (void)(read_as<T>(in, limit, blockette, &size) || ...);
    return size;
}

/// The first remark stays: what comes behind may follow from it.
template <Literal Text, class... Args> void remark(DataBlockettes *chain, const Args &...args)
{
    if (chain->remark.empty())
        chain->remark = formatted<Text>(args...);
}

/// Where a blockette from byte `at` on has to end at the latest.
std::size_t end_of(const DataBlockette &blockette, std::size_t data, std::size_t record)
{
    const auto at = static_cast<std::size_t>(blockette.offset);
    const auto next = static_cast<std::size_t>(blockette.next);
    return std::min(record, next > at ? next : data > at ? data : record);
}

/// Reads the blockette at byte `at`, whose head is there. Returns the byte behind it.
std::size_t read_blockette(std::string_view record, bool swapped, std::size_t at, std::size_t data,
                           DataBlockettes *chain)
{
    const Bytes in(record.substr(at), swapped);
    DataBlockette &blockette = chain->list.emplace_back();
    blockette.type = in.number<std::uint16_t>(0);
    blockette.offset = static_cast<int>(at);
    blockette.next = in.number<std::uint16_t>(2);
    const std::size_t limit = end_of(blockette, data, record.size()) - at;
    const std::size_t size = read_any(in, limit, &blockette, blockette.record);
    blockette.size = std::min(size, in.size());
    if (blockette.size < size) {
        chain->cut = true;
        remark<"blockette %d at byte %d is cut">(chain, blockette.type, at);
    } else if (data > 0 && data < at + size) {
        remark<"blockette %d at byte %d reaches into the data">(chain, blockette.type, at);
    }
    if (const auto *opaque = blockette.get<blk_2000_t>();
        opaque && blockette.size == size && !opaque->is_sound())
        remark<"blockette %d at byte %d contradicts itself">(chain, blockette.type, at);
    return at + size;
}

void keep_extension(const DataBlockette &blockette, DataBlockettes *chain)
{
    const auto *extension = blockette.get<blk_1001_t>();
    if (!extension || chain->timing_quality || blockette.size < blk_1001_t::Size)
        return;
    chain->timing_quality = extension->timing_quality;
    chain->microseconds = extension->microseconds;
    chain->frame_count = extension->frame_count;
}

void keep_rate(const DataBlockette &blockette, DataBlockettes *chain)
{
    const auto *rate = blockette.get<blk_100_t>();
    if (rate && !chain->actual_sample_rate && blockette.size >= 8)
        chain->actual_sample_rate = rate->actual_sample_rate;
}

} // namespace

void read_chain(const blk_dh_t &header, std::string_view record, DataBlockettes *chain)
{
    chain->list.clear();
    chain->remark.clear();
    chain->cut = false;
    chain->actual_sample_rate.reset();
    chain->microseconds.reset();
    chain->timing_quality.reset();
    chain->frame_count.reset();
    const std::size_t data = static_cast<std::uint16_t>(header.beg_data);
    std::size_t behind = Header_Size;
    for (std::size_t at = static_cast<std::uint16_t>(header.beg_blks); at != 0;) {
        if (at < behind)
            return remark<"the next blockette, at byte %d, is not behind byte %d">(chain, at,
                                                                                   behind);
        if (at + Head > record.size())
            return remark<"the next blockette, at byte %d, is outside of the record">(chain, at);
        behind = read_blockette(record, header.byteswap != 0, at, data, chain);
        keep_rate(chain->list.back(), chain);
        keep_extension(chain->list.back(), chain);
        at = static_cast<std::size_t>(chain->list.back().next);
    }
}

} // namespace quarl
