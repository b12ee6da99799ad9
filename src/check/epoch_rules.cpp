// Epochs of stations and channels.
#include "check/rule.h"

#include <algorithm>
#include <vector>

namespace quarl
{

namespace
{

std::string span_text(double start, double end)
{
    return shown_time(start) + " to " + shown_time(end);
}

void station_epoch(const Context &context, const Station &station, const Report &report)
{
    for (const std::size_t index : station.epochs) {
        const StationEpoch &epoch = context.inventory.station_epochs()[index];
        if (!(epoch.start < epoch.end))
            report(epoch.record, station.code.text(), [&] {
                return Told{subject_of(context.inventory, epoch),
                            "an epoch of " + span_text(epoch.start, epoch.end) +
                                " does not start before it ends"};
            });
    }
}

void channel_epoch(const Context &context, const Channel &channel, const Report &report)
{
    for (const std::size_t index : channel.epochs) {
        const ChannelEpoch &epoch = context.inventory.channel_epochs()[index];
        if (!(epoch.start < epoch.end))
            report(epoch.record, channel.code.text(), [&] {
                return Told{subject_of(context.inventory, epoch),
                            "an epoch of " + span_text(epoch.start, epoch.end) +
                                " does not start before it ends"};
            });
    }
}

/// Pointers to the epochs of a station or channel in order of their starts.
template <class Epoch>
std::vector<const Epoch *> in_order(const std::vector<std::size_t> &indexes,
                                    const std::deque<Epoch> &epochs)
{
    std::vector<const Epoch *> sorted;
    sorted.reserve(indexes.size());
    for (const std::size_t index : indexes)
        sorted.push_back(&epochs[index]);
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](const Epoch *a, const Epoch *b) { return a->start < b->start; });
    return sorted;
}

template <class Epoch> std::string overlap_text(const Epoch &epoch, const Epoch &last)
{
    const std::string text = "the epoch of " + span_text(epoch.start, epoch.end);
    if (epoch.start != last.start || epoch.end != last.end)
        return text + " overlaps that of " + span_text(last.start, last.end);
    if (epoch.record == last.record)
        return text + " is there twice, in record " + std::to_string(epoch.record);
    return text + " is there twice, records " +
           std::to_string(std::min(epoch.record, last.record)) + " and " +
           std::to_string(std::max(epoch.record, last.record));
}

template <class Epoch>
void find_overlaps(const Subject &subject, const std::vector<const Epoch *> &epochs,
                   const Report &report)
{
    const Epoch *last = nullptr; ///< the one that ends last of those before
    for (const Epoch *epoch : epochs) {
        if (!(epoch->start < epoch->end))
            continue;
        if (last && epoch->start < last->end)
            report(std::max(epoch->record, last->record), text_of(subject, 0), [&] {
                return Told{subject, overlap_text(*epoch, *last)};
            });
        if (!last || epoch->end > last->end)
            last = epoch;
    }
}

void station_epoch_overlap(const Context &context, const Station &station, const Report &report)
{
    find_overlaps(about::Station{station.code},
                  in_order(station.epochs, context.inventory.station_epochs()), report);
}

void channel_epoch_overlap(const Context &context, const Channel &channel, const Report &report)
{
    find_overlaps(about::Channel{channel.code},
                  in_order(channel.epochs, context.inventory.channel_epochs()), report);
}

struct Covered {
    double start;
    double end;
};

/// The times of a station, epochs joined that follow each other: up to 23:59:59 is to midnight.
std::vector<Covered> times_of(const Context &context, const Station &station)
{
    constexpr double Second = 1.0;
    std::vector<Covered> times;
    for (const StationEpoch *epoch : in_order(station.epochs, context.inventory.station_epochs())) {
        if (times.empty() || epoch->start > times.back().end + Second)
            times.push_back({epoch->start, epoch->end});
        else
            times.back().end = std::max(times.back().end, epoch->end);
    }
    return times;
}

void channel_outside_station(const Context &context, const Station &station, const Report &report)
{
    const std::vector<Covered> times = times_of(context, station);
    for (const std::size_t channel : station.channels) {
        for (const std::size_t index : context.inventory.channels()[channel].epochs) {
            const ChannelEpoch &epoch = context.inventory.channel_epochs()[index];
            if (!(epoch.start < epoch.end))
                continue;
            const auto next = std::upper_bound(
                times.begin(), times.end(), epoch.start,
                [](double start, const Covered &covered) { return start < covered.start; });
            if (next != times.begin() && epoch.end <= std::prev(next)->end)
                continue;
            const Covered &near = next == times.begin() ? times.front() : *std::prev(next);
            report(epoch.record, context.inventory.channels()[channel].code.text(), [&] {
                return Told{subject_of(context.inventory, epoch),
                            "an epoch of " + span_text(epoch.start, epoch.end) +
                                ", its station's is of " + span_text(near.start, near.end),
                            "outside"};
            });
        }
    }
}

constexpr std::array Rules = {
    Rule{"station-epoch", Severity::error, "a station epoch starts before it ends", "epochs",
         Look<Station>(station_epoch)},
    Rule{"channel-epoch", Severity::error, "a channel epoch starts before it ends", "epochs",
         Look<Channel>(channel_epoch)},
    Rule{"station-epoch-overlap", Severity::error, "epochs of one station do not overlap", "epochs",
         Look<Station>(station_epoch_overlap)},
    Rule{"channel-epoch-overlap", Severity::error, "epochs of one channel do not overlap", "epochs",
         Look<Channel>(channel_epoch_overlap)},
    Rule{"channel-outside-station", Severity::error,
         "a channel epoch lies within the epochs of its station", "epochs",
         Look<Station>(channel_outside_station)},
};

} // namespace

std::span<const Rule> epoch_rules() { return Rules; }

} // namespace quarl
