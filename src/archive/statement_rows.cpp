#include "archive/statement_rows.h"

#include "archive/data_runs.h"
#include "platform/calendar.h"
#include "platform/format.h"
#include "platform/sha256.h"
#include "platform/text.h"

#include <algorithm>
#include <cmath>

namespace quarl::archive
{

namespace
{

constexpr std::int64_t Open_Date = 2286324; ///< YYYYDDD of an end that is none

/// Ends from 2286 on are none.
double end_of(double end)
{
    const auto limit = static_cast<double>(days_since_1970(2286, 1)) * 86400.0;
    return end < limit ? end : Forever;
}

std::int64_t end_date(double end) { return end >= Forever ? Open_Date : julian_date(end); }

std::string seed_time(double time) { return time_text(time); }

std::string_view text_of(const Inventory &inventory, Dictionary dictionary, int code)
{
    const DictionaryEntry *entry = inventory.entry(dictionary, code);
    return entry ? std::string_view(entry->text) : std::string_view();
}

std::string_view first_word(std::string_view text)
{
    text = trimmed(text);
    const auto end = std::find_if(text.begin(), text.end(), [](char c) { return is_space(c); });
    return text.substr(0, static_cast<std::size_t>(end - text.begin()));
}

std::string digest_of(const std::string &values) { return sha256(values).substr(0, 32); }

const Column &column_of(Statement statement, std::string_view name)
{
    const auto &columns = source(statement).columns;
    return *std::find_if(columns.begin(), columns.end(),
                         [&](const Column &each) { return each.name == name; });
}

} // namespace

void EventItems::add(const Item &item)
{
    if (const auto *origin = item.get<blk_071_t>())
        all.emplace_back(*origin);
    else if (const auto *arrival = item.get<blk_072_t>())
        all.emplace_back(*arrival);
}

/// Keeps a row; returns its digest.
std::string StatementRows::keep(Statement statement, std::string key, const RowText &row)
{
    std::string digest = digest_of(row.values());
    kept_[static_cast<std::size_t>(statement)][std::move(key)] = {
        ++number_, RowText().any(digest).values() + "," + row.values()};
    return digest;
}

RowText &StatementRows::cut(RowText &row, std::string_view text, Statement statement,
                            std::string_view column)
{
    return row.text(text, column_of(statement, column), &cuts_);
}

void StatementRows::tell_cuts(const std::string &subject)
{
    for (const std::string &each : cuts_)
        told_.insert(formatted<"%s: %s">(subject, each));
    cuts_.clear();
}

void StatementRows::add_station(const Inventory &inventory, const StationEpoch &epoch)
{
    const ChannelCode &code = inventory.station_of(epoch).code;
    stations_.insert(code);
    if (!code.network().empty()) {
        RowText network;
        network.text(code.network());
        const std::string key = network.values();
        cut(network, text_of(inventory, Dictionary::abbreviations, epoch.network_id),
            Statement::network, "netname");
        keep(Statement::network, key, network);
    }
    const double end = end_of(epoch.end);
    RowText row;
    row.text(code.network()).text(code.station()).real(epoch.start, Always);
    const std::string key = row.values();
    row.real(end, Forever).real(epoch.latitude, -999.0).real(epoch.longitude, -999.0);
    row.real(epoch.elevation, -999.0);
    cut(row, epoch.name, Statement::station, "sitename");
    const std::string name(trimmed(epoch.name));
    if (const auto width = static_cast<std::size_t>(css_table("site").column("staname").width);
        name.size() > width)
        cuts_.push_back("staname is cut to " + std::to_string(width) + " characters: '" + name +
                        "'");
    row.whole(julian_date(epoch.start)).whole(end_date(end));
    keep(Statement::station, key, row);
    tell_cuts(code.text());
}

std::string StatementRows::add_instrument(const Inventory &inventory, const ChannelEpoch &epoch,
                                          const Calibration &calibration)
{
    const std::string_view name = text_of(inventory, Dictionary::abbreviations, epoch.instrument);
    const ChannelCode &code = inventory.channel_of(epoch).code;
    std::string band(code.channel().substr(0, 1));
    if (!band.empty() && band[0] >= 'A' && band[0] <= 'Z')
        band[0] = static_cast<char>(band[0] - 'A' + 'a');
    RowText row;
    cut(row, name, Statement::instrument, "insname");
    row.text(first_word(name).substr(0, 6)).text(band).real(epoch.sample_rate, -1.0);
    row.real(calibration.calib, 1.0).real(calibration.calper, -1.0);
    row.text(digests_.of(epoch.response));
    return keep(Statement::instrument, row.values(), row);
}

void StatementRows::add_channel(const Inventory &inventory, const ChannelEpoch &epoch,
                                const std::string &name)
{
    const ChannelCode &code = inventory.channel_of(epoch).code;
    channels_.insert(code);
    const Sensitivity sensitivity = sensitivity_of(epoch.response);
    std::string unit = input_unit(epoch.response);
    if (unit.empty())
        unit = inventory.unit(epoch.signal_units);
    const Calibration calibration = calibration_of(sensitivity, unit);
    const double end = end_of(epoch.end);
    RowText row;
    row.text(code.network()).text(code.station()).text(code.location()).text(code.channel());
    row.whole(code.subchannel()).real(epoch.start, Always);
    const std::string key = row.values();
    row.real(end, Forever).real(epoch.latitude, -999.0).real(epoch.longitude, -999.0);
    row.real(epoch.elevation, -999.0).real(epoch.depth, -1.0).real(epoch.azimuth, -1.0);
    row.real(epoch.dip, -999.0).real(epoch.sample_rate, -1.0);
    row.real(sensitivity.given ? sensitivity.value : -1.0, -1.0);
    row.real(sensitivity.given ? sensitivity.frequency : -1.0, -1.0);
    cut(row, unit, Statement::epoch, "units");
    cut(row, text_of(inventory, Dictionary::abbreviations, epoch.instrument), Statement::epoch,
        "instrument");
    cut(row, epoch.comment, Statement::epoch, "comment");
    cut(row, epoch.flags, Statement::epoch, "flags");
    cut(row, text_of(inventory, Dictionary::data_formats, epoch.format), Statement::epoch,
        "format");
    row.whole(epoch.record_length).text(add_instrument(inventory, epoch, calibration));
    cut(row, name, Statement::epoch, "chan");
    row.whole(julian_date(epoch.start)).whole(end_date(end));
    row.real(calibration.calib, 1.0).real(calibration.calper, -1.0);
    row.text(seed_time(epoch.start), "").text(end >= Forever ? "" : seed_time(end), "");
    keep(Statement::epoch, key, row);
    tell_cuts(code.text());
}

void StatementRows::add_comment(const Inventory &inventory, const ChannelCode &code,
                                const Comment &comment)
{
    RowText row;
    row.text(code.network()).text(code.station()).text(code.location()).text(code.channel());
    row.real(comment.start, Always).real(end_of(comment.end), Forever).whole(comment.level);
    cut(row, text_of(inventory, Dictionary::comments, comment.key), Statement::comment, "comment");
    keep(Statement::comment, row.values(), row);
    tell_cuts(code.text());
}

void StatementRows::add(const Inventory &inventory, const std::vector<std::string> &names)
{
    std::set<std::size_t> stations;
    for (std::size_t i = 0; i < inventory.channel_epochs().size(); ++i) {
        const ChannelEpoch &epoch = inventory.channel_epochs()[i];
        const ChannelCode &code = inventory.channel_of(epoch).code;
        if (!selection_.has(code))
            continue;
        stations.insert(inventory.channel_of(epoch).station);
        add_channel(inventory, epoch, i < names.size() ? names[i] : std::string(code.channel()));
        for (const Comment &comment : epoch.comments)
            add_comment(inventory, code, comment);
    }
    for (const StationEpoch &epoch : inventory.station_epochs()) {
        if (!selection_.has_all() && !stations.contains(epoch.station))
            continue;
        add_station(inventory, epoch);
        for (const Comment &comment : epoch.comments)
            add_comment(inventory, inventory.station_of(epoch).code, comment);
    }
}

/// Returns the digest of what tells it from others.
std::string StatementRows::add_origin(const Inventory &inventory, const blk_071_t &origin)
{
    const double time = start_seconds(origin.origin_time);
    RowText row;
    row.real(time, Always).real(origin.lat, -999.0).real(origin.lon, -999.0);
    row.real(origin.depth, -999.0);
    cut(row, text_of(inventory, Dictionary::sources, origin.source_id), Statement::origin, "auth");
    std::string place = digest_of(row.values());
    RowText whole;
    whole.any(place);
    const auto number = [](int value) { return value > 0 ? value : -1; };
    RowText rest; // the names of CSS 3.0 are the wrong way round for those of SEED
    rest.whole(number(origin.srn)).whole(number(origin.grn)).whole(julian_date(time));
    whole.raw(row.values()).raw(rest.values());
    keep(Statement::origin, whole.values().substr(0, place.size() + 2), whole);
    for (int i = 0; i < origin.num_mags; ++i) {
        RowText magnitude;
        magnitude.any(place);
        cut(magnitude, origin.mag_type[i], Statement::magnitude, "magtype");
        cut(magnitude, text_of(inventory, Dictionary::sources, origin.mag_source[i]),
            Statement::magnitude, "auth");
        const std::string key = magnitude.values();
        magnitude.real(origin.mag[i], -999.0);
        keep(Statement::magnitude, key, magnitude);
    }
    tell_cuts("origin " + std::string(origin.origin_time));
    return place;
}

void StatementRows::add_arrival(const Inventory &inventory, const blk_072_t &arrival,
                                const std::string &place)
{
    const ChannelCode code(arrival.network_code, arrival.stn_id, arrival.loc_id, arrival.chan_id);
    if (!selection_.has(code))
        return;
    const double time = start_seconds(arrival.arr_time);
    RowText row;
    row.text(code.station()).real(time, Always);
    row.text(std::string(code.channel()) + std::string(code.location()));
    cut(row, arrival.phase, Statement::arrival, "iphase");
    cut(row, text_of(inventory, Dictionary::sources, arrival.source), Statement::arrival, "auth");
    const std::string key = row.values();
    row.real(arrival.amp, -1.0).real(arrival.period, -1.0).real(arrival.snr, -1.0).text(place);
    row.whole(julian_date(time));
    keep(Statement::arrival, key, row);
    tell_cuts(code.text() + " " + std::string(arrival.arr_time));
}

void StatementRows::add(const Inventory &inventory, const EventItems &events)
{
    std::string place;
    for (const auto &item : events.all) {
        if (const auto *origin = std::get_if<blk_071_t>(&item))
            place = add_origin(inventory, *origin);
        else
            add_arrival(inventory, std::get<blk_072_t>(item), place);
    }
}

void StatementRows::take(VolumeRows *rows)
{
    for (std::size_t i = 0; i < Statements; ++i) {
        std::vector<const Kept *> order;
        for (const auto &[key, kept] : kept_[i])
            order.push_back(&kept);
        std::sort(order.begin(), order.end(),
                  [](const Kept *a, const Kept *b) { return a->number < b->number; });
        for (const Kept *kept : order)
            rows->statements[i].add(RowText().raw(kept->values));
    }
    rows->told.insert(rows->told.end(), told_.begin(), told_.end());
}

} // namespace quarl::archive
