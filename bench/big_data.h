// Data records of big volumes: of many channels, in rounds of equal length.
#pragma once

#include "big_headers.h"

#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

/// Every channel has `per_round` records in each round; even rounds hold them channel by channel,
/// odd ones in turn. Within a channel a record begins where the one before it ends.
class DataMaker
{
public:
    /// `length`: bytes of a record; `sharing`: records that share a sequence number.
    DataMaker(std::vector<Channel> channels, int length, int per_round, int sharing);

    [[nodiscard]] std::int64_t records_per_round() const
    {
        return static_cast<std::int64_t>(channels_.size()) * per_round_;
    }
    /// Where the channel's records of the rounds `first` to `last` begin and end, the first record
    /// of round `first` being at `position` of sequence number `seq`.
    [[nodiscard]] std::vector<B074> index(int first, int last, std::int64_t seq) const;
    /// Length of a round in the channel of the highest and of the lowest sample rate.
    [[nodiscard]] Ticks shortest_round() const;
    [[nodiscard]] Ticks longest_round() const;
    /// Writes a round, at most `most` records of it; the first one has sequence number `seq`.
    /// Returns how many were written.
    std::int64_t write_round(std::FILE *to, int round, std::int64_t seq, std::int64_t most);
    /// Writes `count` records that a program sees in no order: each channel's come in steps of
    /// some three fifths of all there are.
    void write_scattered(std::FILE *to, std::int64_t count);

private:
    [[nodiscard]] Ticks round_length(const Channel &channel) const;
    [[nodiscard]] Ticks record_time(int channel, int round, int record) const;
    [[nodiscard]] int samples(int channel, int record) const;
    [[nodiscard]] std::int64_t position(int channel, int round, int record) const;
    void write_record(std::FILE *to, int channel, int round, int record, std::int64_t seq);

    std::vector<Channel> channels_;
    int length_;
    int per_round_;
    int sharing_;
    std::vector<std::string> templates_; ///< a record of each channel
    std::string frames_;                 ///< compressed samples to choose from
};
