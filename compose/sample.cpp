#include "compose/sample.h"

#include "compose/blockette_text.h"
#include "compose/sample_response.h"
#include "compose/samples.h"
#include "compose/volume.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <map>
#include <numbers>
#include <stdexcept>
#include <vector>

namespace
{

constexpr int Record_Exponent = 12;
constexpr const char *Begin = "2024,061,00:00:00.0000";
constexpr const char *End = "2024,061,00:05:00.0000";

// Codes of the dictionaries.
enum Format { Steim1 = 1, Steim2 = 2, Int32 = 3 };
enum Abbreviation { Network = 1, Seismometer = 2, Barometer = 3, Datalogger = 4 };
enum Comment { Clock_Locked = 1, Sensor_Swapped = 2 };

struct Station {
    const char *code;
    double lat, lon, elev;
    const char *name;
};

/// A channel and its data: records of 4096 bytes with these samples, one behind the other from the
/// given second on.
struct Channel {
    const char *station;
    const char *location;
    const char *code;
    double azimuth, dip, rate;
    Format format;
    int encoding;              ///< what Blockette 1000 says
    std::array<int, 2> starts; ///< s behind Begin; below 0: no such record
    std::array<int, 2> samples;
    double event; ///< counts of the earthquake at its largest
};

constexpr std::array<Station, 2> Stations = {{
    {"QRL1", 46.512300, 8.104500, 1742.0, "Quarry Lake vault, invented"},
    {"QRL2", 46.498750, 8.150250, 1215.5, "Quarry Lake village, invented"},
}};

// QRL2 BHZ is the channel whose records do not hold what the dictionary promises. It has a gap,
// too.
constexpr std::array<Channel, 6> Channels = {{
    {"QRL1", "00", "BHZ", 0, -90, 20, Steim2, 11, {0, 145}, {2900, 3100}, 5200},
    {"QRL1", "00", "BHN", 0, 0, 20, Steim2, 11, {0, 140}, {2800, 3200}, 8100},
    {"QRL1", "00", "BHE", 90, 0, 20, Steim2, 11, {0, 142}, {2840, 3160}, 6900},
    {"QRL1", "00", "LHZ", 0, -90, 1, Steim1, 10, {0, -1}, {300, 0}, 40},
    {"QRL1", "", "LDO", 0, 0, 1, Int32, 3, {0, -1}, {300, 0}, 0},
    {"QRL2", "", "BHZ", 0, -90, 20, Steim1, 11, {0, 140}, {2400, 3200}, 4400},
}};

std::string channel_key(const Channel &c, int record)
{
    return std::string(c.station) + c.location + c.code + std::to_string(record);
}

int last_record(const Channel &c) { return c.starts[1] < 0 ? 0 : 1; }

/// Record numbers of station headers, of the time span header and of each channel's records:
/// the indices stand before what they point at, so the volume is composed twice.
using Numbers = std::map<std::string, int>;

bool is_pressure(const Channel &c) { return c.code[1] == 'D'; }

/// Tenths of a millisecond behind Begin as text.
std::string time_text(int ticks)
{
    const int seconds = ticks / 10000;
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "2024,061,00:%02d:%02d.%04d", seconds / 60,
                  seconds % 60, ticks % 10000);
    return text.data();
}

std::string start_of(const Channel &c, int record) { return time_text(c.starts[record] * 10000); }

/// Of the last sample.
std::string end_of(const Channel &c)
{
    const int last = last_record(c);
    return time_text(c.starts[last] * 10000 +
                     static_cast<int>((c.samples[last] - 1) * 10000 / c.rate));
}

void add_index(VolumeBuilder *v, const Numbers &at)
{
    std::vector<StationEntry> stations;
    stations.reserve(Stations.size());
    for (const Station &s : Stations)
        stations.push_back({s.code, at.at(s.code)});
    v->header('V');
    v->blockette(10, b010(2.4, Record_Exponent, Begin, End, "2024,062,09:30:00.0000",
                          "Quarry Lake Observatory", "Sample volume"));
    v->blockette(11, b011(stations));
    v->blockette(12, b012({{Begin, End, at.at("span")}}));
}

using Keys = std::vector<std::string>;

const Keys &steim1_keys()
{
    static const Keys keys = {"F1 P4 W4 D C2 R1 P8 W4 D C2",
                              "P0 W4 N15 S2,0,1",
                              "T0 X W4",
                              "T1 Y4 W1 D C2",
                              "T2 Y2 W2 D C2",
                              "T3 N0 W4 D C2"};
    return keys;
}

const Keys &steim2_keys()
{
    static const Keys keys = {"F1 P4 W4 D C2 R1 P8 W4 D C2",
                              "P0 W4 N15 S2,0,1",
                              "T0 X W4",
                              "T1 Y4 W1 D",
                              "T2 W4 I D2",
                              "K0 X D30",
                              "K1 N0 D30 C2",
                              "K2 Y2 D15 C2",
                              "K3 Y3 D10 C2",
                              "T3 W4 I D2",
                              "K0 Y5 D6 C2",
                              "K1 Y6 D5 C2",
                              "K2 X D2 Y7 D4 C2",
                              "K3 X D30"};
    return keys;
}

void add_dictionaries(VolumeBuilder *v)
{
    v->header('A');
    v->blockette(30, b030("Steim Integer Compression Format", Steim1, 50, steim1_keys()));
    v->blockette(30, b030("Steim2 Integer Compression Format", Steim2, 50, steim2_keys()));
    v->blockette(30, b030("32-Bit Integer Format", Int32, 0, {"M0", "W4 D0-31 C2"}));
    v->blockette(31, b031(Clock_Locked, 'S', "Clock locked to satellite time", 0));
    v->blockette(31, b031(Sensor_Swapped, 'C', "Sensor exchanged", 0));
    v->blockette(32, b032(1, "Quarry Lake Bulletin", "2024", "Quarry Lake Observatory"));
    v->blockette(33, b033(Network, "Quarry Lake Network, invented"));
    v->blockette(33, b033(Seismometer, "Broadband seismometer, 120 s"));
    v->blockette(33, b033(Barometer, "Absolute barometer"));
    v->blockette(33, b033(Datalogger, "24-bit datalogger"));
    v->blockette(34, b034(Velocity, "M/S", "Velocity in Metres per Second"));
    v->blockette(34, b034(Volts, "V", "Volts"));
    v->blockette(34, b034(Counts, "COUNTS", "Digital Counts"));
    v->blockette(34, b034(Pressure, "PA", "Pressure in Pascals"));
}

void add_channel(VolumeBuilder *v, const Station &s, const Channel &c)
{
    v->blockette(52, b052({.location = c.location,
                           .channel = c.code,
                           .instrument = is_pressure(c) ? Barometer : Seismometer,
                           .comment = is_pressure(c) ? "in the vault door" : "",
                           .units_signal = is_pressure(c) ? Pressure : Velocity,
                           .units_calibration = Volts,
                           .lat = s.lat,
                           .lon = s.lon,
                           .elev = s.elev,
                           .depth = is_pressure(c) ? 0.0 : 3.5,
                           .azimuth = c.azimuth,
                           .dip = c.dip,
                           .format = c.format,
                           .exponent = Record_Exponent,
                           .rate = c.rate,
                           .drift = 1e-5,
                           .num_comments = is_pressure(c) ? 0 : 1,
                           .flags = is_pressure(c) ? "CW" : "CG",
                           .start = "2021,152"}));
    if (is_pressure(c))
        return add_barometer(v);
    add_seismometer(v, c.rate);
    v->blockette(59, b059("2023,100", "2023,101", Sensor_Swapped, 0));
}

void add_station(VolumeBuilder *v, const Station &s, Numbers *at)
{
    v->header('S');
    (*at)[s.code] = v->next_sequence();
    int channels = 0;
    for (const Channel &c : Channels)
        channels += s.code == std::string(c.station);
    v->blockette(50, b050({.station = s.code,
                           .lat = s.lat,
                           .lon = s.lon,
                           .elev = s.elev,
                           .num_chans = channels,
                           .num_comments = 1,
                           .name = s.name,
                           .net_id = Network,
                           .start = "2021,152"}));
    v->blockette(51, b051("2021,152", "", Clock_Locked, 0));
    for (const Channel &c : Channels)
        if (s.code == std::string(c.station))
            add_channel(v, s, c);
}

void add_span(VolumeBuilder *v, Numbers *at)
{
    v->header('T');
    (*at)["span"] = v->next_sequence();
    v->blockette(70, b070('E', Begin, End));
    v->blockette(71, b071({.time = "2024,061,00:00:40.1000",
                           .source = 1,
                           .lat = 46.41,
                           .lon = 7.93,
                           .depth = 8.2,
                           .magnitudes = {{3.1, "ML", 1}, {2.9, "Mw", 1}},
                           .region = 36,
                           .location = 544,
                           .region_name = "SWITZERLAND"}));
    v->blockette(72, b072({.station = "QRL1",
                           .location = "00",
                           .time = "2024,061,00:00:43.4000",
                           .amplitude = 5200,
                           .period = 0.25,
                           .snr = 12.5,
                           .phase = "Pg",
                           .source = 1}));
    for (const Channel &c : Channels) {
        const int last = last_record(c);
        v->blockette(74, b074({.station = c.station,
                               .location = c.location,
                               .channel = c.code,
                               .first = {start_of(c, 0), (*at)[channel_key(c, 0)], 1},
                               .last = {end_of(c), (*at)[channel_key(c, last)], 1}}));
    }
}

/// Noise, and the earthquake from its first arrival on: P, after 2.3 s S, and what they leave.
double ground(const Channel &c, double seconds, std::uint32_t *seed)
{
    constexpr double Arrival = 43.4, S_Minus_P = 2.3, Decay = 7;
    *seed = *seed * 1664525U + 1013904223U;
    double value = static_cast<double>(*seed >> 24U) / 16 - 8;
    const auto wave = [&](double after, double hertz) {
        return after < 0 ? 0
                         : c.event * std::sin(2 * std::numbers::pi * hertz * after) *
                               (1 - std::exp(-4 * after)) * std::exp(-after / Decay);
    };
    const double hertz = c.rate > 2 ? 2 : 0.1;
    const double horizontal = c.dip == 0 ? 1 : 0.6; ///< S moves the ground to and fro
    value += (1.2 - horizontal) * wave(seconds - Arrival, 1.5 * hertz);
    return value + horizontal * wave(seconds - Arrival - S_Minus_P, hertz);
}

/// Counts of a barometer at 84,000 Pa.
double pressure(double seconds)
{
    return 1006632 + 40 * std::sin(seconds / 60) + 3 * std::sin(seconds);
}

std::vector<std::int32_t> samples_of(const Channel &c, int record)
{
    auto seed = static_cast<std::uint32_t>(c.code[2] + 1000 * c.station[3] + record);
    std::vector<std::int32_t> values;
    for (int i = 0; i < c.samples[record]; ++i) {
        const double seconds = c.starts[record] + i / c.rate;
        values.push_back(static_cast<std::int32_t>(
            std::lround(is_pressure(c) ? pressure(seconds) : ground(c, seconds, &seed))));
    }
    return values;
}

std::string payload(const Channel &c, int record)
{
    constexpr std::size_t Frames = 63; ///< beside a frame of header
    const std::vector<std::int32_t> values = samples_of(c, record);
    if (c.encoding == 3) {
        std::string bytes = packed(values, 4, false);
        bytes.resize(Frames * 64);
        return bytes;
    }
    SteimFrames packed =
        steim_frames(values, {.version = c.encoding == 10 ? 1 : 2,
                              .frames = Frames,
                              .previous = record > 0 ? samples_of(c, record - 1).back() : 0,
                              .fill = true});
    if (packed.samples != values.size())
        throw std::length_error("the samples of a record do not fit");
    return packed.bytes;
}

void add_data(VolumeBuilder *v, const Channel &c, Numbers *at)
{
    for (int record = 0; record <= last_record(c); ++record) {
        (*at)[channel_key(c, record)] = v->next_sequence();
        v->data({.quality = 'D',
                 .station = c.station,
                 .location = c.location,
                 .channel = c.code,
                 .network = "XX",
                 .time = start_of(c, record),
                 .samples = c.samples[record],
                 .rate_factor = static_cast<int>(c.rate),
                 .io_flags = 0x20,
                 .length = 1 << Record_Exponent,
                 .b1000 = DataOnly{c.encoding, 1, Record_Exponent},
                 .payload = payload(c, record)});
    }
}

std::string compose(Numbers *at)
{
    VolumeBuilder volume(1 << Record_Exponent);
    add_index(&volume, *at);
    add_dictionaries(&volume);
    for (const Station &s : Stations)
        add_station(&volume, s, at);
    add_span(&volume, at);
    for (const Channel &c : Channels)
        add_data(&volume, c, at);
    return volume.volume();
}

} // namespace

std::string sample_volume()
{
    Numbers at = {{"span", 0}};
    for (const Station &s : Stations)
        at[s.code] = 0;
    compose(&at);
    return compose(&at);
}
