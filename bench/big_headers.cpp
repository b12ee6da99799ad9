#include "big_headers.h"

#include "compose/volume.h"
#include "random.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <span>

namespace
{

// Codes of the dictionaries.
enum Format { Steim2 = 2 };
enum Abbreviation { Network = 1, Seismometer = 2, Barometer = 3 };
enum Unit { Velocity = 1, Volts = 2, Counts = 3, Pressure = 4 };
enum Comment { First_Comment = 1, Comments = 8 };

constexpr std::array<const char *, 12> Codes = {"BHZ", "BHN", "BHE", "LHZ", "LHN", "LHE",
                                                "HHZ", "HHN", "HHE", "VHZ", "LDO", "LKI"};

int rate_of(std::string_view code)
{
    switch (code[0]) {
    case 'H':
        return 100;
    case 'B':
        return 20;
    default:
        return 1;
    }
}

/// Epochs follow one another without gaps; the last one is open.
struct Epoch {
    std::string begin;
    std::string end;
};

Epoch epoch_of(int index, int epochs)
{
    constexpr int Last_Begins = 2020;
    constexpr int Years = 3;
    const auto begin_of = [&](int i) {
        return std::to_string(Last_Begins - (epochs - 1 - i) * Years) + ",001";
    };
    return {begin_of(index), index + 1 < epochs ? begin_of(index + 1) : ""};
}

std::vector<Root> make_roots(Random *random, int pairs)
{
    std::vector<Root> roots;
    for (int i = 0; i < pairs; i++) {
        const double real = -std::abs(random->real(-2.5, 3));
        const double imag = std::abs(random->real(-2.5, 3));
        const double error = random->one_in(8) ? std::abs(random->real(-4, -1)) : 0;
        roots.push_back({real, imag, error, error});
        roots.push_back({real, -imag, error, error});
    }
    return roots;
}

/// Writes the response of one channel epoch.
class Response
{
public:
    Response(VolumeBuilder *volume, Random *random, double rate)
        : volume_(*volume), random_(*random), rate_(rate)
    {
    }

    void write(bool brief)
    {
        write_sensor();
        write_digitiser();
        const int filters = brief ? 1 : random_.between(2, 5);
        for (int i = 0; i < filters; i++)
            write_filter(brief ? 30 : random_.between(30, 150));
        gain(0, std::abs(random_.real(7, 10)));
    }

private:
    void gain(int stage, double value) { volume_.blockette(58, b058(stage, value, 0.05)); }

    void write_sensor()
    {
        if (random_.one_in(20))
            write_polynomial();
        else if (random_.one_in(20))
            write_list();
        else
            write_poles();
        gain(stage_++, std::abs(random_.real(2, 4)));
    }

    void write_poles()
    {
        auto zeros = make_roots(&random_, random_.between(0, 2));
        zeros.insert(zeros.begin(), 2, Root{});
        volume_.blockette(53, b053({.stage = stage_,
                                    .input_units = Velocity,
                                    .output_units = Volts,
                                    .factor = std::abs(random_.real(1, 18)),
                                    .frequency = 0.05,
                                    .zeros = zeros,
                                    .poles = make_roots(&random_, random_.between(2, 6))}));
    }

    void write_polynomial()
    {
        Coefficients list;
        for (int i = random_.between(2, 8); i > 0; i--)
            list.emplace_back(random_.real(-6, 5), random_.real(-9, -6));
        volume_.blockette(62, b062({.stage = stage_,
                                    .input_units = Pressure,
                                    .output_units = Volts,
                                    .upper_frequency = 0.5,
                                    .lower_bound = random_.uniform(50000, 70000),
                                    .upper_bound = random_.uniform(100000, 120000),
                                    .maximum_error = random_.uniform(0, 9),
                                    .coefficients = list}));
    }

    void write_list()
    {
        std::vector<ResponsePoint> points;
        for (int i = random_.between(20, 60); i > 0; i--)
            points.push_back({std::abs(random_.real(-3, 1.5)), random_.uniform(0.01, 1.1),
                              random_.uniform(0, 0.01), random_.uniform(-180, 180),
                              random_.uniform(0, 0.5)});
        volume_.blockette(55, b055(stage_, Velocity, Volts, points));
    }

    void write_digitiser()
    {
        volume_.blockette(54,
                          b054({.stage = stage_, .input_units = Volts, .output_units = Counts}));
        decimation(1, 0);
        gain(stage_++, random_.uniform(4e5, 5e5));
    }

    void decimation(int factor, int taps)
    {
        const double delay = taps / 2.0 / (rate_ * factor);
        volume_.blockette(57, b057(stage_, rate_ * factor, factor, 0, delay, delay));
    }

    /// Mostly a FIR filter; sometimes the same as coefficients with errors.
    void write_filter(int taps)
    {
        if (random_.one_in(6)) {
            Coefficients list;
            for (int i = 0; i < taps; i++)
                list.emplace_back(random_.real(-8, 0), i % 4 == 0 ? random_.real(-9, -7) : 0);
            volume_.blockette(54, b054({.type = 'D',
                                        .stage = stage_,
                                        .input_units = Counts,
                                        .output_units = Counts,
                                        .numerators = list}));
        } else {
            std::vector<double> list(taps);
            std::generate(list.begin(), list.end(), [&] { return random_.real(-8, 0); });
            volume_.blockette(61, b061({.stage = stage_,
                                        .name = "FIR_" + std::to_string(taps),
                                        .symmetry = "ABC"[random_.below(3)],
                                        .input_units = Counts,
                                        .output_units = Counts,
                                        .coefficients = list}));
        }
        decimation(random_.between(2, 5), taps);
        gain(stage_++, 1);
    }

    VolumeBuilder &volume_;
    Random &random_;
    double rate_;
    int stage_ = 1;
};

struct Site {
    double lat, lon, elev;
};

void add_epoch(VolumeBuilder *volume, Random *random, const Channel &channel, const Site &site,
               int epoch, const Wealth &wealth)
{
    const auto [begin, end] = epoch_of(epoch, wealth.epochs);
    const bool pressure = channel.code[1] == 'D';
    volume->blockette(52, b052({.location = channel.location,
                                .channel = channel.code,
                                .instrument = pressure ? Barometer : Seismometer,
                                .comment = random->one_in(4) ? "in the vault" : "",
                                .units_signal = pressure ? Pressure : Velocity,
                                .units_calibration = Volts,
                                .lat = site.lat,
                                .lon = site.lon,
                                .elev = site.elev,
                                .depth = random->uniform(0, 120),
                                .azimuth = random->uniform(0, 359),
                                .dip = random->uniform(-90, 90),
                                .format = Steim2,
                                .exponent = wealth.exponent,
                                .rate = static_cast<double>(channel.rate),
                                .drift = random->uniform(1e-6, 1e-4),
                                .start = begin,
                                .end = end}));
    Response(volume, random, channel.rate).write(wealth.brief);
    if (random->one_in(4))
        volume->blockette(59, b059(begin, end, random->between(First_Comment, Comments), 0));
}

} // namespace

std::string station_code(int number)
{
    std::string code = "AAAA";
    for (auto letter = code.rbegin(); letter != code.rend(); ++letter) {
        *letter = static_cast<char>('A' + number % 26);
        number /= 26;
    }
    return code;
}

std::vector<Channel> station_channels(int number, const Wealth &wealth)
{
    const int more = wealth.most_channels - wealth.fewest_channels;
    const int count = wealth.fewest_channels + number % (more + 1);
    std::vector<Channel> channels;
    channels.reserve(count);
    for (int i = 0; i < count; i++)
        channels.push_back(
            {station_code(number), number % 3 == 0 ? "" : "00", Codes[i], rate_of(Codes[i])});
    return channels;
}

std::string index_section(const std::vector<StationEntry> &stations,
                          const std::vector<SpanEntry> &spans)
{
    constexpr std::size_t Stations_Each = 900; // as many as the four digits of a length hold
    VolumeBuilder volume(Header_Length);
    volume.header('V').blockette(10, b010(2.4, 12, spans.empty() ? "2014,001" : spans.front().begin,
                                          spans.empty() ? "" : spans.back().end,
                                          "2024,062,09:30:00.0000", "Quarry Lake Observatory",
                                          "Volume to measure with"));
    for (std::size_t i = 0; i < stations.size(); i += Stations_Each) {
        const std::size_t n = std::min(Stations_Each, stations.size() - i);
        const auto part = std::span(stations).subspan(i, n);
        volume.blockette(11, b011({part.begin(), part.end()}));
    }
    if (!spans.empty())
        volume.blockette(12, b012(spans));
    return volume.volume();
}

std::string dictionary_section(int seq)
{
    VolumeBuilder volume(Header_Length);
    volume.sequence(seq).header('A');
    volume.blockette(
        30, b030("Steim2 Integer Compression Format", Steim2, 50,
                 {"F1 P4 W4 D C2 R1 P8 W4 D C2", "P0 W4 N15 S2,0,1", "T0 X W4", "T1 Y4 W1 D",
                  "T2 W4 I D2", "K0 X D30", "K1 N0 D30 C2", "K2 Y2 D15 C2", "K3 Y3 D10 C2",
                  "T3 W4 I D2", "K0 Y5 D6 C2", "K1 Y6 D5 C2", "K2 X D2 Y7 D4 C2", "K3 X D30"}));
    for (int i = First_Comment; i <= Comments; i++)
        volume.blockette(31, b031(i, 'S', "Comment number " + std::to_string(i), 0));
    volume.blockette(32, b032(1, "Quarry Lake Bulletin", "2024", "Quarry Lake Observatory"));
    volume.blockette(33, b033(Network, "Quarry Lake Network, invented"));
    volume.blockette(33, b033(Seismometer, "Broadband seismometer, 120 s"));
    volume.blockette(33, b033(Barometer, "Absolute barometer"));
    volume.blockette(34, b034(Velocity, "M/S", "Velocity in Metres per Second"));
    volume.blockette(34, b034(Volts, "V", "Volts"));
    volume.blockette(34, b034(Counts, "COUNTS", "Digital Counts"));
    volume.blockette(34, b034(Pressure, "PA", "Pressure in Pascals"));
    return volume.volume();
}

std::string station_section(int seq, int number, const Wealth &wealth)
{
    Random random(number);
    const Site site = {random.uniform(-80, 80), random.uniform(-180, 180), random.uniform(0, 4000)};
    const auto channels = station_channels(number, wealth);
    const std::string begin = epoch_of(0, wealth.epochs).begin;
    VolumeBuilder volume(Header_Length);
    volume.sequence(seq).header('S');
    volume.blockette(50, b050({.station = station_code(number),
                               .lat = site.lat,
                               .lon = site.lon,
                               .elev = site.elev,
                               .num_chans = static_cast<int>(channels.size()),
                               .name = "Station " + std::to_string(number) + ", invented",
                               .net_id = Network,
                               .start = begin}));
    for (int i = random.below(4); i > 0; i--)
        volume.blockette(51, b051(begin, "", random.between(First_Comment, Comments), 0));
    for (const Channel &channel : channels)
        for (int epoch = 0; epoch < wealth.epochs; epoch++)
            add_epoch(&volume, &random, channel, site, epoch, wealth);
    return volume.volume();
}

std::string span_section(int seq, Ticks begin, Ticks end, const std::vector<B074> &channels)
{
    VolumeBuilder volume(Header_Length);
    volume.sequence(seq).header('T');
    volume.blockette(70, b070('P', seed_time(begin), seed_time(end)));
    for (const B074 &channel : channels)
        volume.blockette(74, b074(channel));
    return volume.volume();
}
