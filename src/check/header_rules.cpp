// Codes, texts and positions in the headers.
#include "check/rule.h"

#include "platform/text.h"

#include <algorithm>
#include <cmath>

namespace quarl
{

namespace
{

void undefined_code(const Context &context, const Context &, const Report &report)
{
    for (const PendingUse &use : context.uses) {
        if (context.headers_lost || context.inventory.entry(use.dictionary, use.code))
            continue;
        const std::string text = formatted<"blockette %03d">(use.type) + " uses " +
                                 std::string(name_of(use.dictionary)) + " " +
                                 std::to_string(use.code) + ", which no blockette defines";
        report.counted(use.record, use.subject, text, use.count - 1);
    }
}

void code_redefined(const Context &context, const Context &, const Report &report)
{
    for (const Redefinition &again : context.inventory.redefinitions())
        report(again.record, about::Volume{},
               std::string(name_of(again.dictionary)) + " " + std::to_string(again.code) + " is " +
                   quoted(again.before) + " and, from here on, " + quoted(again.after));
}

void instrument_missing(const Context &context, const ChannelEpoch &epoch, const Report &report)
{
    const DictionaryEntry *instrument =
        context.inventory.entry(Dictionary::abbreviations, epoch.instrument);
    if (context.headers_lost ||
        (epoch.instrument != 0 && (!instrument || !blank(instrument->text))))
        return;
    report(epoch.record, context.inventory.channel_of(epoch).code.text(), [&] {
        return Told{subject_of(context.inventory, epoch),
                    epoch.instrument == 0 ? "names no instrument: its code is 0"
                                          : "names no instrument: the text of code " +
                                                std::to_string(epoch.instrument) + " is blank"};
    });
}

bool is_code(std::string_view code, std::size_t least, std::size_t most)
{
    return code.size() >= least && code.size() <= most &&
           std::all_of(code.begin(), code.end(),
                       [](char c) { return is_digit(c) || (c >= 'A' && c <= 'Z'); });
}

void check_code(std::string_view code, std::size_t least, std::size_t most, std::int64_t record,
                const ChannelCode &of, const char *expected, const Report &report)
{
    if (is_code(code, least, most))
        return;
    report(record, of.text(), [&] {
        const bool is_channel = !of.channel().empty() || !of.location().empty();
        return Told{is_channel ? Subject(about::Channel{of}) : Subject(about::Station{of}),
                    "code " + quoted(code) + ", expected " + expected + " of A-Z and 0-9"};
    });
}

std::int64_t record_of(const Context &context, const Station &station)
{
    return context.inventory.station_epochs()[station.epochs.front()].record;
}

/// Network codes came with version 2.3.
bool has_networks(const Context &context)
{
    const VolumeIdentifier &volume = context.inventory.volume();
    return volume.record == 0 ? !context.has_headers : volume.version >= 2.3;
}

ChannelCode station_part(const ChannelCode &code) { return {code.network(), code.station()}; }

void network_code(const Context &context, const Station &station, const Report &report)
{
    if (has_networks(context))
        check_code(station.code.network(), 1, 2, record_of(context, station), station.code,
                   "one or two", report);
}

void network_code_of_data(const Context &context, const DataChannel &channel, const Report &report)
{
    if (has_networks(context))
        check_code(channel.code.network(), 1, 2, channel.first_record, station_part(channel.code),
                   "one or two", report);
}

void station_code(const Context &context, const Station &station, const Report &report)
{
    check_code(station.code.station(), 1, 5, record_of(context, station), station.code,
               "one to five", report);
}

void station_code_of_data(const Context & /*context*/, const DataChannel &channel,
                          const Report &report)
{
    check_code(channel.code.station(), 1, 5, channel.first_record, station_part(channel.code),
               "one to five", report);
}

std::int64_t record_of(const Context &context, const Channel &channel)
{
    return context.inventory.channel_epochs()[channel.epochs.front()].record;
}

void location_code(const Context &context, const Channel &channel, const Report &report)
{
    check_code(channel.code.location(), 0, 2, record_of(context, channel), channel.code,
               "none, or one or two", report);
}

void location_code_of_data(const Context & /*context*/, const DataChannel &channel,
                           const Report &report)
{
    check_code(channel.code.location(), 0, 2, channel.first_record, channel.code,
               "none, or one or two", report);
}

void channel_code(const Context &context, const Channel &channel, const Report &report)
{
    check_code(channel.code.channel(), 3, 3, record_of(context, channel), channel.code, "three",
               report);
}

void channel_code_of_data(const Context & /*context*/, const DataChannel &channel,
                          const Report &report)
{
    check_code(channel.code.channel(), 3, 3, channel.first_record, channel.code, "three", report);
}

struct Range {
    const char *name;
    double value, least, most;
};

/// The first value that is out of its range, in words; empty: there is none.
std::string out_of_range(std::initializer_list<Range> ranges)
{
    for (const Range &range : ranges)
        if (!(range.value >= range.least && range.value <= range.most))
            return std::string(range.name) + " " + shown(range.value) + " degrees, expected " +
                   shown(range.least) + " to " + shown(range.most);
    return {};
}

void station_position(const Context &context, const Station &station, const Report &report)
{
    for (const std::size_t index : station.epochs) {
        const StationEpoch &epoch = context.inventory.station_epochs()[index];
        const std::string text = out_of_range(
            {{"latitude", epoch.latitude, -90, 90}, {"longitude", epoch.longitude, -180, 180}});
        if (!text.empty())
            report(epoch.record, station.code.text(), [&] {
                return Told{subject_of(context.inventory, epoch), text};
            });
    }
}

void channel_position(const Context &context, const ChannelEpoch &epoch, const Report &report)
{
    const std::string text = out_of_range({{"latitude", epoch.latitude, -90, 90},
                                           {"longitude", epoch.longitude, -180, 180},
                                           {"azimuth", epoch.azimuth, 0, 360},
                                           {"dip", epoch.dip, -90, 90}});
    if (!text.empty())
        report(epoch.record, context.inventory.channel_of(epoch).code.text(), [&] {
            return Told{subject_of(context.inventory, epoch), text};
        });
}

void position_distance(const Context &context, const ChannelEpoch &epoch, const Report &report)
{
    constexpr double Most = 1.0; // km
    const StationEpoch &station = context.inventory.station_epochs()[epoch.station_epoch];
    const double apart =
        distance(station.latitude, station.longitude, epoch.latitude, epoch.longitude);
    if (apart <= Most)
        return;
    report(epoch.record, context.inventory.channel_of(epoch).code.text(), [&] {
        return Told{subject_of(context.inventory, epoch),
                    "lies " + shown(std::round(apart * 1000) / 1000) +
                        " km from its station: " + shown(epoch.latitude) + ", " +
                        shown(epoch.longitude) + " and " + shown(station.latitude) + ", " +
                        shown(station.longitude) + " degrees, expected is 1 km at most"};
    });
}

void elevation_distance(const Context &context, const ChannelEpoch &epoch, const Report &report)
{
    constexpr double Most = 1000.0; // m
    const StationEpoch &station = context.inventory.station_epochs()[epoch.station_epoch];
    if (std::abs(epoch.elevation - station.elevation) <= Most)
        return;
    report(epoch.record, context.inventory.channel_of(epoch).code.text(), [&] {
        return Told{subject_of(context.inventory, epoch),
                    "elevation " + shown(epoch.elevation) + " m, its station's is " +
                        shown(station.elevation) + " m, expected is 1000 m between them at most"};
    });
}

constexpr double Off = 5.0; ///< degrees

bool near_angle(double angle, double to)
{
    return std::abs(std::remainder(angle - to, 360.0)) <= Off;
}

void orientation_code(const Context &context, const ChannelEpoch &epoch, const Report &report)
{
    const std::string_view code = context.inventory.channel_of(epoch).code.channel();
    if (code.size() != 3 || std::string_view("HLMN").find(code[1]) == std::string_view::npos)
        return;
    const bool level = std::abs(epoch.dip) <= Off;
    const char letter = code[2];
    std::string expected;
    if (letter == 'N' &&
        (!level || (!near_angle(epoch.azimuth, 0) && !near_angle(epoch.azimuth, 180))))
        expected = "azimuth 0 or 180 and dip 0";
    else if (letter == 'E' &&
             (!level || (!near_angle(epoch.azimuth, 90) && !near_angle(epoch.azimuth, 270))))
        expected = "azimuth 90 or 270 and dip 0";
    else if (letter == 'Z' && !(std::abs(std::abs(epoch.dip) - 90) <= Off))
        expected = "dip -90 or 90";
    if (expected.empty())
        return;
    report(epoch.record, context.inventory.channel_of(epoch).code.text(), [&] {
        return Told{subject_of(context.inventory, epoch),
                    "azimuth " + shown(epoch.azimuth) + " and dip " + shown(epoch.dip) +
                        " degrees, a code that ends with " + std::string(1, letter) + " has " +
                        expected + ", to 5 degrees"};
    });
}

struct Band {
    std::string_view letters;
    double least; ///< samples per second
    double most;
};

void band_code(const Context &context, const ChannelEpoch &epoch, const Report &report)
{
    static constexpr std::array Bands = {
        Band{"FG", 1000, 5000}, Band{"CD", 250, 1000}, Band{"EH", 80, 250},
        Band{"BS", 10, 80},     Band{"M", 1, 10},      Band{"L", 1, 1},
        Band{"V", 0.1, 0.1},    Band{"U", 0.01, 0.01}, Band{"R", 0.0001, 0.001}};
    constexpr double Part = 0.05;
    const std::string_view code = context.inventory.channel_of(epoch).code.channel();
    if (code.size() != 3 || std::string_view("HLN").find(code[1]) == std::string_view::npos ||
        epoch.sample_rate == 0.0)
        return;
    const auto *band = std::find_if(Bands.begin(), Bands.end(), [&](const Band &row) {
        return row.letters.find(code[0]) != std::string_view::npos;
    });
    if (band == Bands.end() || (epoch.sample_rate >= band->least * (1 - Part) &&
                                epoch.sample_rate <= band->most * (1 + Part)))
        return;
    report(epoch.record, context.inventory.channel_of(epoch).code.text(), [&] {
        std::string range = shown(band->least);
        if (band->most > band->least)
            range += " to " + shown(band->most);
        return Told{subject_of(context.inventory, epoch),
                    "a sample rate of " + shown(epoch.sample_rate) + " Hz, band code " +
                        std::string(1, code[0]) + " is of " + range + " Hz"};
    });
}

constexpr std::array Rules = {
    Rule{"undefined-code", Severity::error, "every code that is used is in its dictionary", "uses",
         Look<Context>(undefined_code)},
    Rule{"code-redefined", Severity::warning,
         "no code of a dictionary is defined twice with another text", "definitions",
         Look<Context>(code_redefined)},
    Rule{"instrument-missing", Severity::warning,
         "a channel names its instrument, in a text that is not blank", "epochs",
         Look<ChannelEpoch>(instrument_missing)},
    Rule{"network-code", Severity::error, "a network code is one or two of A-Z and 0-9", "channels",
         Look<Station>(network_code), Look<DataChannel>(network_code_of_data)},
    Rule{"station-code", Severity::error, "a station code is one to five of A-Z and 0-9",
         "channels", Look<Station>(station_code), Look<DataChannel>(station_code_of_data)},
    Rule{"location-code", Severity::error, "a location code is none, or one or two of A-Z and 0-9",
         "channels", Look<Channel>(location_code), Look<DataChannel>(location_code_of_data)},
    Rule{"channel-code", Severity::error, "a channel code is three of A-Z and 0-9", "channels",
         Look<Channel>(channel_code), Look<DataChannel>(channel_code_of_data)},
    Rule{"position-range", Severity::error,
         "latitudes, longitudes, azimuths and dips are in their ranges", "epochs",
         Look<Station>(station_position), Look<ChannelEpoch>(channel_position)},
    Rule{"position-distance", Severity::warning, "a channel lies within 1 km of its station",
         "epochs", Look<ChannelEpoch>(position_distance)},
    Rule{"elevation-distance", Severity::warning,
         "the elevation of a channel is within 1 km of its station's", "epochs",
         Look<ChannelEpoch>(elevation_distance)},
    Rule{"orientation-code", Severity::warning,
         "a seismometer's code that ends with N, E or Z agrees with azimuth and dip, to 5 degrees",
         "epochs", Look<ChannelEpoch>(orientation_code)},
    Rule{"band-code", Severity::warning,
         "the band code of a seismometer channel suits its sample rate, to 5 %", "epochs",
         Look<ChannelEpoch>(band_code)},
};

} // namespace

std::string_view name_of(Dictionary dictionary)
{
    struct Named {
        Dictionary dictionary;
        std::string_view name;
    };
    static constexpr std::array Names = {
        Named{Dictionary::data_formats, "data format (030)"},
        Named{Dictionary::comments, "comment (031)"},
        Named{Dictionary::sources, "cited source (032)"},
        Named{Dictionary::abbreviations, "abbreviation (033)"},
        Named{Dictionary::units, "unit (034)"},
        Named{Dictionary::responses, "response (041-048)"},
    };
    const auto *found = std::find_if(
        Names.begin(), Names.end(), [&](const Named &row) { return row.dictionary == dictionary; });
    return found == Names.end() ? "code" : found->name;
}

std::span<const Rule> header_rules() { return Rules; }

} // namespace quarl
