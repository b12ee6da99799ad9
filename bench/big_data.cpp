#include "big_data.h"

#include "compose/volume.h"
#include "random.h"

#include <algorithm>
#include <array>
#include <bit>
#include <numeric>
#include <stdexcept>
#include <utility>

namespace
{

constexpr int Frame = 64;
constexpr int Data_Begin_Offset = 64; ///< behind the fixed header, Blockettes 1000 and 1001
constexpr int Samples_Per_Frame = 58;

/// Deviations from the mean sample count, in 1/512 of a record's length; any eight in a row add up
/// to nothing.
constexpr std::array<int, 8> Deviations = {-37, 12, 25, -8, 31, -40, 5, 12};

// Offsets in a data record of what differs from record to record.
constexpr std::size_t Sequence = 0;
constexpr std::size_t Time = 20;
constexpr std::size_t Sample_Count = 30;
constexpr std::size_t Clock_Flags = 37;
constexpr std::size_t Quality_Flags = 38;
constexpr std::size_t Time_Correction = 40;
constexpr std::size_t Timing_Quality = 60;

void put_big_endian(std::string *record, std::size_t at, int value, int size)
{
    for (int i = size - 1; i >= 0; i--, value >>= 8)
        (*record)[at + i] = static_cast<char>(value & 0xFF);
}

void put_sequence(std::string *record, int seq)
{
    for (int i = 5; i >= 0; i--, seq /= 10)
        (*record)[Sequence + i] = static_cast<char>('0' + seq % 10);
}

void put_time(std::string *record, Ticks time)
{
    const auto bytes = quarl::bytes_of(quarl::binary_time(time_at(time)), std::endian::big);
    std::copy(bytes.begin(), bytes.end(), record->begin() + Time);
}

/// Frames of four one-byte differences per word; like real ones they compress by a tenth or two.
std::string make_frames(std::size_t count)
{
    constexpr std::uint8_t All_Bytes = 0x55; // the code of four words of four differences
    Random random(count);
    std::string frames;
    frames.reserve(count * Frame);
    for (std::size_t i = 0; i < count; i++) {
        frames += static_cast<char>(All_Bytes >> 2);
        frames.append(3, static_cast<char>(All_Bytes));
        for (int byte = 4; byte < Frame; byte++)
            frames +=
                static_cast<char>(random.below(64) + random.below(64) + random.below(64) - 96);
    }
    return frames;
}

std::string make_template(const Channel &channel, int length)
{
    constexpr int Steim2 = 11;
    constexpr int Clock_Locked = 0x20;
    const int exponent = std::countr_zero(static_cast<unsigned>(length));
    return data_record_bytes({.quality = 'D',
                              .station = channel.station,
                              .location = channel.location,
                              .channel = channel.code,
                              .network = "XX",
                              .rate_factor = channel.rate,
                              .io_flags = Clock_Locked,
                              .length = length,
                              .b1000 = DataOnly{Steim2, 1, exponent},
                              .timing_quality = 100},
                             1);
}

bool slower(const Channel &a, const Channel &b) { return a.rate < b.rate; }

} // namespace

DataMaker::DataMaker(std::vector<Channel> channels, int length, int per_round, int sharing)
    : channels_(std::move(channels)), length_(length), per_round_(per_round), sharing_(sharing)
{
    constexpr std::size_t Frames = 65536;
    frames_ = make_frames(Frames);
    for (const Channel &channel : channels_)
        templates_.push_back(make_template(channel, length));
}

int DataMaker::samples(int channel, int record) const
{
    const int mean = (length_ / Frame - 1) * Samples_Per_Frame;
    const auto index = static_cast<std::size_t>(channel + record) % Deviations.size();
    return mean + Deviations[index] * (length_ / 512);
}

Ticks DataMaker::round_length(const Channel &channel) const
{
    const Ticks count = Ticks{per_round_} * (length_ / Frame - 1) * Samples_Per_Frame;
    return count * (Ticks_Per_Second / channel.rate);
}

Ticks DataMaker::shortest_round() const
{
    return round_length(*std::max_element(channels_.begin(), channels_.end(), slower));
}

Ticks DataMaker::longest_round() const
{
    return round_length(*std::min_element(channels_.begin(), channels_.end(), slower));
}

Ticks DataMaker::record_time(int channel, int round, int record) const
{
    Ticks count = 0;
    for (int i = record / 8 * 8; i < record; i++)
        count += samples(channel, i);
    count += Ticks{record / 8} * 8 * (length_ / Frame - 1) * Samples_Per_Frame;
    return Data_Begin + round * round_length(channels_[channel]) +
           count * (Ticks_Per_Second / channels_[channel].rate);
}

std::int64_t DataMaker::position(int channel, int round, int record) const
{
    const auto channels = static_cast<std::int64_t>(channels_.size());
    return round % 2 == 0 ? std::int64_t{channel} * per_round_ + record
                          : record * channels + channel;
}

std::vector<B074> DataMaker::index(int first, int last, std::int64_t seq) const
{
    const auto mark = [&](int channel, int round, int record) {
        const std::int64_t at =
            (round - first) * records_per_round() + position(channel, round, record);
        return Repeat{seed_time(record_time(channel, round, record)), wrapped(seq + at / sharing_),
                      static_cast<int>(at % sharing_) + 1};
    };
    std::vector<B074> entries;
    entries.reserve(channels_.size());
    for (int i = 0; i < static_cast<int>(channels_.size()); i++)
        entries.push_back({.station = channels_[i].station,
                           .location = channels_[i].location,
                           .channel = channels_[i].code,
                           .first = mark(i, first, 0),
                           .last = mark(i, last, per_round_ - 1)});
    return entries;
}

std::int64_t DataMaker::write_round(std::FILE *to, int round, std::int64_t seq, std::int64_t most)
{
    const auto channels = static_cast<int>(channels_.size());
    const std::int64_t count = std::min(records_per_round(), most);
    for (std::int64_t i = 0; i < count; i++) {
        const auto by_channel = static_cast<int>(i / per_round_);
        const auto in_channel = static_cast<int>(i % per_round_);
        const auto in_turn = static_cast<int>(i % channels);
        const auto turn = static_cast<int>(i / channels);
        if (round % 2 == 0)
            write_record(to, by_channel, round, in_channel, seq + i / sharing_);
        else
            write_record(to, in_turn, round, turn, seq + i / sharing_);
    }
    return count;
}

void DataMaker::write_scattered(std::FILE *to, std::int64_t count)
{
    std::int64_t step = count * 5 / 8 + 1;
    while (std::gcd(step, count) != 1)
        ++step;
    const auto channels = static_cast<std::int64_t>(channels_.size());
    for (std::int64_t i = 0, at = 0; i < count; i++, at = (at + step) % count) {
        const auto in_channel = static_cast<int>(at / channels);
        write_record(to, static_cast<int>(at % channels), in_channel / per_round_,
                     in_channel % per_round_, i + 1);
    }
}

void DataMaker::write_record(std::FILE *to, int channel, int round, int record, std::int64_t seq)
{
    Random random(static_cast<std::uint64_t>(channel) << 40 |
                  static_cast<std::uint64_t>(round) << 16 | static_cast<std::uint64_t>(record));
    std::string &bytes = templates_[channel];
    put_sequence(&bytes, wrapped(seq));
    put_time(&bytes, record_time(channel, round, record));
    put_big_endian(&bytes, Sample_Count, samples(channel, record), 2);
    const bool unlocked = random.one_in(50);
    put_big_endian(&bytes, Clock_Flags, unlocked ? 0 : 0x20, 1);
    put_big_endian(&bytes, Quality_Flags, unlocked ? 0x80 : random.one_in(100), 1);
    put_big_endian(&bytes, Time_Correction, random.one_in(10) ? random.between(-300, 300) : 0, 4);
    put_big_endian(&bytes, Timing_Quality, unlocked ? random.below(60) : 100, 1);
    const std::size_t size = bytes.size() - Data_Begin_Offset;
    const std::size_t choices = (frames_.size() - size) / Frame;
    bytes.replace(Data_Begin_Offset, size, frames_, random.next() % choices * Frame, size);
    if (std::fwrite(bytes.data(), 1, bytes.size(), to) != bytes.size())
        throw std::runtime_error("cannot write the volume");
}
