#include "html/data.h"

#include "blockette/sdblknam.h"
#include "check/rule.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace quarl::html
{

namespace
{

constexpr int Computed_Digits = 8;
constexpr double Not_A_Number = std::numeric_limits<double>::quiet_NaN();

void write_epoch_times(Json *json, double start, double end)
{
    write_time(&json->key("start"), start);
    write_time(&json->key("end"), end);
}

void write_types(Json *json, const Statistics &statistics)
{
    json->key("types").open('[');
    for (const Statistics::Type &type : types_by_size(statistics)) {
        json->open('{');
        if (type.type == Data_Record)
            json->key("type").null();
        else
            json->key("type").whole(type.type);
        json->key("name").text(name_of(type));
        json->key("count").whole(type.count);
        json->key("bytes").whole(type.bytes);
        json->close('}');
    }
    json->close(']');
}

void write_shares(Json *json, const Shares &shares)
{
    json->open('{');
    json->key("parameters").whole(shares.parameters);
    json->key("data").whole(shares.data);
    json->key("waste").whole(shares.waste);
    json->close('}');
}

void write_head(Json *json, const VolumeRead &volume)
{
    const Statistics &statistics = volume.statistics;
    const blk_010_t identifier = volume.records.identifier.value_or(blk_010_t());
    json->key("program").text(volume.program);
    json->key("file").path(volume.name);
    json->key("complete").truth(volume.complete);
    json->key("bytes").whole(statistics.bytes);
    json->key("records").whole(statistics.records);
    json->key("record_length").whole(record_length(volume));
    json->key("label").text(identifier.label);
    json->key("organization").text(identifier.originating_org);
    json->key("version").real(volume.records.identifier ? identifier.version : Not_A_Number);
    write_epoch_times(json, start_seconds(identifier.beg_time), end_seconds(identifier.end_time));
    write_time(&json->key("written"), start_seconds(identifier.volume_time));
    write_shares(&json->key("shares"), shares_of(statistics));
    write_shares(&json->key("counted"), {statistics.parameters, statistics.data, statistics.waste});
    write_types(json, statistics);
}

/// The rules that were broken, in their order, and where each stands among them.
std::vector<std::size_t> write_rules(Json *json, const VolumeRead &volume)
{
    std::vector<std::size_t> index(all_rules().size());
    for (const Finding &finding : volume.findings)
        index[finding.rule] = 1;
    std::size_t next = 0;
    json->key("rules").open('[');
    for (std::size_t i = 0; i < index.size(); ++i) {
        if (index[i] == 0)
            continue;
        index[i] = next++;
        json->open('{');
        json->key("rule").text(all_rules()[i].name);
        json->key("severity").text(name_of(all_rules()[i].severity));
        json->key("sentence").text(all_rules()[i].sentence);
        json->close('}');
    }
    json->close(']');
    return index;
}

void write_findings(Json *json, const VolumeRead &volume, const Targets &targets)
{
    const std::vector<std::size_t> rules = write_rules(json, volume);
    json->key("findings").open('[');
    for (const Finding &finding : volume.findings) {
        const Target target = targets.find(finding.told.subject);
        json->open('{');
        json->key("rule").index(rules[finding.rule]);
        json->key("record").whole(finding.record);
        if (target.station)
            json->key("station").index(target.station);
        if (target.channel)
            json->key("channel").index(target.channel);
        if (target.epoch)
            json->key("epoch").index(target.epoch);
        json->close('}');
    }
    json->close(']');
}

void write_position(Json *json, bool is_placed, double latitude, double longitude)
{
    json->key("latitude").real(is_placed ? latitude : Not_A_Number);
    json->key("longitude").real(is_placed ? longitude : Not_A_Number);
}

void write_stations(Json *json, const Inventory &inventory, const Records &records)
{
    json->key("stations").open('[');
    for (const Station &station : inventory.stations()) {
        json->open('{');
        json->key("network").text(station.code.network());
        json->key("station").text(station.code.station());
        json->key("channels").indexes(station.channels);
        json->key("epochs").open('[');
        for (const std::size_t at : station.epochs) {
            const StationEpoch &epoch = inventory.station_epochs()[at];
            json->open('{');
            write_epoch_times(json, epoch.start, epoch.end);
            write_position(json, records.station_placed[at], epoch.latitude, epoch.longitude);
            json->key("elevation").real(epoch.elevation);
            json->key("name").text(epoch.name);
            json->close('}');
        }
        json->close(']');
        json->close('}');
    }
    json->close(']');
}

/// Starts and ends, one after the other.
template <class Spans> void write_spans(Json *json, const Spans &spans)
{
    json->open('[');
    for (const auto &span : spans) {
        write_time(json, span.start);
        write_time(json, span.end);
    }
    json->close(']');
}

void write_look(Json *json, const Records::Look &look)
{
    json->key("rates").open('[');
    for (const double rate : look.rates)
        json->real(rate);
    json->close(']');
    json->key("formats").open('[');
    for (const std::string &format : look.formats)
        json->text(format);
    json->close(']');
    json->key("qualities").text(look.qualities);
}

/// The envelope of the code that has most samples.
const Envelope *envelope_of(const ChannelData &data, const Envelopes &envelopes)
{
    const Envelope *found = nullptr;
    for (const ChannelCode &code : data.codes) {
        const Envelope *some = envelopes.find(code);
        if (some && (!found || some->count() > found->count()))
            found = some;
    }
    return found;
}

void write_envelope(Json *json, const Envelope *envelope)
{
    if (!envelope)
        return json->null();
    const PackedEnvelope shown = packed(*envelope);
    json->open('{');
    json->key("samples").whole(envelope->count());
    json->key("mean").real(envelope->mean(), Computed_Digits);
    json->key("rms").real(envelope->rms(), Computed_Digits);
    json->key("least").real(envelope->least());
    json->key("most").real(envelope->most());
    json->key("clipped").real(envelope->clipped(), Computed_Digits);
    json->key("start").real(shown.start);
    json->key("step").real(shown.step);
    json->key("samples_per_step").whole(shown.samples);
    json->key("paired").truth(shown.paired);
    json->key("scale").real(shown.scale);
    json->key("values").text(shown.values);
    json->close('}');
}

void write_channels(Json *json, const std::vector<PageChannel> &channels,
                    const Envelopes &envelopes)
{
    json->key("channels").open('[');
    for (const PageChannel &channel : channels) {
        json->open('{');
        const std::optional<std::size_t> station =
            channel.described ? std::optional(channel.described->station) : std::nullopt;
        json->key("station").index(station);
        json->key("network").text(channel.code.network());
        json->key("station_code").text(channel.code.station());
        json->key("location").text(channel.code.location());
        json->key("channel").text(channel.code.channel());
        json->key("subchannel").whole(channel.code.subchannel());
        json->key("epochs").open('[');
        if (channel.described)
            for (const std::size_t epoch : channel.described->epochs)
                json->index(epoch);
        json->close(']');
        json->key("records").whole(channel.data.records);
        json->key("samples").whole(channel.data.samples);
        write_look(json, channel.data.look);
        write_spans(&json->key("spans"), channel.data.spans);
        write_spans(&json->key("overlaps"), channel.data.overlaps);
        write_envelope(&json->key("waves"), envelope_of(channel.data, envelopes));
        json->close('}');
    }
    json->close(']');
}

void write_epoch(Json *json, const VolumeRead &volume, const Curves &curves, std::size_t at)
{
    const Inventory &inventory = volume.inventory;
    const ChannelEpoch &epoch = inventory.channel_epochs()[at];
    const DictionaryEntry *instrument =
        inventory.entry(Dictionary::abbreviations, epoch.instrument);
    const Figures &figures = curves.figures_of(at);
    json->open('{');
    json->key("channel").index(epoch.channel);
    write_epoch_times(json, epoch.start, epoch.end);
    json->key("sample_rate").real(epoch.sample_rate);
    json->key("instrument").text(instrument ? instrument->text : "");
    json->key("signal_units").text(inventory.unit(epoch.signal_units));
    write_position(json, volume.records.channel_placed[at], epoch.latitude, epoch.longitude);
    json->key("elevation").real(epoch.elevation);
    json->key("depth").real(epoch.depth);
    json->key("azimuth").real(epoch.azimuth);
    json->key("dip").real(epoch.dip);
    json->key("sensitivity").real(figures.sensitivity);
    json->key("sensitivity_frequency").real(figures.frequency);
    json->key("computed").real(figures.amplitude, Computed_Digits);
    json->key("stages").indexes(curves.stages_of(at));
    json->close('}');
}

} // namespace

void write_time(Json *json, double seconds)
{
    constexpr double Ticks = 10000;
    if (seconds > Always && seconds < Forever)
        json->real(std::round(seconds * Ticks) / Ticks);
    else
        json->null();
}

void write_data(Out &out, const VolumeRead &volume, const std::vector<PageChannel> &channels,
                const Targets &targets, Curves *curves)
{
    Json json(out);
    json.open('{');
    write_head(&json, volume);
    write_findings(&json, volume, targets);
    write_stations(&json, volume.inventory, volume.records);
    write_channels(&json, channels, volume.envelopes);
    curves->write_responses(&json.key("responses"));
    json.key("epochs").open('[');
    for (std::size_t i = 0; i < volume.inventory.channel_epochs().size(); ++i)
        write_epoch(&json, volume, *curves, i);
    json.close(']');
    curves->write_stages(&json.key("stages"));
    curves->write_filters(&json.key("filters"));
    json.close('}');
}

} // namespace quarl::html
