#include "stationxml/carried.h"

#include "platform/format.h"
#include "platform/text.h"
#include "stationxml/elements.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <map>
#include <optional>
#include <quarl/time.h>
#include <unordered_map>
#include <utility>

namespace quarl
{

namespace
{

using Severity = CarryRemark::Severity;

constexpr std::string_view No_Network = "XX"; ///< for volumes that have no network codes
constexpr int Near = 16;                      ///< epochs that are compared with one

struct CodeHash {
    std::size_t operator()(const ChannelCode &code) const { return code.hash(); }
};

/// Where an epoch stands among those that were carried; indexes stay, pointers do not.
struct Place {
    std::size_t network;
    std::size_t station;
    std::size_t channel;
};
using Known = std::unordered_map<ChannelCode, std::multimap<double, Place>, CodeHash>;

class Carrier
{
public:
    Carrier(std::span<const NamedInventory> volumes, const CarryOptions &options)
        : volumes_(volumes), options_(options)
    {
    }

    std::vector<CarriedNetwork> carry()
    {
        for (std::size_t volume = 0; volume < volumes_.size(); ++volume)
            add_volume(volume, *volumes_[volume].inventory);
        return std::move(networks_);
    }

private:
    void add_volume(std::size_t volume, const Inventory &inventory);
    void add_station(CarriedStation station, std::vector<CarriedChannel> channels);
    void add_channel(const Place &at, CarriedChannel channel);
    std::size_t network_of(const CarriedStation &station);
    template <class Epoch> bool is_wanted(const Epoch &epoch, const ChannelCode &code) const
    {
        return !options_.select || options_.select(code, epoch.start, epoch.end);
    }
    template <class T, class At>
    std::optional<Place> find(const Known &known, const ChannelCode &code, const T &carried,
                              const At &at) const;
    template <class T, class At>
    void tell_contradiction(const Known &known, const ChannelCode &code, const T &carried,
                            const At &at) const;

    std::span<const NamedInventory> volumes_;
    const CarryOptions &options_;
    std::vector<CarriedNetwork> networks_;
    std::map<std::string, std::size_t, std::less<>> network_of_code_;
    Known stations_;
    Known channels_;
};

template <class Epoch> std::vector<CarriedComment> comments_of(const Inventory &in, const Epoch &of)
{
    std::vector<CarriedComment> all;
    for (const Comment &comment : of.comments)
        all.push_back({&in, &comment});
    return all;
}

/// Adds the comments of `from` that `to` has not.
void add_comments(std::vector<CarriedComment> *to, const std::vector<CarriedComment> &from)
{
    const auto key = [](const CarriedComment &each) {
        return std::make_tuple(each.comment->start, each.comment->end, text_of(each));
    };
    std::map<std::tuple<double, double, std::string>, int> known;
    for (const CarriedComment &each : *to)
        known.emplace(key(each), 0);
    for (const CarriedComment &each : from)
        if (known.emplace(key(each), 0).second)
            to->push_back(each);
}

/// An epoch of another volume that says the same.
template <class T, class At>
std::optional<Place> Carrier::find(const Known &known, const ChannelCode &code, const T &carried,
                                   const At &at) const
{
    const auto of_code = known.find(code);
    if (of_code == known.end())
        return std::nullopt;
    std::string text; // made when it is wanted
    auto [next, end] = of_code->second.equal_range(carried.epoch->start);
    for (int i = 0; next != end && i < Near; ++next, ++i) {
        const T &other = at(next->second);
        if (other.volume == carried.volume || other.epoch->end != carried.epoch->end)
            continue;
        if (text.empty())
            text = text_of(carried, options_);
        if (text_of(other, options_) == text)
            return next->second;
    }
    return std::nullopt;
}

std::string span_text(double start, double end)
{
    const std::string from = time_text(start);
    const std::string to = time_text(end);
    return (from.empty() ? "ever" : from) + " to " + (to.empty() ? "now" : to);
}

/// Of the epochs around, one of another volume that holds at the same time and says otherwise.
template <class T, class At>
void Carrier::tell_contradiction(const Known &known, const ChannelCode &code, const T &carried,
                                 const At &at) const
{
    const auto of_code = known.find(code);
    if (of_code == known.end())
        return;
    const auto &epochs = of_code->second;
    auto next = epochs.upper_bound(carried.epoch->start);
    for (int i = 0; i < Near && next != epochs.begin(); ++i)
        --next;
    for (int i = 0; i < 2 * Near && next != epochs.end(); ++next, ++i) {
        const T &other = at(next->second);
        if (other.volume == carried.volume || !(other.epoch->start < carried.epoch->end) ||
            !(carried.epoch->start < other.epoch->end))
            continue;
        const Teller tell(options_, carried);
        tell(Severity::warning, "contradiction",
             formatted<"the epoch of %s in %s contradicts that of %s in %s, record %ld: both are "
                       "written">(span_text(carried.epoch->start, carried.epoch->end),
                                  volumes_[carried.volume].name,
                                  span_text(other.epoch->start, other.epoch->end),
                                  volumes_[other.volume].name, other.epoch->record));
        return;
    }
}

std::size_t Carrier::network_of(const CarriedStation &station)
{
    const ChannelCode &code = station.inventory->station_of(*station.epoch).code;
    const DictionaryEntry *entry =
        station.inventory->entry(Dictionary::abbreviations, station.epoch->network_id);
    const std::string description(entry ? trimmed(entry->text) : std::string_view());
    const Teller tell(options_, station);
    if (!entry && station.epoch->network_id != 0)
        tell(Severity::warning, "abbreviation-undefined",
             formatted<"the description of the network, %d, is not defined">(
                 station.epoch->network_id));
    if (code.network().empty())
        tell(Severity::note, "network-missing",
             formatted<"there is no network code, '%s' is written">(No_Network));
    const std::string_view shown = code.network().empty() ? No_Network : code.network();
    const auto [known, is_new] = network_of_code_.try_emplace(std::string(shown), networks_.size());
    if (is_new)
        networks_.push_back({std::string(shown), description, {}});
    CarriedNetwork &network = networks_[known->second];
    if (network.description.empty())
        network.description = description;
    else if (!description.empty() && description != network.description)
        tell(Severity::warning, "contradiction",
             formatted<"network %s is '%s' and, in front of this, '%s', which is written">(
                 shown, description, network.description));
    return known->second;
}

void Carrier::add_channel(const Place &at, CarriedChannel channel)
{
    if (is_unfit(channel, options_))
        return;
    const ChannelCode &code = channel.inventory->channel_of(*channel.epoch).code;
    const auto carried_at = [this](const Place &place) -> CarriedChannel & {
        return networks_[place.network].stations[place.station].channels[place.channel];
    };
    if (volumes_.size() > 1) {
        if (const auto same = find(channels_, code, channel, carried_at)) {
            add_comments(&carried_at(*same).comments, channel.comments);
            return;
        }
        tell_contradiction(channels_, code, channel, carried_at);
    }
    auto &channels = networks_[at.network].stations[at.station].channels;
    if (volumes_.size() > 1)
        channels_[code].emplace(channel.epoch->start,
                                Place{at.network, at.station, channels.size()});
    channels.push_back(std::move(channel));
}

void Carrier::add_station(CarriedStation station, std::vector<CarriedChannel> channels)
{
    if (is_unfit(station, options_))
        return;
    const ChannelCode &code = station.inventory->station_of(*station.epoch).code;
    const auto carried_at = [this](const Place &place) -> CarriedStation & {
        return networks_[place.network].stations[place.station];
    };
    Place at{network_of(station), 0, 0};
    std::optional<Place> same;
    if (volumes_.size() > 1) {
        same = find(stations_, code, station, carried_at);
        if (!same)
            tell_contradiction(stations_, code, station, carried_at);
    }
    if (same) {
        at = *same;
        add_comments(&carried_at(at).comments, station.comments);
    } else {
        at.station = networks_[at.network].stations.size();
        if (volumes_.size() > 1)
            stations_[code].emplace(station.epoch->start, at);
        networks_[at.network].stations.push_back(std::move(station));
    }
    for (CarriedChannel &channel : channels)
        add_channel(at, std::move(channel));
}

void Carrier::add_volume(std::size_t volume, const Inventory &inventory)
{
    const auto &epochs = inventory.channel_epochs();
    auto next = epochs.begin(); // they stand in the order of their stations
    for (std::size_t i = 0; i < inventory.station_epochs().size(); ++i) {
        std::vector<CarriedChannel> channels;
        for (; next != epochs.end() && next->station_epoch == i; ++next)
            if (is_wanted(*next, inventory.channel_of(*next).code))
                channels.push_back({volume, &inventory, &*next, comments_of(inventory, *next)});
        const StationEpoch &epoch = inventory.station_epochs()[i];
        if (!channels.empty() || is_wanted(epoch, inventory.station_of(epoch).code))
            add_station({volume, &inventory, &epoch, comments_of(inventory, epoch), {}},
                        std::move(channels));
    }
}

} // namespace

std::vector<CarriedNetwork> carried(std::span<const NamedInventory> volumes,
                                    const CarryOptions &options)
{
    return Carrier(volumes, options).carry();
}

} // namespace quarl
