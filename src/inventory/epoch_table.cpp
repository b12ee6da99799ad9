#include "inventory/epoch_table.h"

#include <string_view>
#include <utility>

namespace quarl
{

/// Puts the epochs that came since the last time into the table.
void EpochTable::list() const
{
    if (listed_.load(std::memory_order_acquire) == epochs_.size())
        return;
    const std::scoped_lock lock(listing_);
    for (std::size_t i = listed_.load(std::memory_order_relaxed); i < epochs_.size(); ++i) {
        const ChannelEpoch &epoch = epochs_[i];
        const ChannelCode &code = channels_[epoch.channel].code;
        const auto add = [&](std::string_view network) {
            spans_.add({ChannelCode(network, code.station(), code.location(), code.channel()),
                        epoch.start, epoch.end, &epoch});
        };
        add(code.network());
        if (!code.network().empty())
            add({}); // for data without a network code
    }
    listed_.store(epochs_.size(), std::memory_order_release);
}

template <class Table>
const ChannelEpoch *EpochTable::find_in(Table &spans, const ChannelCode &code, double time) const
{
    if (epochs_.empty())
        return nullptr;
    list();
    if (const EpochSpan *found = spans.find(code, time))
        return found->epoch;
    const EpochSpan *any =
        spans.find(ChannelCode({}, code.station(), code.location(), code.channel()), time);
    const auto is_nameless = [&] { return channels_[any->epoch->channel].code.network().empty(); };
    return any && (code.network().empty() || is_nameless()) ? any->epoch : nullptr;
}

const ChannelEpoch *EpochTable::find(const ChannelCode &code, double time) const
{
    return find_in(std::as_const(spans_), code, time);
}

const ChannelEpoch *EpochTable::find(const ChannelCode &code, double time)
{
    return find_in(spans_, code, time);
}

} // namespace quarl
