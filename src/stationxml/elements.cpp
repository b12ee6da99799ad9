#include "stationxml/elements.h"

#include "platform/format.h"
#include "platform/text.h"

#include <array>
#include <cmath>
#include <quarl/time.h>
#include <utility>

namespace quarl
{

namespace
{

using Severity = CarryRemark::Severity;

/// A number that a document must have: its name, its field, and the range that is allowed.
struct Needed {
    const char *name;
    double value;
    int field;
    double least;
    double limit; ///< the first number above the range
};

/// Tells which numbers are missing or out of range; false when none is.
template <std::size_t N>
bool lacks(const std::array<Needed, N> &numbers, const BadFields &bad, const Teller &tell)
{
    bool unfit = false;
    for (const Needed &number : numbers) {
        std::string text;
        if (bad.has(number.field))
            text = formatted<"the %s cannot be read">(number.name);
        else if (!(number.value >= number.least && number.value < number.limit))
            text = formatted<"a %s of %.9g is out of range">(number.name, number.value);
        if (text.empty())
            continue;
        tell(Severity::error, "bad-value", text + ": the epoch is left out");
        unfit = true;
    }
    return unfit;
}

constexpr double Any = std::numeric_limits<double>::infinity();
const double Behind_180 = std::nextafter(180.0, 181.0);
const double Behind_90 = std::nextafter(90.0, 91.0);

void write_time(xml::Writer &to, xml::Name name, double time)
{
    if (const std::string text = xml_time(time); !text.empty())
        to.attribute(name, text);
}

void tell_replaced(xml::Writer &to, const Teller &tell)
{
    if (const auto count = to.take_replaced())
        tell(Severity::warning, "text-replaced",
             formatted<"%lu characters that XML cannot hold were replaced">(count));
}

template <class Epoch>
void write_times(xml::Writer &to, const Epoch &epoch, int start_field, const Teller &tell)
{
    write_time(to, "startDate", epoch.start);
    write_time(to, "endDate", epoch.end);
    for (const int field : {start_field, start_field + 1})
        if (epoch.bad_fields.has(field))
            tell(Severity::warning, "bad-time",
                 formatted<"the %s of the epoch is no time: it is left out">(
                     field == start_field ? "start" : "end"));
}

void write_comment(xml::Writer &to, const CarriedComment &carried, const Teller &tell)
{
    const Comment &comment = *carried.comment;
    const DictionaryEntry *entry = carried.inventory->entry(Dictionary::comments, comment.key);
    if (comment.bad)
        tell(Severity::warning, "bad-comment",
             formatted<"a field of comment %d cannot be read">(comment.key));
    if (!entry) {
        tell(Severity::warning, "comment-undefined",
             formatted<"comment %d is not defined: it is left out">(comment.key));
        return;
    }
    to.open("Comment");
    if (comment.key >= 0)
        to.attribute("id", std::int64_t{comment.key});
    if (!entry->comment_class.empty())
        to.attribute("subject", entry->comment_class);
    to.element("Value", std::string_view(text_of(carried)));
    if (const std::string start = xml_time(comment.start); !start.empty())
        to.element("BeginEffectiveTime", std::string_view(start));
    if (const std::string end = xml_time(comment.end); !end.empty())
        to.element("EndEffectiveTime", std::string_view(end));
    to.close();
}

void write_comments(xml::Writer &to, const std::vector<CarriedComment> &comments,
                    const Teller &tell)
{
    for (const CarriedComment &comment : comments)
        write_comment(to, comment, tell);
}

double turned(double azimuth)
{
    if (azimuth >= 0.0 && azimuth < 360.0)
        return azimuth;
    return azimuth == 360.0 ? 0.0 : azimuth < 0.0 ? azimuth + 360.0 : azimuth - 360.0;
}

void write_orientation(xml::Writer &to, const ChannelEpoch &epoch, const Teller &tell)
{
    const double azimuth = turned(epoch.azimuth);
    if (!epoch.bad_fields.has(14) && azimuth >= 0.0 && azimuth < 360.0)
        to.element("Azimuth", azimuth);
    else
        tell(Severity::warning, "bad-value", "the azimuth is no direction: it is left out");
    if (!epoch.bad_fields.has(15) && epoch.dip >= -90.0 && epoch.dip <= 90.0)
        to.element("Dip", epoch.dip);
    else
        tell(Severity::warning, "bad-value", "the dip is no direction: it is left out");
}

void write_types(xml::Writer &to, const std::string &flags)
{
    static constexpr std::array<std::pair<char, std::string_view>, 11> Words = {
        {{'T', "TRIGGERED"},
         {'C', "CONTINUOUS"},
         {'H', "HEALTH"},
         {'G', "GEOPHYSICAL"},
         {'W', "WEATHER"},
         {'F', "FLAG"},
         {'S', "SYNTHESIZED"},
         {'I', "INPUT"},
         {'E', "EXPERIMENTAL"},
         {'M', "MAINTENANCE"},
         {'B', "BEAM"}}};
    for (std::size_t i = 0; i < flags.size(); ++i)
        for (const auto &[letter, word] : Words)
            if (letter == flags[i] && flags.find(letter) == i)
                to.element("Type", word);
}

void write_sampling(xml::Writer &to, const ChannelEpoch &epoch, const Teller &tell)
{
    if (epoch.bad_fields.has(18))
        tell(Severity::warning, "bad-value", "the sample rate cannot be read: it is left out");
    else
        to.element("SampleRate", epoch.sample_rate);
    if (epoch.bad_fields.has(19) || !(epoch.clock_drift >= 0.0))
        tell(Severity::warning, "bad-value",
             "the clock drift is no number from 0 on: it is left out");
    else if (epoch.clock_drift != 0.0)
        to.element("ClockDrift", epoch.clock_drift);
}

void write_calibration_units(xml::Writer &to, const CarriedChannel &channel, const Teller &tell)
{
    const int code = channel.epoch->calibration_units;
    if (code == 0)
        return;
    const DictionaryEntry *unit = channel.inventory->entry(Dictionary::units, code);
    if (!unit || trimmed(unit->text).empty()) {
        tell(Severity::warning, "unit-undefined",
             formatted<"the unit of calibrations, %d, has no name: it is left out">(code));
        return;
    }
    to.open("CalibrationUnits");
    to.element("Name", trimmed(unit->text));
    if (const auto description = trimmed(unit->description); !description.empty())
        to.element("Description", description);
    to.close();
}

void write_sensor(xml::Writer &to, const CarriedChannel &channel, const Teller &tell)
{
    const int code = channel.epoch->instrument;
    const DictionaryEntry *entry = channel.inventory->entry(Dictionary::abbreviations, code);
    if (!entry && code != 0)
        tell(Severity::warning, "abbreviation-undefined",
             formatted<"the instrument, %d, is not defined: it is left out">(code));
    if (!entry || code == 0)
        return;
    to.open("Sensor");
    to.element("Description", trimmed(entry->text));
    to.close();
}

/// What has no element, for who needs it.
void keep_rest(xml::Writer &to, const CarriedChannel &channel)
{
    const ChannelEpoch &epoch = *channel.epoch;
    const int subchannel = code_of(channel).subchannel();
    if (subchannel != 0)
        to.comment(formatted<"subchannel %d">(subchannel));
    const DictionaryEntry *format =
        channel.inventory->entry(Dictionary::data_formats, epoch.format);
    to.comment(formatted<"data format: %s, records of %d bytes">(format ? format->text : "unknown",
                                                                 epoch.record_length));
    to.comment(formatted<"channel flags: %s">(epoch.flags));
    for (const Calibration &entry : epoch.calibrations)
        to.comment(formatted<"stage %d: calibration %.9g at %.9g Hz, %s">(
            entry.stage, entry.gain.value, entry.gain.frequency, entry.time));
}

void write_parts(const ElementWriting &writing, const CarriedChannel &channel, const Teller &tell)
{
    xml::Writer &to = writing.to;
    const ChannelEpoch &epoch = *channel.epoch;
    if (const auto text = trimmed(epoch.comment); !text.empty())
        to.element("Description", text);
    write_comments(to, channel.comments, tell);
    if (writing.options.keep_all)
        keep_rest(to, channel);
    to.element("Latitude", epoch.latitude);
    to.element("Longitude", epoch.longitude);
    to.element("Elevation", epoch.elevation);
    to.element("Depth", epoch.depth);
    write_orientation(to, epoch, tell);
    write_types(to, epoch.flags);
    write_sampling(to, epoch, tell);
    write_calibration_units(to, channel, tell);
    write_sensor(to, channel, tell);
    write_response(writing, channel, tell);
}

std::string collected(const std::function<void(xml::Writer &)> &write)
{
    std::string text;
    xml::Writer to([&](std::string_view piece) { text += piece; });
    write(to);
    to.finish();
    return text;
}

/// As `options`, and tells nobody.
CarryOptions silent(const CarryOptions &options)
{
    CarryOptions quiet;
    quiet.level = options.level;
    return quiet;
}

} // namespace

std::string xml_time(double seconds)
{
    constexpr double Ticks = 10000; // of 0.0001 s
    constexpr int Microseconds = 100;
    if (seconds == Always || seconds == Forever || !(std::fabs(seconds) < 1e12))
        return {};
    const Time time{std::chrono::microseconds(std::llround(seconds * Ticks) * Microseconds)};
    std::string text = iso_text(time);
    constexpr std::size_t Whole = std::string_view("2018-07-10T12:30:00").size();
    if (text.size() <= Whole)
        return text;
    const bool whole = text.compare(Whole, 5, ".0000") == 0;
    text.resize(whole ? Whole : Whole + 5);
    return text + 'Z';
}

bool is_unfit(const CarriedStation &station, const CarryOptions &options)
{
    const StationEpoch &epoch = *station.epoch;
    const Teller tell(options, station);
    const std::array<Needed, 3> needed = {{{"latitude", epoch.latitude, 4, -90.0, 90.0},
                                           {"longitude", epoch.longitude, 5, -180.0, Behind_180},
                                           {"elevation", epoch.elevation, 6, -Any, Any}}};
    bool unfit = lacks(needed, epoch.bad_fields, tell);
    if (code_of(station).station().empty()) {
        tell(Severity::error, "bad-value", "there is no station code: the epoch is left out");
        unfit = true;
    }
    return unfit;
}

bool is_unfit(const CarriedChannel &channel, const CarryOptions &options)
{
    const ChannelEpoch &epoch = *channel.epoch;
    const Teller tell(options, channel);
    const std::array<Needed, 4> needed = {{{"latitude", epoch.latitude, 10, -90.0, 90.0},
                                           {"longitude", epoch.longitude, 11, -180.0, Behind_180},
                                           {"elevation", epoch.elevation, 12, -Any, Any},
                                           {"depth", epoch.depth, 13, -Any, Any}}};
    bool unfit = lacks(needed, epoch.bad_fields, tell);
    if (code_of(channel).channel().empty()) {
        tell(Severity::error, "bad-value", "there is no channel code: the epoch is left out");
        unfit = true;
    }
    return unfit;
}

void begin_station(const ElementWriting &writing, const CarriedStation &station)
{
    xml::Writer &to = writing.to;
    const StationEpoch &epoch = *station.epoch;
    const Teller tell(writing.options, station);
    to.open("Station");
    to.attribute("code", code_of(station).station());
    write_times(to, epoch, 13, tell);
    write_comments(to, station.comments, tell);
    to.element("Latitude", epoch.latitude);
    to.element("Longitude", epoch.longitude);
    to.element("Elevation", epoch.elevation);
    to.open("Site");
    to.element("Name", trimmed(epoch.name));
    to.close();
    tell_replaced(to, tell);
}

void write_channel(const ElementWriting &writing, const CarriedChannel &channel)
{
    xml::Writer &to = writing.to;
    const Teller tell(writing.options, channel);
    to.open("Channel");
    to.attribute("code", code_of(channel).channel());
    write_times(to, *channel.epoch, 22, tell);
    to.attribute("locationCode", code_of(channel).location());
    write_parts(writing, channel, tell);
    to.close();
    tell_replaced(to, tell);
}

std::string text_of(const CarriedStation &station, const CarryOptions &options)
{
    CarriedStation plain = station;
    plain.comments.clear();
    const CarryOptions quiet = silent(options);
    return collected([&](xml::Writer &to) { begin_station({to, quiet}, plain); });
}

std::string text_of(const CarriedChannel &channel, const CarryOptions &options)
{
    CarriedChannel plain = channel;
    plain.comments.clear();
    const CarryOptions quiet = silent(options);
    return collected([&](xml::Writer &to) { write_channel({to, quiet}, plain); });
}

std::string text_of(const CarriedComment &comment)
{
    const Inventory &inventory = *comment.inventory;
    const DictionaryEntry *entry = inventory.entry(Dictionary::comments, comment.comment->key);
    std::string text(entry ? trimmed(entry->text) : std::string_view());
    if (entry && comment.comment->level != 0) {
        const std::string unit(trimmed(inventory.unit(entry->level_unit)));
        text += formatted<"%s(level %d%s)">(text.empty() ? "" : " ", comment.comment->level,
                                            unit.empty() ? "" : " " + unit);
    }
    return text;
}

} // namespace quarl
