// Framing and parsing of whole volumes in memory; the other files of this program measure pieces.
#include "bench_support.h"
#include "big_headers.h"
#include "compose/volume.h"

#include <benchmark/benchmark.h>

namespace
{

constexpr std::size_t Volume_Size = 8U << 20U;

/// One described channel and data records of `length` bytes.
std::string data_volume(int length)
{
    const int exponent = length == 512 ? 9 : 12;
    VolumeBuilder volume(Header_Length);
    volume.header('V').blockette(10, b010(2.4, 12, "2020,001", "", "", "", ""));
    volume.header('A').blockette(30, b030("Steim2 Integer Compression Format", 1, 50, {}));
    volume.header('S').blockette(50, b050({}));
    volume.blockette(52, b052({.exponent = exponent}));
    const std::string record =
        data_record_bytes({.time = "2024,061,12:00:00.0000",
                           .length = length,
                           .b1000 = DataOnly{.encoding = 11, .word_order = 1, .exponent = exponent},
                           .timing_quality = 100,
                           .payload = "data"},
                          5);
    std::string bytes = volume.volume();
    while (bytes.size() < Volume_Size)
        bytes += record;
    return bytes;
}

/// All kinds of station, channel and response blockettes.
std::string header_volume()
{
    constexpr Wealth Rich = {.fewest_channels = 6, .most_channels = 12, .epochs = 3};
    std::string bytes = index_section({}, {}) + dictionary_section(2);
    for (int station = 0; bytes.size() < Volume_Size; station++)
        bytes += station_section(3, station, Rich);
    return bytes;
}

/// Items and bytes per second of reading `bytes` through; `least` items have to be in it.
void read_volume(benchmark::State &state, const std::string &bytes, std::int64_t least)
{
    const MemoryFile file(bytes);
    const Quiet quiet;
    std::int64_t items = 0;
    for ([[maybe_unused]] auto _ : state)
        items = read_through(file.path());
    if (items < least)
        state.SkipWithError("the volume was not read through");
    state.SetItemsProcessed(state.iterations() * items);
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes.size()));
}

void data_records(benchmark::State &state)
{
    const auto length = static_cast<int>(state.range(0));
    read_volume(state, data_volume(length), Volume_Size / length - 100);
}
BENCHMARK(data_records)->Arg(512)->Arg(4096)->Unit(benchmark::kMillisecond);

void header_blockettes(benchmark::State &state) { read_volume(state, header_volume(), 10000); }
BENCHMARK(header_blockettes)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
