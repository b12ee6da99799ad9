// Volumes made to be slow, in growing sizes: items per second must stay level.
#include "bench_support.h"
#include "compose/blockette_text.h"
#include "compose/volume.h"

#include <benchmark/benchmark.h>
#include <cstdio>

namespace
{

constexpr int Record_Length = 4096;

constexpr int Prefix_Size = 7;

VolumeBuilder begin_volume()
{
    VolumeBuilder volume(Record_Length);
    volume.header('V').blockette(10, b010(2.4, 12, "2020,001", "", "", "", ""));
    return volume;
}

/// Reads a volume of `items` hostile items through; at least as many have to come out.
void read_hostile(benchmark::State &state, const std::string &volume)
{
    const MemoryFile file(volume);
    const Quiet quiet;
    std::int64_t items = 0;
    for ([[maybe_unused]] auto _ : state)
        items = read_through(file.path());
    if (items < state.range(0))
        state.SkipWithError("the volume was not read through");
    state.SetItemsProcessed(state.iterations() * items);
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(volume.size()));
}

void tenfold(benchmark::internal::Benchmark *benchmark)
{
    benchmark->Arg(10000)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);
}

/// Logical records of 2 bytes, which a volume identifier without an exponent asks for: every second
/// byte begins a blockette of type 0 and length 0.
void records_of_2_bytes(benchmark::State &state)
{
    std::string volume = "000001V 0100000";
    volume.append(2 * (state.range(0) + Prefix_Size), '0');
    read_hostile(state, volume);
}
BENCHMARK(records_of_2_bytes)->Apply(tenfold);

/// Response blockettes of 24 bytes that promise 9999 coefficients.
void counts_of_9999(benchmark::State &state)
{
    VolumeBuilder volume = begin_volume();
    for (std::int64_t i = 0; i < state.range(0); i++)
        volume.blockette(54, "D0100200399999999");
    read_hostile(state, volume.volume());
}
BENCHMARK(counts_of_9999)->Arg(100)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

/// Blockettes of length 0: nothing but prefixes.
void lengths_of_0(benchmark::State &state)
{
    VolumeBuilder volume = begin_volume();
    for (std::int64_t i = 0; i < state.range(0); i++)
        volume.blockette(33, "0000", "");
    read_hostile(state, volume.volume());
}
BENCHMARK(lengths_of_0)->Apply(tenfold);

/// Day `number` counted back from the end of 2029, as a SEED time.
std::string day_before_2030(std::int64_t number)
{
    constexpr std::int64_t Days = 365;
    constexpr std::int64_t Hours = 24;
    const std::int64_t day = number / Hours;
    char text[80];
    std::snprintf(text, sizeof text, "%04d,%03d,%02d", static_cast<int>(2029 - day / Days),
                  static_cast<int>(Days - day % Days), static_cast<int>(23 - number % Hours));
    return text;
}

/// Epochs of one channel, each beginning an hour before the one in front of it, all of them open.
void descending_epochs(benchmark::State &state)
{
    VolumeBuilder volume = begin_volume();
    volume.header('A').blockette(30, b030("Steim2 Integer Compression Format", 1, 50, {}));
    volume.header('S').blockette(50, b050({}));
    for (std::int64_t i = 0; i < state.range(0); i++)
        volume.blockette(52, b052({.start = day_before_2030(i)}));
    read_hostile(state, volume.volume());
}
BENCHMARK(descending_epochs)->Apply(tenfold);

} // namespace
