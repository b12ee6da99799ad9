#include "compose/volume.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

namespace
{

constexpr std::size_t Prefix_Size = 7;
constexpr int Data_Header_Size = 48;

std::string digits(int value, int width)
{
    char text[16];
    std::snprintf(text, sizeof text, "%0*d", width, value);
    return text;
}

/// Appends binary numbers in one byte order.
class Packer
{
public:
    explicit Packer(bool little) : little_(little) {}

    Packer &number(std::int64_t value, int size)
    {
        constexpr int Sign = 63;
        for (int i = 0; i < size; i++)
            bytes += static_cast<char>((value >> std::min(8 * (little_ ? i : size - 1 - i), Sign)) &
                                       0xff);
        return *this;
    }
    Packer &text(std::string_view value, std::size_t width)
    {
        bytes += value.substr(0, width);
        bytes.append(width - std::min(width, value.size()), ' ');
        return *this;
    }

    std::string bytes;

private:
    bool little_;
};

void pack_time(Packer *out, const std::string &time)
{
    int year = 0, day = 0, hour = 0, minute = 0, second = 0, fraction = 0;
    if (std::sscanf(time.c_str(), "%d,%d,%d:%d:%d.%d", &year, &day, &hour, &minute, &second,
                    &fraction) != 6)
        throw std::invalid_argument("bad time '" + time + "'");
    out->number(year, 2).number(day, 2).number(hour, 1).number(minute, 1).number(second, 1);
    out->number(0, 1).number(fraction, 2);
}

std::uint32_t bits_of(float value)
{
    std::uint32_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

/// One field, such as "u2:7".
void pack_field(Packer *out, std::string_view field)
{
    const std::size_t colon = std::min(field.find(':'), field.size());
    const std::string value(field.substr(std::min(colon + 1, field.size())));
    const int width = std::atoi(std::string(field.substr(1, colon - 1)).c_str());
    switch (field.empty() ? '\0' : field.front()) {
    case 'u':
    case 'i':
        out->number(std::stoll(value), width);
        break;
    case 'f':
        out->number(bits_of(std::stof(value)), 4);
        break;
    case 't':
        pack_time(out, value);
        break;
    case 'a':
        out->text(value, static_cast<std::size_t>(width));
        break;
    case 'z':
        out->number(0, width);
        break;
    default:
        throw std::invalid_argument("bad field '" + std::string(field) + "'");
    }
}

std::string packed(std::string_view fields, bool little)
{
    Packer out(little);
    while (!fields.empty()) {
        const std::size_t size = std::min(fields.find('/'), fields.size());
        pack_field(&out, fields.substr(0, size));
        fields.remove_prefix(std::min(size + 1, fields.size()));
    }
    return out.bytes;
}

/// The data blockettes one after the other, each naming the offset of the next.
std::string chain_blockettes(const DataRecord &record, int *count)
{
    struct Item {
        int type;
        std::string body;
    };
    std::vector<Item> items;
    if (const auto &b = record.b1000)
        items.push_back({1000, Packer(record.little)
                                   .number(b->encoding, 1)
                                   .number(b->word_order, 1)
                                   .number(b->exponent, 1)
                                   .number(0, 1)
                                   .bytes});
    if (record.timing_quality)
        items.push_back(
            {1001, Packer(record.little).number(*record.timing_quality, 1).number(0, 3).bytes});
    if (record.actual_rate)
        items.push_back(
            {100,
             Packer(record.little).number(bits_of(*record.actual_rate), 4).number(0, 4).bytes});
    for (const auto &[type, fields] : record.blockettes)
        items.push_back({type, packed(fields, record.little)});
    Packer out(record.little);
    int offset = Data_Header_Size;
    for (const Item &item : items) {
        offset += 4 + static_cast<int>(item.body.size());
        out.number(item.type, 2).number(&item == &items.back() ? 0 : offset, 2);
        out.bytes += item.body;
    }
    *count = static_cast<int>(items.size());
    return out.bytes;
}

} // namespace

std::string data_record_bytes(const DataRecord &record, int seq)
{
    int count = 0;
    const std::string blockettes = chain_blockettes(record, &count);
    const int used = Data_Header_Size + static_cast<int>(blockettes.size());
    const int begin_data = record.begin_data.value_or((used + 63) / 64 * 64);

    Packer out(record.little);
    out.text(digits(seq, 6) + record.quality, 8);
    out.text(record.station, 5).text(record.location, 2).text(record.channel, 3);
    out.text(record.network, 2);
    pack_time(&out, record.time);
    out.number(record.samples, 2).number(record.rate_factor, 2).number(record.rate_multiplier, 2);
    out.number(record.activity, 1).number(record.io_flags, 1).number(record.quality_flags, 1);
    out.number(record.num_blockettes.value_or(count), 1);
    out.number(record.time_correction, 4).number(begin_data, 2);
    out.number(record.first_blockette.value_or(count > 0 ? Data_Header_Size : 0), 2);
    out.bytes += blockettes;

    const auto data_at = static_cast<std::size_t>(std::max(begin_data, used));
    const auto length = static_cast<std::size_t>(record.length);
    out.bytes.resize(std::min(data_at, length), '\0');
    const std::string_view payload =
        record.payload.empty() ? std::string_view("\0", 1) : std::string_view(record.payload);
    while (out.bytes.size() < length)
        out.bytes += payload.substr(0, length - out.bytes.size());
    return out.bytes;
}

VolumeBuilder &VolumeBuilder::records(int length)
{
    pad();
    record_length_ = length;
    return *this;
}

VolumeBuilder &VolumeBuilder::header(char type)
{
    pad();
    type_ = type;
    return *this;
}

VolumeBuilder &VolumeBuilder::sequence(int number)
{
    pad();
    next_sequence_ = number;
    return *this;
}

VolumeBuilder &VolumeBuilder::sequence_text(std::string six)
{
    pad();
    sequence_text_ = std::move(six);
    return *this;
}

VolumeBuilder &VolumeBuilder::blockette(int type, std::string_view fields)
{
    return blockette(type, digits(static_cast<int>(Prefix_Size + fields.size()), 4), fields);
}

VolumeBuilder &VolumeBuilder::blockette(int type, std::string_view length, std::string_view fields)
{
    std::string whole = digits(type, 3);
    whole += length;
    whole += fields;
    return text(whole);
}

VolumeBuilder &VolumeBuilder::text(std::string_view characters)
{
    if (room() < Prefix_Size)
        pad();
    for (char continuation = ' '; !characters.empty(); continuation = '*') {
        if (room() == 0)
            begin_record(continuation);
        const std::size_t n = std::min(room(), characters.size());
        files_.back() += characters.substr(0, n);
        characters.remove_prefix(n);
    }
    return *this;
}

VolumeBuilder &VolumeBuilder::pad(int blank_records)
{
    files_.back().resize(record_end_, ' ');
    for (int i = 0; i < blank_records; i++) {
        begin_record(' ');
        files_.back().resize(record_end_, ' ');
    }
    return *this;
}

VolumeBuilder &VolumeBuilder::data(const DataRecord &record)
{
    pad();
    const int seq = record.seq != 0 ? record.seq : next_sequence_;
    next_sequence_ = seq + 1;
    return raw(data_record_bytes(record, seq));
}

VolumeBuilder &VolumeBuilder::raw(std::string_view bytes)
{
    pad();
    files_.back() += bytes;
    record_end_ = files_.back().size();
    return *this;
}

VolumeBuilder &VolumeBuilder::cut(std::size_t count)
{
    pad();
    return truncate(files_.back().size() - std::min(count, files_.back().size()));
}

VolumeBuilder &VolumeBuilder::truncate(std::size_t size)
{
    pad();
    record_end_ = std::min(size, record_end_);
    files_.back().resize(record_end_);
    return *this;
}

VolumeBuilder &VolumeBuilder::next_file()
{
    pad();
    files_.emplace_back();
    record_end_ = 0;
    next_sequence_ = 1;
    return *this;
}

const std::vector<std::string> &VolumeBuilder::files()
{
    pad();
    return files_;
}

std::string VolumeBuilder::volume()
{
    std::string all;
    for (const std::string &file : files())
        all += file;
    return all;
}

void VolumeBuilder::begin_record(char continuation)
{
    std::string &file = files_.back();
    record_end_ = file.size() + static_cast<std::size_t>(record_length_);
    file += sequence_text_.empty() ? digits(next_sequence_, 6) : sequence_text_;
    file += type_;
    file += continuation;
    sequence_text_.clear();
    next_sequence_++;
}
