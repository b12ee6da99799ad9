// Writes an archive for benchmarks: make_archive FOLDER VOLUMES. Each volume describes one station
// with ten channels; a hundred volumes stand in a folder.
#include "compose/blockette_text.h"
#include "compose/files.h"
#include "compose/volume.h"

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <string>

namespace
{

constexpr int Channels = 10;

/// "A0000" to "Z9999"
std::string station_of(int number)
{
    std::string digits = std::to_string(number % 10000);
    digits.insert(0, 4 - digits.size(), '0');
    return std::string(1, static_cast<char>('A' + number / 10000 % 26)) + digits;
}

void add_response(VolumeBuilder *volume, double sensitivity)
{
    B061 fir{.stage = 3, .symmetry = 'B', .input_units = 3, .output_units = 3};
    for (int i = 0; i < 32; ++i)
        fir.coefficients.push_back(i == 31 ? 0.5 : 0.25 / 31);
    volume->blockette(53, b053({.factor = 6.2839, .zeros = {{0, 0}}, .poles = {{-1, 1}, {-1, -1}}}))
        .blockette(58, b058(1, sensitivity / 100, 1))
        .blockette(54, b054({.stage = 2, .input_units = 2, .output_units = 3}))
        .blockette(57, b057(2, 80, 1, 0, 0, 0))
        .blockette(58, b058(2, 100, 0))
        .blockette(61, b061(fir))
        .blockette(57, b057(3, 80, 4, 0, 0, 0))
        .blockette(58, b058(3, 1, 0))
        .blockette(58, b058(0, sensitivity, 1));
}

std::string volume_of(int number)
{
    const std::string station = station_of(number);
    VolumeBuilder volume(4096);
    volume.header('V').blockette(
        10, b010(2.4, 12, "2020,001", "2024,001", "2024,002", "Benchmark", station));
    volume.blockette(11, b011({{station, 3}})).header('A');
    volume.blockette(30, b030("Steim2 Integer Compression Format", 1, 50, {"F1 P4 W4 D C2 R1"}));
    volume.blockette(33, b033(1, "Network of the benchmark")).blockette(33, b033(2, "STS-2"));
    volume.blockette(34, b034(1, "M/S", "Velocity")).blockette(34, b034(2, "V", "Volts"));
    volume.blockette(34, b034(3, "COUNTS", "Counts")).header('S');
    const double lat = number % 180 - 89.5;
    const double lon = number % 360 - 179.5;
    volume.blockette(50, b050({.station = station, .lat = lat, .lon = lon, .elev = 100}));
    for (int i = 0; i < Channels; ++i) {
        B052 channel{.location = i < 5 ? "00" : "10", .instrument = 2, .lat = lat, .lon = lon};
        channel.elev = 100;
        channel.channel = std::string(1, "BHLSE"[i % 5]) + "HZ";
        channel.exponent = 12;
        volume.blockette(52, b052(channel));
        add_response(&volume, 1e8 + number % 100);
    }
    return volume.volume();
}

} // namespace

int main(int argc, char *argv[])
{
    if (argc != 3) {
        std::cerr << "usage: make_archive FOLDER VOLUMES\n";
        return 2;
    }
    const int count = std::atoi(argv[2]);
    for (int i = 0; i < count; ++i) {
        const std::string folder = std::string(argv[1]) + "/" + std::to_string(i / 100);
        if (i % 100 == 0)
            std::filesystem::create_directories(folder);
        write_file(folder + "/" + station_of(i) + ".seed", volume_of(i));
    }
}
