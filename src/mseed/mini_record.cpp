#include "mseed/mini_record.h"

#include "mseed/added_1000.h"
#include "platform/format.h"
#include "platform/text.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <type_traits>
#include <utility>

namespace quarl::mseed
{

namespace
{

constexpr std::size_t Sequence_Size = 6;
constexpr int Least_Exponent = 7; ///< of the record lengths that readers know
constexpr int Most_Exponent = 20;

/// What readers of miniSEED tell a record by, besides its quality indicator and its time.
bool has_record_header(std::string_view record)
{
    const auto is_number = [](char c) { return is_digit(c) || c == ' ' || c == '\0'; };
    return std::all_of(record.begin(), record.begin() + Sequence_Size, is_number);
}

bool is_reserved_byte(char c) { return c == ' ' || c == '\0'; }

const DataBlockette *find_1000(const DataBlockettes &chain)
{
    const auto found = std::find_if(chain.list.begin(), chain.list.end(),
                                    [](const auto &each) { return each.type == 1000; });
    return found == chain.list.end() ? nullptr : &*found;
}

template <class Values> bool is_same(const Values &a, const Values &b)
{
    if constexpr (std::is_same_v<Values, std::monostate>)
        return true;
    else
        return a.size() == b.size() && // bits, so that a NaN is as good as another number
               (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof *a.data()) == 0);
}

} // namespace

std::string_view MiniRecordMaker::refuse(std::string fault)
{
    fault_ = std::move(fault);
    return {};
}

std::string_view MiniRecordMaker::make(const Item &item, const blk_dh_t &header)
{
    completed_ = false;
    const std::string_view bytes = item.bytes();
    if (!header.raw || bytes.size() < Fixed_Header)
        return refuse("the record is shorter than its header");
    if (!has_record_header(bytes))
        return refuse("the sequence number is no number");
    if (!is_reserved_byte(bytes[Sequence_Size + 1]))
        return refuse("the header has a continuation code, as only control headers have");
    const auto times = data_times(header, item.data_blockettes().refinement());
    if (!times)
        return refuse("the start time is none of the calendar");
    start_ = times->start;
    record_.assign(bytes);
    if (header.encoding >= 0)
        return record_;
    const DataBlockette *found = find_1000(item.data_blockettes());
    if (!found)
        return add_1000(item, header);
    if (found->size < blk_1000_t::Size)
        return refuse("Blockette 1000 is cut");
    char &exponent = record_[static_cast<std::size_t>(found->offset) + 6];
    const auto length = static_cast<int>(std::countr_zero(bytes.size()));
    if (exponent >= Least_Exponent && exponent <= Most_Exponent && exponent != length)
        return refuse("Blockette 1000 tells another length than the volume");
    if (length < Least_Exponent)
        return refuse("the record is shorter than Blockette 1000 can tell");
    completed_ = exponent != length;
    exponent = static_cast<char>(length);
    return record_;
}

std::string_view MiniRecordMaker::add_1000(const Item &item, const blk_dh_t &header)
{
    const DataBlockettes &chain = item.data_blockettes();
    const std::size_t length = record_.size();
    const std::size_t data = static_cast<std::uint16_t>(header.beg_data);
    Content content{static_cast<int>(encoding_of(header)), is_little_endian(header)};
    Samples samples;
    if (header.nsamps != 0) {
        samples = decode(header, samples_);
        if (data < Fixed_Header || data >= length)
            return refuse("the data begin outside of the record");
        if (content.encoding < 0)
            return refuse(*header.format
                              ? formatted<"Blockette 1000 has no code for the data format '%s'">(
                                    std::string_view(header.format))
                              : "nothing tells how the samples are encoded");
        content.little_endian = samples.little_endian;
    }
    content.encoding = std::max(content.encoding, 0);
    completed_ = true;
    const std::size_t shift = shift_for_1000(header, chain, length);
    const bool ends_with_fill =
        record_.find_last_not_of('\0') + 1 <= length - std::min(shift, length);
    for (std::size_t longer = std::max(length, Least_Length);; longer *= 2) {
        if (longer < length + shift && (longer > length || !ends_with_fill))
            continue;
        WithAdded made = with_1000(header, chain, record_, content, longer);
        if (longer < length + shift) { // what looks like fill may be samples of 0
            blk_dh_t copy = header;
            copy.raw = made.bytes.data();
            copy.beg_data = static_cast<std::int16_t>(made.begin_data);
            copy.encoding = content.encoding;
            copy.word_order = content.little_endian ? 0 : 1;
            if (header.nsamps != 0 && !has_same_samples(copy, samples))
                continue;
        }
        longer_ = std::move(made.bytes);
        return longer_;
    }
}

bool MiniRecordMaker::has_same_samples(const blk_dh_t &header, const Samples &samples)
{
    const Samples moved = decode(header, copied_);
    if (!samples.is_decoded() || moved.values.index() != samples.values.index() ||
        moved.problems.size() != samples.problems.size())
        return false;
    return std::visit(
        [&](const auto &values) {
            return is_same(values, std::get<std::decay_t<decltype(values)>>(samples.values));
        },
        moved.values);
}

void put_sequence_number(std::string *record, std::int64_t number)
{
    constexpr std::int64_t Largest = 999'999;
    const std::string digits = formatted<"%06d">((number - 1) % Largest + 1);
    std::copy(digits.begin(), digits.end(), record->begin());
}

} // namespace quarl::mseed
