// Data records, by themselves, against the headers, and one after the other.
#include "check/rule.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace quarl
{

namespace
{

std::string subject_of(const DataSeen &data)
{
    return data.channel.code.text() + " " + data.header.start_time;
}

void data_undescribed(const Context &context, const DataSeen &data, const Report &report)
{
    if (!context.has_headers || data.epoch || !data_times(data.header))
        return;
    report(data.record, data.channel.code.text(), [&] {
        return Told{subject_of(data), "no channel epoch describes it"};
    });
}

void data_rate(const Context & /*context*/, const DataSeen &data, const Report &report)
{
    constexpr double Part = 1e-4;
    if (!data.epoch || data.header.nsamps == 0 || data.header.samp_rate == 0.0 ||
        std::abs(data.header.samp_rate - data.epoch->sample_rate) <=
            Part * std::abs(data.epoch->sample_rate))
        return;
    report(data.record, data.channel.code.text(), [&] {
        return Told{subject_of(data), "sample rate " + shown(data.header.samp_rate) +
                                          " Hz, its epoch's is " + shown(data.epoch->sample_rate) +
                                          " Hz"};
    });
}

void data_length(const Context & /*context*/, const DataSeen &data, const Report &report)
{
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
    struct Named {
        int encoding;
        const char *name;
    };
    static constexpr std::array Names = {Named{0, "text"},
                                         Named{1, "16-bit integers"},
                                         Named{2, "24-bit integers"},
                                         Named{3, "32-bit integers"},
                                         Named{4, "32-bit floats"},
                                         Named{5, "64-bit floats"},
                                         Named{10, "Steim 1"},
                                         Named{11, "Steim 2"}};
    const auto *found = std::find_if(Names.begin(), Names.end(),
                                     [&](const Named &row) { return row.encoding == encoding; });
    const std::string number = std::to_string(encoding);
    return found == Names.end() ? number : number + " (" + found->name + ")";
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

void data_time(const Context & /*context*/, const DataSeen &data, const Report &report)
{
    if (data_times(data.header))
        return;
    report(data.record, data.channel.code.text(), [&] {
        return Told{data.channel.code.text(), std::string("starts at ") + data.header.start_time +
                                                  ", which is no time of the calendar"};
    });
}

std::string seconds(double time) { return shown(std::round(time * 1e4) / 1e4) + " s"; }

void data_order(const Context & /*context*/, const DataChannel &channel, const Report &report)
{
    const Occurrences &back = channel.steps_back;
    if (back.count > 0)
        report.counted(back.record, channel.code.text() + " " + time_text(back.to),
                       "starts " + seconds(back.from - back.to) +
                           " before the record in front of it",
                       back.count - 1);
}

void data_gap(const Context & /*context*/, const DataChannel &channel, const Report &report)
{
    if (channel.spans.size() < 2)
        return;
    const DataSpan *first = &channel.spans[1]; ///< the first in the volume of those behind a gap
    double before = channel.spans[0].end;
    for (std::size_t i = 2; i < channel.spans.size(); ++i)
        if (channel.spans[i].record < first->record) {
            first = &channel.spans[i];
            before = channel.spans[i - 1].end;
        }
    report.counted(first->record, channel.code.text() + " " + time_text(before),
                   "a gap of " + seconds(first->start - before) + ", until " +
                       time_text(first->start),
                   static_cast<std::int64_t>(channel.spans.size()) - 2);
}

void data_overlap(const Context & /*context*/, const DataChannel &channel, const Report &report)
{
    const Occurrences &twice = channel.overlaps;
    if (twice.count > 0)
        report.counted(twice.record, channel.code.text() + " " + time_text(twice.to),
                       "overlaps data up to " + time_text(twice.from) + " by " +
                           seconds(twice.from - twice.to),
                       twice.count - 1);
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
