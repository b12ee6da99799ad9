#include "blockette/data_format.h"
#include "platform/format.h"
#include "samples/encodings.h"

#include <array>
#include <bit>
#include <quarl/samples.h>
#include <utility>

namespace quarl
{

namespace
{

constexpr int Fixed_Header = 48; ///< bytes

std::string nothing_known_of(Encoding encoding, std::string_view format)
{
    if (encoding != Encoding::none)
        return formatted<"encoding %d is not known">(static_cast<int>(encoding));
    if (format.empty())
        return "nothing tells how the samples are encoded";
    return formatted<"how samples are encoded is not known of the data format '%s'">(format);
}

/// Decodes what `task` says. `header` is of the record, or null.
void decode_bytes(const Decoding &task, const blk_dh_t *header)
{
    const EncodedSamples &encoded = task.encoded;
    const EncodingRow *row = find_encoding(encoded.encoding);
    if (row && row->decode) {
        row->decode(task);
        return;
    }
    if (encoded.count == 0)
        return;
    const std::string_view format = header ? header->format : std::string_view();
    if (row)
        task.complain(SampleFault::no_rule,
                      formatted<"there is no public rule how to decode encoding %d, %s">(
                          static_cast<int>(row->encoding), row->name));
    else if (encoded.encoding == Encoding::none && header && header->type != 0)
        task.complain(
            SampleFault::no_rule,
            formatted<"there is no public rule how to decode the data format '%s'">(format));
    else
        task.complain(SampleFault::no_encoding, nothing_known_of(encoded.encoding, format));
}

/// Finds the bytes of a record from its first sample on. False, with a complaint, when its header
/// does not say where they are.
bool find_data(const blk_dh_t &header, int length, const Decoding &task, std::string_view *data)
{
    const int begin = header.beg_data & 0xFFFF; // kept with a sign
    const bool inside = begin >= Fixed_Header && begin < length;
    if (inside)
        *data = {header.raw + begin, static_cast<std::size_t>(length - begin)};
    if (inside || task.encoded.count == 0)
        return true;
    task.complain(SampleFault::data_offset,
                  begin < Fixed_Header
                      ? formatted<"the data begin at byte %d, inside the fixed header">(begin)
                      : formatted<"the data begin at byte %d of a record of %d">(begin, length));
    return false;
}

/// Nothing is decoded yet.
Samples begin(const EncodedSamples &encoded, SampleBuffer *buffer)
{
    buffer->room().problems.clear();
    Samples samples;
    samples.encoding = encoded.encoding;
    samples.little_endian = encoded.little_endian;
    samples.expected = encoded.count;
    return samples;
}

} // namespace

void Decoding::complain(SampleFault fault, std::string text) const
{
    room.problems.push_back({fault, std::move(text)});
}

void Decoding::complain_of_count(std::size_t there) const
{
    if (there < encoded.count)
        complain(SampleFault::count,
                 formatted<"the data hold %d of %d samples">(there, encoded.count));
}

Encoding encoding_of(const blk_dh_t &header)
{
    return static_cast<Encoding>(header.encoding >= 0 ? header.encoding
                                                      : seed_format(header.type).encoding);
}

bool is_little_endian(const blk_dh_t &header)
{
    if (header.encoding >= 0 && (header.word_order == 0 || header.word_order == 1))
        return header.word_order == 0;
    const std::string_view format = header.format;
    const bool names_big_endian_machine = format.find("SUN") != std::string_view::npos ||
                                          format.find("68000") != std::string_view::npos;
    if (header.encoding < 0 && names_big_endian_machine)
        return false;
    return (std::endian::native == std::endian::little) == (header.byteswap == 0);
}

std::string_view name_of(SampleFault fault)
{
    constexpr std::array<std::string_view, 9> Names = {
        "no-encoding",  "no-rule",   "data-offset", "count",        "last-sample",
        "control-code", "gain-code", "other-order", "no-text-bytes"};
    static_assert(Names.size() == static_cast<std::size_t>(SampleFault::no_text_bytes) + 1);
    return Names[static_cast<std::size_t>(fault)];
}

std::size_t Samples::size() const
{
    return std::visit(
        [](const auto &some) -> std::size_t {
            if constexpr (requires { some.size(); })
                return some.size();
            return 0;
        },
        values);
}

SampleBuffer::SampleBuffer() : room_(std::make_unique<Room>()) {}
SampleBuffer::SampleBuffer(SampleBuffer &&) noexcept = default;
SampleBuffer &SampleBuffer::operator=(SampleBuffer &&) noexcept = default;
SampleBuffer::~SampleBuffer() = default;

Samples decode(const EncodedSamples &encoded, SampleBuffer &buffer)
{
    Samples samples = begin(encoded, &buffer);
    decode_bytes({encoded, buffer.room(), samples}, nullptr);
    samples.problems = buffer.room().problems;
    return samples;
}

namespace
{

/// Of a record of which `length` bytes are there.
Samples decode_record(const blk_dh_t &header, int length, SampleBuffer &buffer)
{
    EncodedSamples encoded = {
        .encoding = encoding_of(header),
        .little_endian = is_little_endian(header),
        .count = static_cast<std::size_t>(header.nsamps & 0xFFFF), // kept with a sign
    };
    Samples samples = begin(encoded, &buffer);
    const Decoding task{encoded, buffer.room(), samples};
    if (find_data(header, length, task, &encoded.data))
        decode_bytes(task, &header);
    samples.problems = buffer.room().problems;
    return samples;
}

} // namespace

Samples decode(const blk_dh_t &header, SampleBuffer &buffer)
{
    return decode_record(header, header.raw ? header.length : 0, buffer);
}

Samples decode(const Item &item, SampleBuffer &buffer)
{
    if (const auto *header = item.get<blk_dh_t>())
        return decode_record(*header, header->raw ? header->length - item.missing() : 0, buffer);
    return begin({}, &buffer);
}

} // namespace quarl
