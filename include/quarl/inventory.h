// What a SEED volume describes, and what it holds: dictionaries, stations and channels with their
// epochs, responses, indexes, and for each channel the spans of time that its data cover.
//
//     quarl::Inventory inventory;
//     quarl::Volume volume("archive.seed");
//     for (const quarl::Item &item : volume) {
//         inventory.add(item);
//         if (!item.get<quarl::FileEnd>())
//             continue; // on a tape, another file may follow
//         for (const quarl::ChannelEpoch &epoch : inventory.channel_epochs())
//             std::puts(inventory.channel_of(epoch).code.text().c_str());
//     }
//
// Memory goes with what the headers say and with the number of spans, not with the number of data
// records, which may come in any order. Times are seconds since 1970-01-01 00:00 UTC.
#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <quarl/contents.h>
#include <quarl/item.h>
#include <string_view>
#include <vector>

namespace quarl
{

/// One volume, or input file, as far as its items were added. Everything stands in volume order,
/// and nothing moves in memory while more is added. While nothing is, threads may look at it at the
/// same time. One that was moved from may be added to, assigned to and destroyed.
class Inventory
{
public:
    Inventory();
    Inventory(Inventory &&) noexcept;
    Inventory &operator=(Inventory &&) noexcept;
    ~Inventory();

    /// Takes what is of use from an item, whatever its type. FileEnd finishes. The first item
    /// behind that starts anew: what was there of the file before is gone.
    void add(const Item &item);
    /// Names the units of all responses as the dictionary has them in the end, and joins the data
    /// spans. Of no use before: `ChannelEpoch::response` and `DataChannel::spans`.
    void finish();

    [[nodiscard]] const VolumeIdentifier &volume() const;
    [[nodiscard]] const std::deque<Station> &stations() const;
    [[nodiscard]] const std::deque<StationEpoch> &station_epochs() const;
    [[nodiscard]] const std::deque<Channel> &channels() const;
    [[nodiscard]] const std::deque<ChannelEpoch> &channel_epochs() const;
    [[nodiscard]] const std::deque<DataChannel> &data_channels() const;

    [[nodiscard]] const Channel &channel_of(const ChannelEpoch &epoch) const;
    [[nodiscard]] const Station &station_of(const StationEpoch &epoch) const;

    /// The channel epoch that the item added last, or `finish`, has ended; null when there is none.
    /// Its response is there, as the dictionaries have it so far, unless it refers to one of them
    /// (060).
    [[nodiscard]] const ChannelEpoch *ended_epoch() const;
    /// Gives up the response of that epoch, for who has looked at it and needs no other's memory.
    void forget_ended_response();

    /// The entry under `code`; null when it is not defined.
    [[nodiscard]] const DictionaryEntry *entry(Dictionary dictionary, int code) const;
    /// The name of a unit; "" when it is not defined.
    [[nodiscard]] std::string_view unit(int code) const;
    /// One per code, the first.
    [[nodiscard]] const std::vector<Redefinition> &redefinitions() const;

    [[nodiscard]] const std::vector<StationIndexEntry> &station_index() const;
    [[nodiscard]] const std::vector<SpanIndexEntry> &span_index() const;
    [[nodiscard]] const std::vector<SeriesIndexEntry> &series_index() const;
    [[nodiscard]] const std::vector<TimeSpanHeader> &time_spans() const;

    /// The channel of the data record that was added last; null before the first.
    [[nodiscard]] const DataChannel *data_channel() const;
    /// The epoch that describes the channel at the start of that record; null when there is none.
    [[nodiscard]] const ChannelEpoch *data_epoch() const;
    /// The epoch that describes a channel at a time, of those that were added; null when there is
    /// none. Subchannels count as one; a missing network code fits any.
    [[nodiscard]] const ChannelEpoch *epoch_at(const DataChannel &channel, double time) const;
    /// Data records whose headers hold no calendar time; they are in no span.
    [[nodiscard]] std::int64_t timeless_records() const;

private:
    struct Work;
    std::unique_ptr<Work> work_;
};

} // namespace quarl
