// Channel epochs by code and time.
#pragma once

#include "platform/containers.h"

#include <atomic>
#include <cstddef>
#include <deque>
#include <mutex>
#include <quarl/contents.h>

namespace quarl
{

/// The channel epochs of an inventory, as data look them up. Many volumes hold no data: epochs get
/// into the table when somebody asks.
class EpochTable
{
public:
    EpochTable(const std::deque<Channel> &channels, const std::deque<ChannelEpoch> &epochs)
        : channels_(channels), epochs_(epochs)
    {
    }

    /// The epoch that describes a channel at a time; null when there is none. Subchannels count as
    /// one; a missing network code fits any. Threads may ask at the same time.
    [[nodiscard]] const ChannelEpoch *find(const ChannelCode &code, double time) const;
    /// The same for one thread alone: remembers what was found, which is faster.
    [[nodiscard]] const ChannelEpoch *find(const ChannelCode &code, double time);

private:
    struct CodeHash {
        std::size_t operator()(const ChannelCode &code) const { return code.hash(); }
    };
    struct EpochSpan {
        ChannelCode key;
        double start = 0.0;
        double end = 0.0;
        const ChannelEpoch *epoch = nullptr;

        [[nodiscard]] const ChannelCode &code() const { return key; }
    };
    using Spans = Stbl<EpochSpan, ChannelCode, CodeHash>;

    void list() const;
    template <class Table>
    const ChannelEpoch *find_in(Table &spans, const ChannelCode &code, double time) const;

    const std::deque<Channel> &channels_;
    const std::deque<ChannelEpoch> &epochs_;
    mutable Spans spans_;
    mutable std::mutex listing_;                  ///< held while epochs get into it
    mutable std::atomic<std::size_t> listed_ = 0; ///< those that are in it
};

} // namespace quarl
