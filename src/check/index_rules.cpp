// What the volume says of itself: its times and its indexes.
#include "check/rule.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <unordered_map>
#include <utility>
#include <vector>

namespace quarl
{

namespace
{

std::string span_text(double start, double end)
{
    return shown_time(start) + " to " + shown_time(end);
}

bool touches(const VolumeIdentifier &volume, double start, double end)
{
    return start <= volume.end && end >= volume.start;
}

std::string outside(const VolumeIdentifier &volume, const char *what, double start, double end)
{
    return std::string(what) + " of " + span_text(start, end) + ", the volume is of " +
           span_text(volume.start, volume.end);
}

void data_in_volume(const Context &context, const DataChannel &channel, const Report &report)
{
    const VolumeIdentifier &volume = context.inventory.volume();
    if (volume.record == 0 || channel.spans.empty())
        return;
    const double start = channel.spans.front().start;
    const double end = channel.spans.back().end;
    const double sample = 1 / channel.rate;
    if (start >= volume.start - sample && end <= volume.end + 2 * sample)
        return;
    report(channel.first_record, channel.code.text(), outside(volume, "data", start, end));
}

void station_touches_volume(const Context &context, const Station &station, const Report &report)
{
    const VolumeIdentifier &volume = context.inventory.volume();
    for (const std::size_t index : station.epochs) {
        const StationEpoch &epoch = context.inventory.station_epochs()[index];
        if (volume.record != 0 && !touches(volume, epoch.start, epoch.end))
            report(epoch.record, station.code.text(), [&] {
                return Told{station.code.text(),
                            outside(volume, "a station epoch", epoch.start, epoch.end)};
            });
    }
}

void epochs_touch_volume(const Context &context, const Context &, const Report &report)
{
    const Inventory &inventory = context.inventory;
    const VolumeIdentifier &volume = inventory.volume();
    for (const Station &station : inventory.stations())
        station_touches_volume(context, station, report);
    for (const ChannelEpoch &epoch : inventory.channel_epochs())
        if (volume.record != 0 && !touches(volume, epoch.start, epoch.end))
            report(epoch.record, inventory.channel_of(epoch).code.text(), [&] {
                return Told{subject_of(inventory, epoch),
                            outside(volume, "a channel epoch", epoch.start, epoch.end)};
            });
}

using Begins = std::set<std::pair<std::string_view, int>>; ///< station and sequence number

void entries_lead_to_stations(const Context &context, const Begins &begins, const Report &report)
{
    std::unordered_map<std::string_view, int> first;
    for (const StationEpoch &epoch : context.inventory.station_epochs())
        first.try_emplace(context.inventory.station_of(epoch).code.station(),
                          epoch.sequence_number);
    for (const StationIndexEntry &entry : context.inventory.station_index()) {
        if (begins.contains({entry.station, entry.sequence_number}))
            continue;
        const auto station = first.find(entry.station);
        report(entry.record, entry.station, [&] {
            std::string text =
                "the station index points to record " + std::to_string(entry.sequence_number);
            text += station == first.end()
                        ? ", the volume has no such station"
                        : ", its header begins in record " + std::to_string(station->second);
            return Told{"station " + quoted(entry.station), text};
        });
    }
}

void station_index(const Context &context, const Context &, const Report &report)
{
    const Inventory &inventory = context.inventory;
    Begins begins;
    for (const StationEpoch &epoch : inventory.station_epochs())
        begins.emplace(inventory.station_of(epoch).code.station(), epoch.sequence_number);
    entries_lead_to_stations(context, begins, report);
    std::set<std::string_view> named;
    for (const StationIndexEntry &entry : inventory.station_index())
        named.insert(entry.station);
    if (inventory.volume().record == 0)
        return;
    for (const Station &station : inventory.stations())
        if (!named.contains(station.code.station()))
            report(inventory.station_epochs()[station.epochs.front()].record, "missing", [&] {
                return Told{station.code.text(), "is not in the station index (011), which has " +
                                                     std::to_string(named.size()) + " stations"};
            });
}

/// The time span headers that begin in records of one number.
struct SpansAt {
    std::vector<double> starts; ///< in order
    const TimeSpanHeader *last = nullptr;

    /// One of them starts at `time`, but for a tick.
    [[nodiscard]] bool has(double time) const
    {
        constexpr double Tick = 0.0001;
        const auto near = std::partition_point(starts.begin(), starts.end(),
                                               [&](double start) { return time - start > Tick; });
        return near != starts.end() && *near - time <= Tick;
    }
};

std::unordered_map<int, SpansAt> spans_by_number(const std::vector<TimeSpanHeader> &spans)
{
    std::unordered_map<int, SpansAt> by_number;
    for (const TimeSpanHeader &span : spans) {
        SpansAt &at = by_number[span.sequence_number];
        at.last = &span;
        if (!std::isnan(span.start))
            at.starts.push_back(span.start);
    }
    for (auto &[number, at] : by_number)
        std::sort(at.starts.begin(), at.starts.end());
    return by_number;
}

void span_index(const Context &context, const Context &, const Report &report)
{
    const auto by_number = spans_by_number(context.inventory.time_spans());
    for (const SpanIndexEntry &entry : context.inventory.span_index()) {
        const auto at = by_number.find(entry.sequence_number);
        const bool none = at == by_number.end();
        if (!none && at->second.has(entry.start))
            continue;
        report(entry.record, none ? "none" : "other", [&] {
            std::string text = "the index points to record " +
                               std::to_string(entry.sequence_number) + " for the span of " +
                               span_text(entry.start, entry.end) + ", ";
            text += none ? "where no time span header (070) begins"
                         : "where that of " +
                               span_text(at->second.last->start, at->second.last->end) + " begins";
            return Told{"blockette 012", text};
        });
    }
}

/// What is wrong with the end of a series that an index points to; empty: nothing.
std::string at_end(const SeriesSeen::End &end, const char *name, int sequence_number, double time)
{
    std::string text =
        std::string("its ") + name + " record is " + std::to_string(sequence_number) + ", ";
    if (!end.met)
        return text + "which holds no data of it";
    const double sample = end.rate > 0 ? 1 / end.rate : 1.0;
    if (time >= end.start - sample && time <= end.end + sample)
        return {};
    return text + "which holds " + span_text(end.start, end.end) + " and not " + shown_time(time);
}

void series_index(const Context &context, const Context &, const Report &report)
{
    for (const SeriesSeen &series : context.series) {
        const SeriesIndexEntry &entry = series.entry;
        std::string text = at_end(series.first, "first", entry.first_sequence_number, entry.start);
        if (text.empty())
            text = at_end(series.last, "last", entry.last_sequence_number, entry.end);
        if (!text.empty())
            report(entry.record, entry.code.text(), [&] {
                return Told{entry.code.text() + " " + shown_time(entry.start), text};
            });
    }
}

constexpr std::array Rules = {
    Rule{"volume-times", Severity::warning,
         "data lie within the volume's times, when it names them, and epochs touch them", "epochs",
         Look<Context>(epochs_touch_volume), Look<DataChannel>(data_in_volume)},
    Rule{"station-index", Severity::error,
         "the station index (011) points to the record of each station, and has them all",
         "stations", Look<Context>(station_index)},
    Rule{"span-index", Severity::error,
         "the time span index (012) points to the record of each time span header (070)", "spans",
         Look<Context>(span_index)},
    Rule{"series-index", Severity::error,
         "the time series index (074) points to data of its channel at its start and end", "series",
         Look<Context>(series_index)},
};

} // namespace

std::span<const Rule> index_rules() { return Rules; }

} // namespace quarl
