#include "compose/sample.h"

#include "compose/blockette_text.h"
#include "compose/volume.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <map>

namespace
{

constexpr int Record_Exponent = 12;
constexpr const char *Begin = "2024,061,00:00:00.0000";
constexpr const char *End = "2024,061,00:05:00.0000";

// Codes of the dictionaries.
enum Format { Steim1 = 1, Steim2 = 2, Int32 = 3 };
enum Abbreviation { Network = 1, Seismometer = 2, Barometer = 3, Datalogger = 4 };
enum Unit { Velocity = 1, Volts = 2, Counts = 3, Pressure = 4 };
enum Comment { Clock_Locked = 1, Sensor_Swapped = 2 };

struct Station {
    const char *code;
    double lat, lon, elev;
    const char *name;
};

/// A channel and its data: `count` records of `length` bytes, numbered within 4096 bytes.
struct Channel {
    const char *station;
    const char *location;
    const char *code;
    double azimuth, dip, rate;
    Format format;
    int exponent;
    int encoding; ///< what Blockette 1000 says
    int count;
    int samples; ///< in each record
};

constexpr std::array<Station, 2> Stations = {{
    {"QRL1", 46.512300, 8.104500, 1742.0, "Quarry Lake vault, invented"},
    {"QRL2", 46.498750, 8.150250, 1215.5, "Quarry Lake village, invented"},
}};

// QRL2 BHZ is the channel whose records do not hold what the dictionary promises.
constexpr std::array<Channel, 7> Channels = {{
    {"QRL1", "00", "BHZ", 0, -90, 20, Steim2, 9, 11, 8, 400},
    {"QRL1", "00", "BHN", 0, 0, 20, Steim2, 9, 11, 8, 400},
    {"QRL1", "00", "BHE", 90, 0, 20, Steim2, 9, 11, 8, 400},
    {"QRL1", "00", "LHZ", 0, -90, 1, Steim1, 12, 10, 1, 300},
    {"QRL1", "", "LDO", 0, 0, 1, Int32, 12, 3, 1, 300},
    {"QRL2", "", "BHZ", 0, -90, 20, Steim1, 9, 11, 8, 400},
    {"QRL2", "", "LHZ", 0, -90, 1, Steim1, 12, 10, 1, 300},
}};

std::string channel_key(const Channel &c) { return std::string(c.station) + c.location + c.code; }

/// Record numbers of station headers, of the time span header and of each channel's first record:
/// the indices stand before what they point at, so the volume is composed twice.
using Numbers = std::map<std::string, int>;

bool is_pressure(const Channel &c) { return c.code[1] == 'D'; }

/// Time of the channel's record `index`, as text.
std::string record_time(const Channel &c, int index)
{
    const int seconds = static_cast<int>(index * c.samples / c.rate);
    std::string time = "2024,061,00:00:00.0000";
    time[13] = static_cast<char>('0' + seconds / 60);
    time[15] = static_cast<char>('0' + seconds % 60 / 10);
    time[16] = static_cast<char>('0' + seconds % 10);
    return time;
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

/// Sensor, digitiser and one decimating filter of a seismometer channel.
void add_seismometer(VolumeBuilder *v, const Channel &c)
{
    const double volts = 1500, counts = 419430;
    v->blockette(
        53, b053({.input_units = Velocity,
                  .output_units = Volts,
                  .factor = 3.4684e17,
                  .zeros = {{0, 0}, {0, 0}, {-392, 0}, {-1960, 1490, 5, 5}, {-1960, -1490, 5, 5}},
                  .poles = {{-0.03691, 0.03702},
                            {-0.03691, -0.03702},
                            {-343, 0},
                            {-370, 467, 2.5, 2.5},
                            {-370, -467, 2.5, 2.5}}}));
    v->blockette(58, b058(1, volts, 1));
    v->blockette(54, b054({.stage = 2, .input_units = Volts, .output_units = Counts}));
    v->blockette(57, b057(2, c.rate * 4, 1, 0, 0, 0));
    v->blockette(58, b058(2, counts, 1));
    v->blockette(61, b061({.stage = 3,
                           .name = "FIR_DEC4",
                           .symmetry = 'C',
                           .input_units = Counts,
                           .output_units = Counts,
                           .coefficients = {-0.0021, 0.0148, 0.0967, 0.3906}}));
    v->blockette(57, b057(3, c.rate * 4, 4, 0, 3.5 / (c.rate * 4), 3.5 / (c.rate * 4)));
    v->blockette(58, b058(3, 1, 1));
    v->blockette(58, b058(0, volts * counts, 1));
}

/// A barometer read out by a polynomial, with its calibration as a list of amplitudes.
void add_barometer(VolumeBuilder *v)
{
    v->blockette(62, b062({.input_units = Pressure,
                           .output_units = Counts,
                           .upper_frequency = 0.5,
                           .lower_bound = 60000,
                           .upper_bound = 110000,
                           .maximum_error = 8,
                           .coefficients = {{80000, 4}, {0.125, 0.0005}}}));
    v->blockette(
        55, b055(2, Counts, Counts,
                 {{0.01, 1, 0, 0, 0}, {0.1, 0.998, 0.001, -1.5, 0.1}, {0.5, 0.91, 0.01, -8, 0.5}}));
    v->blockette(58, b058(0, 8, 0.01));
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
                           .exponent = c.exponent,
                           .rate = c.rate,
                           .drift = 1e-5,
                           .num_comments = 1,
                           .start = "2021,152"}));
    if (is_pressure(c))
        add_barometer(v);
    else
        add_seismometer(v, c);
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
    v->blockette(71, b071({.time = "2024,060,23:59:41.2500",
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
                           .time = "2024,061,00:00:02.4000",
                           .amplitude = 42,
                           .period = 0.25,
                           .snr = 12.5,
                           .phase = "Pg",
                           .source = 1}));
    for (const Channel &c : Channels) {
        const int first = (*at)[channel_key(c)];
        v->blockette(74, b074({.station = c.station,
                               .location = c.location,
                               .channel = c.code,
                               .first = {record_time(c, 0), first, 1},
                               .last = {record_time(c, c.count), first, c.count}}));
    }
}

/// Bytes that look like compressed samples, different for each channel.
std::string payload(std::uint32_t seed)
{
    std::string frame;
    for (int i = 0; i < 64; i++) {
        seed = seed * 1664525U + 1013904223U;
        frame += static_cast<char>(seed >> 24U);
    }
    return frame;
}

/// The channel's records share the number of the 4096 bytes that they fill.
void add_data(VolumeBuilder *v, const Channel &c, std::uint32_t seed, Numbers *at)
{
    const int seq = v->next_sequence();
    (*at)[channel_key(c)] = seq;
    for (int i = 0; i < c.count; i++)
        v->data({.seq = seq,
                 .quality = 'D',
                 .station = c.station,
                 .location = c.location,
                 .channel = c.code,
                 .network = "XX",
                 .time = record_time(c, i),
                 .samples = c.samples,
                 .rate_factor = static_cast<int>(c.rate),
                 .io_flags = 0x20,
                 .length = 1 << c.exponent,
                 .b1000 = DataOnly{c.encoding, 1, c.exponent},
                 .payload = payload(seed)});
}

std::string compose(Numbers *at)
{
    VolumeBuilder volume(1 << Record_Exponent);
    add_index(&volume, *at);
    add_dictionaries(&volume);
    for (const Station &s : Stations)
        add_station(&volume, s, at);
    add_span(&volume, at);
    std::uint32_t seed = 1;
    for (const Channel &c : Channels)
        add_data(&volume, c, seed++, at);
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
