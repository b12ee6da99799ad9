#include "inventory/damage.h"
#include "inventory/data_spans.h"
#include "inventory/dictionaries.h"
#include "inventory/epoch_table.h"
#include "inventory/response_parts.h"

#include "blockette/msd.h"

#include <algorithm>
#include <cmath>
#include <quarl/inventory.h>
#include <unordered_map>
#include <utility>

namespace quarl
{

namespace
{

constexpr std::size_t None = static_cast<std::size_t>(-1);

struct CodeHash {
    std::size_t operator()(const ChannelCode &code) const { return code.hash(); }
};

/// A time of half a sample, and not below what a time can tell.
double tolerance(double rate)
{
    constexpr double Tick = 0.0001;
    return std::max(0.5 / rate, Tick);
}

/// A time that is none leaves its side open.
double start_of(std::string_view text)
{
    const double time = start_seconds(text);
    return std::isnan(time) ? Always : time;
}

double end_of(std::string_view text)
{
    const double time = end_seconds(text);
    return std::isnan(time) ? Forever : time;
}

} // namespace

struct Inventory::Work {
    VolumeIdentifier volume;
    Dictionaries dictionaries;
    std::deque<Station> stations;
    std::deque<StationEpoch> station_epochs;
    std::deque<Channel> channels;
    std::deque<ChannelEpoch> epochs;
    std::unordered_map<ChannelCode, std::size_t, CodeHash> station_of_code;
    std::unordered_map<ChannelCode, std::size_t, CodeHash> channel_of_code;
    bool finished = false;
    std::size_t epoch = None; ///< the channel epoch that is being described
    std::size_t ended = None; ///< the one that the last item ended
    ResponseParts parts{dictionaries};
    EpochTable epoch_table{channels, epochs};

    std::vector<StationIndexEntry> station_index;
    std::vector<SpanIndexEntry> span_index;
    std::vector<SeriesIndexEntry> series_index;
    std::vector<TimeSpanHeader> time_spans;

    std::deque<DataChannel> data;
    std::deque<SpanJoiner> joiners; ///< of each data channel
    std::unordered_map<ChannelCode, std::size_t, CodeHash> data_of_code;
    std::size_t data_channel = None;
    const ChannelEpoch *data_epoch = nullptr;
    std::int64_t timeless = 0;

    void add_identifier(const Item &item, const blk_010_t &blk);
    void add_station(const Item &item, const blk_050_t &blk);
    void add_channel(const Item &item, const blk_052_t &blk);
    void close_channel();
    void add_reference(const Item &item, const blk_060_t &blk);
    void add_part(const Item &item);
    template <class Blk> static Comment comment_of(const Item &item, const Blk &blk);
    void add_indexes(const Item &item);
    void add_data(const Item &item, const blk_dh_t &header);
    void find_data_channel(const ChannelCode &code, std::int64_t record);
    void add_control(const Item &item);
};

void Inventory::Work::add_identifier(const Item &item, const blk_010_t &blk)
{
    if (volume.record != 0)
        return;
    volume = {.version = blk.version,
              .start = start_of(blk.beg_time),
              .end = end_of(blk.end_time),
              .record_length = record_length(blk.rec_len),
              .organisation = blk.originating_org,
              .label = blk.label,
              .record = item.place().record};
}

void Inventory::Work::add_station(const Item &item, const blk_050_t &blk)
{
    const ChannelCode code(blk.network_code, blk.station);
    const auto [known, is_new] = station_of_code.try_emplace(code, stations.size());
    if (is_new)
        stations.push_back({code, {}, {}});
    stations[known->second].epochs.push_back(station_epochs.size());
    station_epochs.push_back({.station = known->second,
                              .start = start_of(blk.start_date),
                              .end = end_of(blk.end_date),
                              .latitude = blk.lat,
                              .longitude = blk.lon,
                              .elevation = blk.elev,
                              .network_id = blk.net_id,
                              .name = blk.name,
                              .record = item.place().record,
                              .sequence_number = item.place().sequence_number,
                              .comments = {},
                              .bad_fields = bad_fields(item, blk)});
    close_channel();
}

void Inventory::Work::close_channel()
{
    ended = std::exchange(epoch, None);
    if (ended != None)
        parts.close(ended, &epochs[ended]);
}

void Inventory::Work::add_channel(const Item &item, const blk_052_t &blk)
{
    close_channel();
    if (station_epochs.empty())
        return;
    const std::size_t station = station_epochs.back().station;
    const ChannelCode &of = stations[station].code;
    const ChannelCode code(of.network(), of.station(), blk.loc_id, blk.chan_id, blk.subchan_id);
    const auto [known, is_new] = channel_of_code.try_emplace(code, channels.size());
    if (is_new) {
        stations[station].channels.push_back(channels.size());
        channels.push_back({code, station, {}});
    }
    epoch = epochs.size();
    channels[known->second].epochs.push_back(epoch);
    epochs.push_back({.channel = known->second,
                      .station_epoch = station_epochs.size() - 1,
                      .start = start_of(blk.start_date),
                      .end = end_of(blk.end_date),
                      .latitude = blk.lat,
                      .longitude = blk.lon,
                      .elevation = blk.elev,
                      .depth = blk.depth,
                      .azimuth = blk.azimuth,
                      .dip = blk.dip,
                      .sample_rate = blk.sample_rate,
                      .instrument = blk.instr_id,
                      .signal_units = blk.units_signal,
                      .calibration_units = blk.units_cal,
                      .format = blk.format_id,
                      .record_length = record_length(blk.record_length_read),
                      .flags = blk.chan_flags,
                      .comment = blk.comment,
                      .record = item.place().record,
                      .response = {},
                      .comments = {},
                      .clock_drift = blk.max_drift,
                      .bad_fields = bad_fields(item, blk)});
}

void Inventory::Work::add_reference(const Item &item, const blk_060_t &blk)
{
    for (const blk_060_t::Stage &stage : blk.stage)
        for (const int key : stage.lookup_key)
            parts.refer(stage.stage_num, key, item.place().record);
    if (is_damaged(item))
        epochs[epoch].lacks.push_back({.type = item.type(), .record = item.place().record});
}

/// What a blockette says of a stage, and what it should say and does not.
void Inventory::Work::add_part(const Item &item)
{
    const std::optional<int> stage = parts.add(item);
    if (stage && is_damaged(item))
        epochs[epoch].lacks.push_back(
            {.type = item.type(), .stage = *stage, .record = item.place().record});
    const auto *gain = item.get<blk_058_t>();
    for (int i = 0; gain && i < gain->num_history; ++i)
        epochs[epoch].calibrations.push_back(
            {gain->stage_num,
             {gain->calibration_gain[i], gain->calibration_freq[i]},
             gain->calibration_time[i].text});
}

template <class Blk> Comment Inventory::Work::comment_of(const Item &item, const Blk &blk)
{
    return {.start = start_of(blk.beg_time),
            .end = end_of(blk.end_time),
            .key = blk.comment_key,
            .level = blk.comment_level,
            .record = item.place().record,
            .bad = item.bad() || std::isnan(start_seconds(blk.beg_time)) ||
                   std::isnan(end_seconds(blk.end_time))};
}

void Inventory::Work::add_indexes(const Item &item)
{
    const std::int64_t record = item.place().record;
    if (const auto *stations_at = item.get<blk_011_t>()) {
        for (int i = 0; i < stations_at->num_stn_held; ++i)
            station_index.push_back({stations_at->station(i), stations_at->seq_num[i], record});
    } else if (const auto *spans = item.get<blk_012_t>()) {
        for (int i = 0; i < spans->num_span_held; ++i)
            span_index.push_back({start_of(spans->beg_span[i]), end_of(spans->end_span[i]),
                                  spans->seq_num[i], record});
    } else if (const auto *span = item.get<blk_070_t>()) {
        time_spans.push_back({start_of(span->beg_time), end_of(span->end_time),
                              item.place().sequence_number, record});
    } else if (const auto *series = item.get<blk_074_t>()) {
        series_index.push_back(
            {ChannelCode(series->network_code, series->stn_id, series->loc_id, series->chan_id),
             start_of(series->series_start_time), end_of(series->series_end_time),
             series->first_seq_num, series->last_seq_num, record});
    }
}

void Inventory::Work::find_data_channel(const ChannelCode &code, std::int64_t record)
{
    if (data_channel != None && data[data_channel].code == code)
        return;
    const auto [known, is_new] = data_of_code.try_emplace(code, data.size());
    if (is_new) {
        data.emplace_back();
        data.back().code = code;
        data.back().first_record = record;
        joiners.emplace_back();
    }
    data_channel = known->second;
}

void Inventory::Work::add_data(const Item &item, const blk_dh_t &header)
{
    const std::int64_t record = item.place().record;
    find_data_channel(code_of(header), record);
    DataChannel &channel = data[data_channel];
    data_epoch = epoch_table.find(channel.code, header.epoch);
    ++channel.records;
    channel.samples += header.nsamps;
    const DataRefinement more = item.data_blockettes().refinement();
    const double rate = more.sample_rate > 0.0 ? more.sample_rate : header.samp_rate;
    const auto times = data_times(header, more);
    if (!times) {
        ++timeless;
        return;
    }
    if (header.nsamps <= 0 || !(rate > 0.0))
        return;
    const double start = seconds(times->start);
    const double end = seconds(times->next);
    if (channel.last_end != 0.0 && start < channel.last_start && channel.steps_back.count++ == 0)
        channel.steps_back = {1, record, channel.last_start, start};
    channel.rate = rate;
    channel.last_start = start;
    channel.last_end = end;
    joiners[data_channel].add({start, end, tolerance(rate), record});
}

void Inventory::Work::add_control(const Item &item)
{
    dictionaries.add(item);
    add_indexes(item);
    if (const auto *identifier = item.get<blk_010_t>())
        add_identifier(item, *identifier);
    else if (const auto *station = item.get<blk_050_t>())
        add_station(item, *station);
    else if (const auto *channel = item.get<blk_052_t>())
        add_channel(item, *channel);
    else if (const auto *remark = item.get<blk_051_t>(); remark && !station_epochs.empty())
        station_epochs.back().comments.push_back(comment_of(item, *remark));
    if (epoch == None)
        return;
    if (const auto *comment = item.get<blk_059_t>())
        epochs[epoch].comments.push_back(comment_of(item, *comment));
    else if (const auto *reference = item.get<blk_060_t>())
        add_reference(item, *reference);
    else
        add_part(item);
}

Inventory::Inventory() : work_(std::make_unique<Work>()) {}
Inventory::Inventory(Inventory &&) noexcept = default;
Inventory &Inventory::operator=(Inventory &&) noexcept = default;
Inventory::~Inventory() = default;

void Inventory::add(const Item &item)
{
    if (!work_ || work_->finished)
        work_ = std::make_unique<Work>();
    work_->ended = None;
    if (const auto *header = item.get<blk_dh_t>())
        work_->add_data(item, *header);
    else if (item.get<FileEnd>()) // a control blockette may declare its type
        finish();
    else
        work_->add_control(item);
}

void Inventory::finish()
{
    work_->ended = None;
    if (std::exchange(work_->finished, true))
        return;
    work_->close_channel();
    work_->dictionaries.finish();
    work_->parts.finish(&work_->epochs);
    for (std::size_t i = 0; i < work_->data.size(); ++i)
        work_->joiners[i].finish(&work_->data[i]);
}

const VolumeIdentifier &Inventory::volume() const { return work_->volume; }
const std::deque<Station> &Inventory::stations() const { return work_->stations; }
const std::deque<StationEpoch> &Inventory::station_epochs() const { return work_->station_epochs; }
const std::deque<Channel> &Inventory::channels() const { return work_->channels; }
const std::deque<ChannelEpoch> &Inventory::channel_epochs() const { return work_->epochs; }
const std::deque<DataChannel> &Inventory::data_channels() const { return work_->data; }

const Channel &Inventory::channel_of(const ChannelEpoch &epoch) const
{
    return work_->channels[epoch.channel];
}

const Station &Inventory::station_of(const StationEpoch &epoch) const
{
    return work_->stations[epoch.station];
}

const ChannelEpoch *Inventory::ended_epoch() const
{
    return work_->ended == None ? nullptr : &work_->epochs[work_->ended];
}

void Inventory::forget_ended_response()
{
    if (work_->ended != None)
        work_->epochs[work_->ended].response = {};
}

const DictionaryEntry *Inventory::entry(Dictionary dictionary, int code) const
{
    return work_->dictionaries.find(dictionary, code);
}

std::string_view Inventory::unit(int code) const
{
    const DictionaryEntry *found = entry(Dictionary::units, code);
    return found ? std::string_view(found->text) : std::string_view();
}

const std::vector<Redefinition> &Inventory::redefinitions() const
{
    return work_->dictionaries.redefinitions();
}

const std::vector<StationIndexEntry> &Inventory::station_index() const
{
    return work_->station_index;
}
const std::vector<SpanIndexEntry> &Inventory::span_index() const { return work_->span_index; }
const std::vector<SeriesIndexEntry> &Inventory::series_index() const { return work_->series_index; }
const std::vector<TimeSpanHeader> &Inventory::time_spans() const { return work_->time_spans; }

const DataChannel *Inventory::data_channel() const
{
    return work_->data_channel == None ? nullptr : &work_->data[work_->data_channel];
}

const ChannelEpoch *Inventory::data_epoch() const { return work_->data_epoch; }

const ChannelEpoch *Inventory::epoch_at(const DataChannel &channel, double time) const
{
    return std::as_const(work_->epoch_table).find(channel.code, time);
}

std::int64_t Inventory::timeless_records() const { return work_->timeless; }

} // namespace quarl
