#include "html/volume_read.h"

#include "blockette/sdblknam.h"
#include "check/rule.h"
#include "platform/text.h"

#include <algorithm>

namespace quarl::html
{

namespace
{

template <class T> void keep(const Item &item, std::deque<T> *kept)
{
    if (const T *record = item.get<T>())
        kept->push_back(*record);
}

/// Decoder keys are large, and many may be promised where none are.
void keep(const Item &item, std::deque<blk_030_t> *kept)
{
    const auto *record = item.get<blk_030_t>();
    if (!record)
        return;
    blk_030_t &copy = kept->emplace_back(*record);
    copy.num_keys = record->num_keys_held;
    copy.decode_key = {record->decode_key.begin(), record->decode_key.begin() + copy.num_keys};
}

/// The code of a channel as its data state it: without a subchannel.
ChannelCode of_data(const ChannelCode &code, std::string_view network)
{
    return {network, code.station(), code.location(), code.channel()};
}

struct CodeHash {
    std::size_t operator()(const ChannelCode &code) const { return code.hash(); }
};
using ChannelByCode = std::unordered_map<ChannelCode, std::size_t, CodeHash>;

ChannelByCode channels_by_code(const std::vector<PageChannel> &channels)
{
    ChannelByCode found;
    for (std::size_t i = 0; i < channels.size(); ++i) {
        const ChannelCode &code = channels[i].code;
        found.try_emplace(of_data(code, code.network()), i);
    }
    // A missing network code fits any.
    for (std::size_t i = 0; i < channels.size(); ++i)
        found.try_emplace(of_data(channels[i].code, {}), i);
    return found;
}

} // namespace

void Records::add(const Item &item)
{
    if (const auto *volume = item.get<blk_010_t>(); volume && !identifier)
        identifier = *volume;
    keep(item, &stations);
    if (!stations.empty()) // the inventory has no channel in front of the first station
        keep(item, &channels);
    if (item.type() >= 30 && item.type() < 50)
        std::apply([&](auto &...kept) { (keep(item, &kept), ...); }, dictionaries);
}

void ChannelData::add(const DataChannel &channel)
{
    records += channel.records;
    samples += channel.samples;
    spans.insert(spans.end(), channel.spans.begin(), channel.spans.end());
    overlaps.insert(overlaps.end(), channel.overlapping.begin(), channel.overlapping.end());
}

void ChannelData::put_in_order()
{
    const auto earlier = [](const auto &a, const auto &b) { return a.start < b.start; };
    const auto sort = [&](auto *all) {
        if (!std::is_sorted(all->begin(), all->end(), earlier))
            std::stable_sort(all->begin(), all->end(), earlier);
    };
    sort(&spans);
    sort(&overlaps);
}

std::int64_t record_length(const VolumeRead &volume)
{
    if (volume.inventory.volume().record != 0)
        return volume.inventory.volume().record_length;
    const Statistics &statistics = volume.statistics;
    return statistics.records > 0 ? statistics.bytes / statistics.records : 0;
}

std::vector<Statistics::Type> types_by_size(const Statistics &statistics)
{
    std::vector<Statistics::Type> types = statistics.types;
    std::stable_sort(types.begin(), types.end(),
                     [](const auto &a, const auto &b) { return a.bytes > b.bytes; });
    return types;
}

std::string_view name_of(const Statistics::Type &type)
{
    if (type.type == Data_Record)
        return "data records";
    const Sdinfo *row = find_sdinfo(type.type);
    return row ? trimmed(row->name) : std::string_view();
}

std::vector<PageChannel> page_channels(const Inventory &inventory)
{
    std::vector<PageChannel> channels;
    for (const Channel &channel : inventory.channels())
        channels.push_back({channel.code, &channel, {}});
    const ChannelByCode described = channels_by_code(channels);
    for (const DataChannel &data : inventory.data_channels()) {
        auto found = described.find(data.code);
        if (found == described.end()) { // a header without a network fits any data
            found = described.find(of_data(data.code, {}));
            if (found != described.end() && !channels[found->second].code.network().empty() &&
                !data.code.network().empty())
                found = described.end();
        }
        if (found == described.end())
            channels.push_back({data.code, nullptr, {}});
        channels[found == described.end() ? channels.size() - 1 : found->second].data.add(data);
    }
    for (PageChannel &channel : channels)
        channel.data.put_in_order();
    return channels;
}

Targets::Targets(const Inventory &inventory, const std::vector<PageChannel> &channels)
{
    for (std::size_t i = 0; i < inventory.stations().size(); ++i)
        by_name_.try_emplace(inventory.stations()[i].code.text(), Target{i, {}, {}});
    for (std::size_t i = 0; i < channels.size(); ++i) {
        Target target{{}, i, {}};
        if (channels[i].described)
            target.station = channels[i].described->station;
        by_name_.try_emplace(channels[i].code.text(), target);
    }
    for (std::size_t i = 0; i < inventory.channel_epochs().size(); ++i) {
        const ChannelEpoch &epoch = inventory.channel_epochs()[i];
        by_name_.try_emplace(subject_of(inventory, epoch),
                             Target{inventory.channel_of(epoch).station, epoch.channel, i});
    }
}

Target Targets::find(std::string_view subject) const
{
    const auto named = [this](std::string_view name) { return by_name_.find(std::string(name)); };
    auto found = named(subject);
    if (found == by_name_.end())
        found = named(subject.substr(0, subject.rfind(' '))); // without a time
    return found == by_name_.end() ? Target() : found->second;
}

} // namespace quarl::html
