// What the volume says of itself: its times and its indexes.
#include "check/rule.h"

#include <algorithm>
#include <cmath>
#include <map>
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
    report(channel.first_record, channel.code.text(), [&] {
        return Told{about::Channel{channel.code}, outside(volume, "data", start, end),
                    "data outside"};
    });
}

void station_touches_volume(const Context &context, const Station &station, const Report &report)
{
    const VolumeIdentifier &volume = context.inventory.volume();
    for (const std::size_t index : station.epochs) {
        const StationEpoch &epoch = context.inventory.station_epochs()[index];
        if (volume.record != 0 && !touches(volume, epoch.start, epoch.end))
            report(epoch.record, station.code.text(), [&] {
                return Told{subject_of(context.inventory, epoch),
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
        if (volume.record != 0 && epoch.start < epoch.end &&
            !touches(volume, epoch.start, epoch.end))
            report(epoch.record, inventory.channel_of(epoch).code.text(), [&] {
                return Told{subject_of(inventory, epoch),
                            outside(volume, "a channel epoch", epoch.start, epoch.end),
                            "volume times"};
            });
}

/// What the volume has of a station, and what its index has.
struct Indexed {
    std::vector<const StationEpoch *> headers;
    std::vector<const StationIndexEntry *> entries;
};
using ByStation = std::map<std::string_view, Indexed>;

std::string header_text(const StationEpoch &header)
{
    const std::string start = time_text(header.start);
    return "its header (050)" + (start.empty() ? start : " of " + start) + " has sequence number " +
           std::to_string(header.sequence_number);
}

/// Sequence numbers that one side has and the other has not.
std::set<int> numbers_of(const std::vector<const StationEpoch *> &headers)
{
    std::set<int> numbers;
    for (const StationEpoch *header : headers)
        numbers.insert(header->sequence_number);
    return numbers;
}

std::set<int> numbers_of(const std::vector<const StationIndexEntry *> &entries)
{
    std::set<int> numbers;
    for (const StationIndexEntry *entry : entries)
        numbers.insert(entry->sequence_number);
    return numbers;
}

/// The header that an entry could mean: the first one that no entry points to, else the first.
const StationEpoch &meant(const Indexed &station, const std::set<int> &entries)
{
    const auto free = std::find_if(
        station.headers.begin(), station.headers.end(),
        [&](const StationEpoch *header) { return !entries.contains(header->sequence_number); });
    return free == station.headers.end() ? *station.headers.front() : **free;
}

void entries_lead_to_headers(std::string_view code, const Indexed &station, const Report &report)
{
    const std::set<int> headers = numbers_of(station.headers);
    const std::set<int> entries = numbers_of(station.entries);
    for (const StationIndexEntry *entry : station.entries) {
        if (headers.contains(entry->sequence_number))
            continue;
        report(entry->record, code, [&] {
            return Told{about::Station{ChannelCode({}, code)},
                        "the station index (011) points to sequence number " +
                            std::to_string(entry->sequence_number) + ", " +
                            (station.headers.empty() ? "the volume has no such station"
                                                     : header_text(meant(station, entries)))};
        });
    }
}

/// A single entry may stand for several headers that follow each other.
void headers_have_entries(const Context &context, const Indexed &station, const Report &report)
{
    const std::set<int> entries = numbers_of(station.entries);
    const std::set<int> headers = numbers_of(station.headers);
    const bool all_lead =
        std::includes(headers.begin(), headers.end(), entries.begin(), entries.end());
    if (entries.size() < 2 || !all_lead) // else the entry that leads nowhere is told
        return;
    for (const StationEpoch *header : station.headers)
        if (!entries.contains(header->sequence_number)) {
            const ChannelCode &code = context.inventory.station_of(*header).code;
            report(header->record, code.text() + " header", [&] {
                return Told{about::Station{code}, header_text(*header) +
                                                      " and is not in the station index (011), "
                                                      "which has others of the station"};
            });
        }
}

void station_index(const Context &context, const Context &, const Report &report)
{
    const Inventory &inventory = context.inventory;
    ByStation stations;
    for (const StationEpoch &epoch : inventory.station_epochs())
        stations[inventory.station_of(epoch).code.station()].headers.push_back(&epoch);
    for (const StationIndexEntry &entry : inventory.station_index())
        stations[entry.station].entries.push_back(&entry);
    if (context.headers_lost || context.numbers_lost)
        return; // what is missing was told
    for (const ByStation::value_type &each : stations) {
        const std::string_view code = each.first;
        const Indexed &station = each.second;
        entries_lead_to_headers(code, station, report);
        if (!station.entries.empty())
            headers_have_entries(context, station, report);
        else if (inventory.volume().record != 0)
            report(station.headers.front()->record, "missing", [&] {
                return Told{about::Station{inventory.station_of(*station.headers.front()).code},
                            "is not in the station index (011), which has " +
                                std::to_string(inventory.station_index().size()) + " entries"};
            });
    }
}

/// A time as it can be compared: to the tick that volumes tell.
std::int64_t in_ticks(double time)
{
    constexpr double Most = 9e14;
    return static_cast<std::int64_t>(std::llround(std::clamp(time * 1e4, -Most, Most)));
}

/// The time span headers that begin in records of one number.
struct SpansAt {
    std::set<std::pair<std::int64_t, std::int64_t>> spans; ///< starts and ends
    const TimeSpanHeader *last = nullptr;

    /// One of them is this one, but for a tick.
    [[nodiscard]] bool has(double start, double end) const
    {
        for (const std::int64_t before : {0, -1, 1})
            for (const std::int64_t behind : {0, -1, 1})
                if (spans.contains({in_ticks(start) + before, in_ticks(end) + behind}))
                    return true;
        return false;
    }
};

std::unordered_map<int, SpansAt> spans_by_number(const std::vector<TimeSpanHeader> &spans)
{
    std::unordered_map<int, SpansAt> by_number;
    for (const TimeSpanHeader &span : spans) {
        SpansAt &at = by_number[span.sequence_number];
        at.last = &span;
        at.spans.emplace(in_ticks(span.start), in_ticks(span.end));
    }
    return by_number;
}

void span_index(const Context &context, const Context &, const Report &report)
{
    const auto by_number = spans_by_number(context.inventory.time_spans());
    for (const SpanIndexEntry &entry : context.inventory.span_index()) {
        const auto at = by_number.find(entry.sequence_number);
        const bool none = at == by_number.end();
        if ((!none && at->second.has(entry.start, entry.end)) ||
            (none && (context.headers_lost || context.numbers_lost)))
            continue;
        report(entry.record, none ? "none" : "other", [&] {
            std::string text = "the index points to sequence number " +
                               std::to_string(entry.sequence_number) + " for the span of " +
                               span_text(entry.start, entry.end) + ", ";
            text += none ? "where no time span header (070) begins"
                         : "where that of " +
                               span_text(at->second.last->start, at->second.last->end) + " begins";
            return Told{about::Blockette{12}, text};
        });
    }
}

/// What is wrong with the end of a series that an index points to; empty: nothing.
std::string at_end(const SeriesSeen::End &end, const char *name, int sequence_number, double time)
{
    const std::string number = std::to_string(sequence_number);
    std::string text = std::string("its ") + name + " record has sequence number " + number;
    if (!end.met)
        return text + (end.has_record ? ", which holds no data of it"
                                      : ": the volume has no record " + number);
    const double sample = end.rate > 0 ? 1 / end.rate : 1.0;
    if (time >= end.start - sample && time <= end.end + sample)
        return {};
    return text + ", which holds " + span_text(end.start, end.end) + " and not " + shown_time(time);
}

void series_lead_to_data(const Context &context, const Report &report)
{
    for (const SeriesSeen &series : context.series) {
        const SeriesIndexEntry &entry = series.entry;
        if ((context.cut || context.numbers_lost) &&
            (!series.first.has_record || !series.last.has_record))
            continue; // that is behind the end
        std::string text = at_end(series.first, "first", entry.first_sequence_number, entry.start);
        if (text.empty())
            text = at_end(series.last, "last", entry.last_sequence_number, entry.end);
        if (!text.empty())
            report(entry.record, entry.code.text(), [&] {
                return Told{about::Channel{entry.code, shown_time(entry.start)}, text};
            });
    }
}

/// Times in order, those that touch joined.
using Times = std::vector<DataOverlap>;

Times joined(Times times)
{
    std::sort(times.begin(), times.end(),
              [](const DataOverlap &a, const DataOverlap &b) { return a.start < b.start; });
    Times all;
    for (const DataOverlap &time : times) {
        if (all.empty() || time.start > all.back().end)
            all.push_back(time);
        else
            all.back().end = std::max(all.back().end, time.end);
    }
    return all;
}

bool has_some(const Times &times, const DataSpan &data)
{
    const auto behind = std::partition_point(
        times.begin(), times.end(), [&](const DataOverlap &time) { return time.end < data.start; });
    return behind != times.end() && behind->start < data.end;
}

ChannelCode without_network(const ChannelCode &code)
{
    return {{}, code.station(), code.location(), code.channel()};
}

/// Data in a span of which other channels have a series.
void data_have_series(const Context &context, const Report &report)
{
    const Inventory &inventory = context.inventory;
    std::map<ChannelCode, Times> series;
    Times spans;
    for (const SeriesIndexEntry &entry : inventory.series_index())
        series[without_network(entry.code)].push_back({entry.start, entry.end});
    if (series.empty() || context.headers_lost)
        return;
    const auto &headers = inventory.time_spans();
    for (const SeriesIndexEntry &entry : inventory.series_index()) {
        const auto behind =
            std::partition_point(headers.begin(), headers.end(), [&](const TimeSpanHeader &header) {
                return header.record <= entry.record;
            });
        if (behind != headers.begin())
            spans.push_back({std::prev(behind)->start, std::prev(behind)->end});
    }
    spans = joined(std::move(spans));
    for (auto &[code, times] : series)
        times = joined(std::move(times));
    for (const DataChannel &channel : inventory.data_channels()) {
        const auto own = series.find(without_network(channel.code));
        for (const DataSpan &data : channel.spans) {
            if (!has_some(spans, data) || !inventory.epoch_at(channel, data.start) ||
                (own != series.end() && has_some(own->second, data)))
                continue;
            report(data.record, channel.code.text() + " none", [&] {
                return Told{about::Channel{channel.code, time_text(data.start)},
                            "its data of " + span_text(data.start, data.end) +
                                " are in no time series (074) of their span, other channels' are",
                            "no series"};
            });
        }
    }
}

void series_index(const Context &context, const Context &, const Report &report)
{
    series_lead_to_data(context, report);
    data_have_series(context, report);
}

constexpr std::array Rules = {
    Rule{"volume-times", Severity::warning,
         "data lie within the volume's times, when it names them, and epochs touch them", "epochs",
         Look<Context>(epochs_touch_volume), Look<DataChannel>(data_in_volume)},
    Rule{"station-index", Severity::error,
         "the station index (011) points to the headers (050) of each station, and has them all",
         "stations", Look<Context>(station_index)},
    Rule{"span-index", Severity::error,
         "the time span index (012) has the record and the times of each time span header (070)",
         "spans", Look<Context>(span_index)},
    Rule{"series-index", Severity::error,
         "the time series index (074) points to data of its channel at its start and end, and has "
         "all channels of a span",
         "series", Look<Context>(series_index)},
};

} // namespace

std::span<const Rule> index_rules() { return Rules; }

} // namespace quarl
