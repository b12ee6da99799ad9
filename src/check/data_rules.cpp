// Data records, by themselves, against the headers, and one after the other.
#include "check/rule.h"

#include "blockette/data_format.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace quarl
{

namespace
{

about::Channel subject_of(const DataSeen &data)
{
    return {data.channel.code, data.header.start_time};
}

/// How far an epoch is from a time: below 0 when the epoch is over.
double away(const ChannelEpoch &epoch, double time)
{
    return time < epoch.start ? epoch.start - time : std::min(epoch.end - time, 0.0);
}

/// Where the epochs are that do not describe the data.
Told undescribed(const Context &context, const DataSeen &data)
{
    const Inventory &inventory = context.inventory;
    const double time = seconds(data.times->start);
    const ChannelEpoch *nearest = nullptr;
    for (const Channel &channel : inventory.channels()) {
        const ChannelCode &code = channel.code;
        const ChannelCode &of = data.channel.code;
        if (code.station() != of.station() || code.location() != of.location() ||
            code.channel() != of.channel() ||
            (code.network() != of.network() && !code.network().empty() && !of.network().empty()))
            continue;
        for (const std::size_t index : channel.epochs) {
            const ChannelEpoch &epoch = inventory.channel_epochs()[index];
            if (epoch.start < epoch.end &&
                (!nearest || std::abs(away(epoch, time)) < std::abs(away(*nearest, time))))
                nearest = &epoch;
        }
    }
    if (!nearest)
        return {subject_of(data), "no header describes the channel"};
    const double step = away(*nearest, time);
    return {subject_of(data),
            "no channel epoch describes it: the nearest, of " + shown_time(nearest->start) +
                " to " + shown_time(nearest->end) + (step > 0 ? ", starts " : ", ends ") +
                duration_text(std::abs(step)) + (step > 0 ? " behind it" : " before it"),
            "no channel epoch"};
}

void data_undescribed(const Context &context, const DataSeen &data, const Report &report)
{
    if (context.inventory.channel_epochs().empty() || data.epoch || !data.times ||
        context.headers_lost)
        return;
    report(data.record, data.channel.code.text(), [&] { return undescribed(context, data); });
}

void data_rate(const Context & /*context*/, const DataSeen &data, const Report &report)
{
    constexpr double Part = 1e-4;
    if (!data.epoch || data.header.nsamps == 0 || data.rate == 0.0 ||
        std::abs(data.rate - data.epoch->sample_rate) <= Part * std::abs(data.epoch->sample_rate))
        return;
    report(data.record, data.channel.code.text(), [&] {
        return Told{subject_of(data), "sample rate " + shown(data.rate) + " Hz, its epoch's is " +
                                          shown(data.epoch->sample_rate) + " Hz"};
    });
}

/// A listing takes the 8 bytes behind such a record for a part of its header.
void data_too_short(const Context & /*context*/, const DataSeen &data, const Report &report)
{
    constexpr int Read = 136;
    if (data.header.length < Read)
        report(data.record, "short", [&] {
            Told told{about::Channel{data.channel.code},
                      "has records of " + std::to_string(data.header.length) +
                          " bytes, less than the 136 that quarl(1) reads of one at least: its "
                          "listing is off there"};
            told.severity = Severity::note;
            return told;
        });
}

void data_length(const Context &context, const DataSeen &data, const Report &report)
{
    data_too_short(context, data, report);
    if (!data.epoch || data.header.length == data.epoch->record_length)
        return;
    report(data.record, data.channel.code.text(), [&] {
        return Told{subject_of(data), "Blockette 1000 gives " + std::to_string(data.header.length) +
                                          " bytes, its epoch " +
                                          std::to_string(data.epoch->record_length)};
    });
}

std::string encoding_text(int encoding)
{
    const std::string_view name = encoding_name(encoding);
    const std::string number = std::to_string(encoding);
    return name.empty() ? number : number + " (" + std::string(name) + ")";
}

void data_format(const Context &context, const DataSeen &data, const Report &report)
{
    if (!data.epoch || data.header.encoding < 0)
        return;
    const DictionaryEntry *format =
        context.inventory.entry(Dictionary::data_formats, data.epoch->format);
    const int expected = format ? format->encoding : -1;
    if (!context.formats_differ && (expected < 0 || expected == data.header.encoding))
        return;
    report(data.record, data.channel.code.text(), [&] {
        return Told{subject_of(data),
                    "Blockette 1000 gives encoding " + encoding_text(data.header.encoding) +
                        ", its epoch the format " + quoted(format ? format->text : std::string())};
    });
}

/// What is wrong with the time of a record; empty: nothing.
std::string fault_of_time(const DataSeen &data)
{
    constexpr int Announced = 0x10;
    constexpr int Leap_Second = 60;
    const blk_dh_t &header = data.header;
    if (!data.times)
        return std::string("starts at ") + header.start_time + ", which is no time of the calendar";
    const bool may_leap =
        (header.activity & Announced) != 0
            ? header.hour == 23 && header.minutes == 59
            : may_have_leap_second(header.year, header.doy, header.hour, header.minutes);
    if (header.sec_int == Leap_Second && !may_leap)
        return std::string("starts at ") + header.start_time +
               ", a second 60 that is neither announced nor at the end of June or December";
    return {};
}

void data_time(const Context & /*context*/, const DataSeen &data, const Report &report)
{
    std::string text = fault_of_time(data);
    if (!text.empty())
        report(data.record, data.channel.code.text(), [&] {
            return Told{about::Channel{data.channel.code}, std::move(text)};
        });
}

/// What is wrong with the blockettes of a record; empty: nothing.
std::string fault_of_chain(const DataSeen &data)
{
    constexpr int Fixed = 48; ///< bytes of a data record in front of its first blockette
    const blk_dh_t &header = data.header;
    const DataBlockettes &chain = data.item.data_blockettes();
    const int counted = header.blks_fol & 0xFF;
    const int begin = header.beg_data & 0xFFFF;
    if (!chain.remark.empty())
        return chain.remark;
    if (chain.list.size() != static_cast<std::size_t>(counted))
        return "its header counts " + std::to_string(counted) + " blockette" +
               (counted == 1 ? "" : "s") + ", " + std::to_string(chain.list.size()) +
               (chain.list.size() == 1 ? " is there" : " are there");
    if (header.nsamps == 0)
        return {};
    const int behind = chain.list.empty()
                           ? Fixed
                           : chain.list.back().offset + static_cast<int>(chain.list.back().size);
    if (begin < behind)
        return "its data begin at byte " + std::to_string(begin) + ", its headers end at byte " +
               std::to_string(behind);
    if (begin >= header.length)
        return "its data begin at byte " + std::to_string(begin) + ", it has " +
               std::to_string(header.length) + " bytes";
    return {};
}

void blockette_chain(const Context & /*context*/, const DataSeen &data, const Report &report)
{
    std::string text = fault_of_chain(data);
    if (!text.empty())
        report(data.record, data.channel.code.text(), [&] {
            return Told{subject_of(data), std::move(text), "blockette chain"};
        });
}

void data_order(const Context & /*context*/, const DataChannel &channel, const Report &report)
{
    const Occurrences &back = channel.steps_back;
    if (back.count > 0)
        report.counted(back.record, about::Channel{channel.code, time_text(back.to)},
                       "starts " + duration_text(back.from - back.to) +
                           " before the record in front of it",
                       back.count - 1);
}

/// What stands behind the number of further gaps or overlaps.
std::string of_all(double largest, double sum)
{
    return ", the largest of " + duration_text(largest) + ", " + duration_text(sum) + " in all";
}

void data_gap(const Context & /*context*/, const DataChannel &channel, const Report &report)
{
    if (channel.spans.size() < 2)
        return;
    std::size_t first = 1; ///< the first in the volume of those behind a gap
    double largest = 0.0;
    double sum = 0.0;
    for (std::size_t i = 1; i < channel.spans.size(); ++i) {
        const double gap = channel.spans[i].start - channel.spans[i - 1].end;
        largest = std::max(largest, gap);
        sum += gap;
        if (channel.spans[i].record < channel.spans[first].record)
            first = i;
    }
    const double before = channel.spans[first - 1].end;
    const DataSpan &behind = channel.spans[first];
    Told told{about::Channel{channel.code, time_text(before)},
              "a gap of " + duration_text(behind.start - before) + ", until " +
                  time_text(behind.start)};
    told.rest = of_all(largest, sum);
    report.counted(behind.record, std::move(told),
                   static_cast<std::int64_t>(channel.spans.size()) - 2);
}

void data_overlap(const Context & /*context*/, const DataChannel &channel, const Report &report)
{
    const Occurrences &twice = channel.overlaps;
    if (twice.count == 0)
        return;
    Told told{about::Channel{channel.code, time_text(twice.to)},
              "overlaps other data by " + duration_text(twice.from - twice.to) + ", up to " +
                  time_text(twice.from)};
    told.rest = of_all(twice.largest, twice.sum);
    report.counted(twice.record, std::move(told), twice.count - 1);
}

constexpr std::array Rules = {
    Rule{"data-undescribed", Severity::error,
         "a channel epoch describes each data record, in volumes with headers", "records",
         Look<DataSeen>(data_undescribed)},
    Rule{"data-rate", Severity::error, "the sample rate of a data record is that of its epoch",
         "records", Look<DataSeen>(data_rate)},
    Rule{"data-length", Severity::error,
         "the length of a data record is that of its epoch and its Blockette 1000", "records",
         Look<DataSeen>(data_length)},
    Rule{"data-format", Severity::error, "the encoding of a data record is that of its epoch",
         "records", Look<DataSeen>(data_format)},
    Rule{"data-time", Severity::error, "the time of a data record is one of the calendar",
         "records", Look<DataSeen>(data_time)},
    Rule{"blockette-chain", Severity::error,
         "the blockettes of a data record lie in it one behind the other, as many as its header "
         "says, and its data behind them",
         "records", Look<DataSeen>(blockette_chain)},
    Rule{"data-order", Severity::note, "records of a channel come in order of time", "records",
         Look<DataChannel>(data_order)},
    Rule{"data-gap", Severity::note, "records of a channel join, to half a sample", "gaps",
         Look<DataChannel>(data_gap)},
    Rule{"data-overlap", Severity::note, "records of a channel do not overlap", "overlaps",
         Look<DataChannel>(data_overlap)},
};

} // namespace

std::span<const Rule> data_rules() { return Rules; }

} // namespace quarl
