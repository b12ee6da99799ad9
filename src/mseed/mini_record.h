// Data records as plain miniSEED.
#pragma once

#include <cstddef>
#include <quarl/item.h>
#include <quarl/samples.h>
#include <quarl/time.h>
#include <string>
#include <string_view>

namespace quarl::mseed
{

/// Makes miniSEED of the data records of volumes, one after the other.
///
/// One with a Blockette 1000 goes over as it is. Another gets one, by the data format that the
/// channel dictionary or the database names: as the first of its blockettes where they and the data
/// leave room for it, else behind data that move, into the record's own fill or into a record of
/// twice the length. Its samples are the same.
class MiniRecordMaker
{
public:
    /// The record until the next one is made; empty, and `fault` says why, when it cannot be
    /// miniSEED.
    std::string_view make(const Item &item, const blk_dh_t &header);
    [[nodiscard]] const std::string &fault() const { return fault_; }

    /// When the record begins that was made last.
    [[nodiscard]] Time start() const { return start_; }
    /// Whether its Blockette 1000 was added or mended.
    [[nodiscard]] bool completed() const { return completed_; }

private:
    [[nodiscard]] std::string_view refuse(std::string fault);
    std::string_view add_1000(const Item &item, const blk_dh_t &header);
    [[nodiscard]] bool has_same_samples(const blk_dh_t &header, const Samples &samples);

    std::string record_;
    std::string longer_;
    std::string fault_;
    Time start_{};
    bool completed_ = false;
    SampleBuffer samples_;
    SampleBuffer copied_;
};

/// Writes a sequence number from 1 on into a record; behind the largest comes 1.
void put_sequence_number(std::string *record, std::int64_t number);

} // namespace quarl::mseed
