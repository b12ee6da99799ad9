#include "html/volume_read.h"

#include "blockette/sdblknam.h"
#include "check/rule.h"
#include "platform/text.h"

#include <algorithm>
#include <quarl/samples.h>

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

struct HashOfCode {
    std::size_t operator()(const ChannelCode &code) const { return code.hash(); }
};
using ChannelByCode = std::unordered_map<ChannelCode, std::size_t, HashOfCode>;

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

bool is_blank(std::string_view bytes, std::size_t at, std::size_t size)
{
    return at >= bytes.size() ||
           bytes.substr(at, size).find_first_not_of(' ') == std::string_view::npos;
}

/// Whether a blockette of a station or channel gives latitude and longitude.
bool is_placed(const Item &item)
{
    constexpr std::size_t Station_Position = 12;
    constexpr std::size_t Comment = 19; // of a channel, in front of two units
    constexpr std::size_t Latitude = 10;
    constexpr std::size_t Longitude = 11;
    const std::string_view bytes = item.bytes();
    std::size_t at = Station_Position;
    if (item.type() == blk_052_t::Number) {
        at = bytes.find('~', std::min(Comment, bytes.size()));
        if (at == std::string_view::npos)
            return false;
        at += 7;
    }
    return !is_blank(bytes, at, Latitude) && !is_blank(bytes, at + Latitude, Longitude);
}

template <class List, class Value> void note(List *list, const Value &value)
{
    constexpr std::size_t Most = 8;
    if (list->size() < Most && std::find(list->begin(), list->end(), value) == list->end())
        list->push_back(value);
}

std::string format_of(const blk_dh_t &header)
{
    if (header.encoding < 0)
        return std::string(trimmed(header.format));
    const std::string_view name = name_of(Encoding{header.encoding});
    return name.empty() ? "encoding " + std::to_string(header.encoding) : std::string(name);
}

} // namespace

void Records::look(const Item &item, const blk_dh_t &header)
{
    const ChannelCode code(header.network_code, header.stn_id, header.loc_id, header.chan_id);
    if (!last_look_ || last_look_->first != code)
        last_look_ = &*looks.try_emplace(code).first;
    Look &look = last_look_->second;
    if (std::string format = format_of(header); !format.empty())
        note(&look.formats, format);
    note(&look.qualities, header.quality_indicator);
    const double exact = item.data_blockettes().refinement().sample_rate;
    note(&look.rates, exact > 0.0 ? exact : header.samp_rate);
}

void Records::add(const Item &item)
{
    if (const auto *header = item.get<blk_dh_t>()) {
        look(item, *header);
        return;
    }
    if (item.get<blk_050_t>())
        station_placed.push_back(is_placed(item));
    if (item.get<blk_052_t>() && !stations.empty())
        channel_placed.push_back(is_placed(item));
    if (const auto *volume = item.get<blk_010_t>(); volume && !identifier)
        identifier = *volume;
    keep(item, &stations);
    if (!stations.empty()) // the inventory has no channel in front of the first station
        keep(item, &channels);
    if (item.type() >= 30 && item.type() < 50)
        std::apply([&](auto &...kept) { (keep(item, &kept), ...); }, dictionaries);
}

void ChannelData::add(const DataChannel &channel, const Records &kept)
{
    if (const auto found = kept.looks.find(channel.code); found != kept.looks.end()) {
        for (const std::string &format : found->second.formats)
            note(&look.formats, format);
        for (const char quality : found->second.qualities)
            note(&look.qualities, quality);
        for (const double rate : found->second.rates)
            note(&look.rates, rate);
    }
    codes.push_back(channel.code);
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

Shares shares_of(const Statistics &statistics)
{
    // What is counted goes by stated lengths, which may be beyond what there is.
    Shares shares;
    shares.data = std::clamp<std::int64_t>(statistics.data, 0, statistics.bytes);
    shares.parameters =
        std::clamp<std::int64_t>(statistics.parameters, 0, statistics.bytes - shares.data);
    shares.waste = statistics.bytes - shares.data - shares.parameters;
    return shares;
}

bool holds_nothing(const VolumeRead &volume)
{
    const Inventory &inventory = volume.inventory;
    return !volume.records.identifier && inventory.stations().empty() &&
           inventory.data_channels().empty() && volume.statistics.parameters <= 0 &&
           volume.statistics.data <= 0;
}

std::vector<PageChannel> page_channels(const VolumeRead &volume)
{
    const Inventory &inventory = volume.inventory;
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
        channels[found == described.end() ? channels.size() - 1 : found->second].data.add(
            data, volume.records);
    }
    for (PageChannel &channel : channels)
        channel.data.put_in_order();
    return channels;
}

Targets::Targets(const Inventory &inventory, const std::vector<PageChannel> &channels)
    : inventory_(inventory), channels_(channels)
{
    for (std::size_t i = 0; i < inventory.stations().size(); ++i)
        stations_.try_emplace(inventory.stations()[i].code, i);
    for (std::size_t i = 0; i < channels.size(); ++i)
        by_code_.try_emplace(channels[i].code, i);
}

Target Targets::find(const Subject &subject) const
{
    Target target;
    if (const auto *epoch = std::get_if<about::Epoch>(&subject)) {
        const ChannelEpoch &described = inventory_.channel_epochs()[epoch->index];
        return {inventory_.channel_of(described).station, described.channel, epoch->index};
    }
    if (const auto *channel = std::get_if<about::Channel>(&subject)) {
        const auto found = by_code_.find(channel->code);
        if (found == by_code_.end())
            return target;
        target.channel = found->second;
        if (const Channel *described = channels_[found->second].described)
            target.station = described->station;
    } else if (const auto *station = std::get_if<about::Station>(&subject)) {
        const auto found = stations_.find(station->code);
        if (found != stations_.end())
            target.station = found->second;
    }
    return target;
}

} // namespace quarl::html
