// Decoding of samples in memory, beside libmseed where it is installed, and beside plain reading.
#include "bench_support.h"
#include "blockette/data_header.h"
#include "compose/samples.h"
#include "compose/volume.h"
#include "random.h"
#include "volume/format_lookup.h"

#include <benchmark/benchmark.h>
#include <cmath>
#ifdef QUARL_HAS_MSEED
#include <libmseed.h>
#endif
#include <memory>
#include <quarl/samples.h>
#include <quarl/volume.h>

namespace
{

constexpr std::size_t Volume_Size = 4U << 20U; ///< more than a processor learns by heart
constexpr std::int64_t Big_Endian = 1;

/// Noise whose strength changes every second or so, as that of the earth does.
class Ground
{
public:
    std::int32_t next()
    {
        if (random_.one_in(200))
            level_ = std::pow(10.0, random_.uniform(0.5, 3.2));
        double kick = -2.0;
        for (int i = 0; i < 4; ++i)
            kick += random_.unit();
        value_ = 0.98 * value_ + kick * level_;
        return static_cast<std::int32_t>(std::lround(value_));
    }

private:
    Random random_{11};
    double level_ = 100.0;
    double value_ = 0.0;
};

/// The data of one record and how many samples they are.
SteimFrames pack(std::vector<std::int32_t> *waiting, int encoding, bool little, std::size_t room)
{
    SteimFrames packed_now;
    if (encoding == 3) {
        packed_now.samples = room / 4;
        packed_now.bytes =
            packed({waiting->begin(), waiting->begin() + packed_now.samples}, 4, little);
    } else {
        packed_now = steim_frames(*waiting, {encoding - 9, little, room / 64, 0, true});
    }
    waiting->erase(waiting->begin(), waiting->begin() + packed_now.samples);
    return packed_now;
}

/// Data records one after the other.
std::string records(int encoding, bool little, int length)
{
    constexpr int Most_In_Frame = 105;
    Ground ground;
    std::vector<std::int32_t> waiting;
    std::string bytes;
    for (int number = 1; bytes.size() < Volume_Size; ++number) {
        while (waiting.size() < static_cast<std::size_t>(length / 64 * Most_In_Frame))
            waiting.push_back(ground.next());
        const SteimFrames packed_now = pack(&waiting, encoding, little, length - 64);
        const int exponent = length == 512 ? 9 : 12;
        bytes += data_record_bytes(
            {.time = "2024,061,12:00:00.0000",
             .samples = static_cast<int>(packed_now.samples),
             .length = length,
             .b1000 = DataOnly{.encoding = encoding, .word_order = !little, .exponent = exponent},
             .payload = packed_now.bytes},
            number % 1000000);
    }
    return bytes;
}

/// Bytes and samples per second; arguments: encoding, word order, length.
void set_rates(benchmark::State &state, std::size_t bytes, std::size_t samples)
{
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes));
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(samples));
}

std::string records_of(const benchmark::State &state)
{
    return records(static_cast<int>(state.range(0)), state.range(1) != Big_Endian,
                   static_cast<int>(state.range(2)));
}

void decode_samples(benchmark::State &state)
{
    const std::string bytes = records_of(state);
    const auto length = static_cast<std::size_t>(state.range(2));
    std::vector<blk_dh_t> headers;
    for (std::size_t at = 0; at < bytes.size(); at += length) {
        blk_dh_t &header = headers.emplace_back();
        parse_dh(&header, std::string_view(bytes).substr(at + 8, 128));
        const B1000 b1000 = parse_b1000(bytes.data() + at, 136);
        header.encoding = b1000.encoding;
        header.word_order = b1000.word_order;
        header.length = b1000.record_length;
        header.raw = bytes.data() + at;
    }
    SampleBuffer buffer;
    std::size_t samples = 0;
    for ([[maybe_unused]] auto _ : state) {
        samples = 0;
        for (const blk_dh_t &header : headers) {
            const Samples decoded = decode(header, buffer);
            if (!decoded.problems.empty())
                state.SkipWithError("the samples are not sound");
            samples += decoded.size();
        }
    }
    set_rates(state, bytes.size(), samples);
}

#ifdef QUARL_HAS_MSEED
/// libmseed takes the bytes of a word from memory in the same order, whatever the byte order is,
/// and so the halves: words of such differences are turned for it, or it would not find the
/// samples.
void turn_words(std::string *record, int encoding)
{
    constexpr std::size_t Begin = 64;
    for (std::size_t frame = Begin; frame + 64 <= record->size(); frame += 64) {
        std::uint32_t control = 0;
        std::memcpy(&control, record->data() + frame, sizeof control);
        for (std::size_t i = 1; i < 16; ++i) {
            const std::uint32_t code = control >> 2 * (15 - i) & 3;
            char *word = record->data() + frame + 4 * i;
            if (code == 1)
                std::reverse(word, word + 4);
            else if (code == 2 && encoding == 10)
                std::rotate(word, word + 2, word + 4);
        }
    }
}

struct FreeRecord {
    void operator()(MSRecord *record) const { msr_free(&record); }
};

void decode_samples_libmseed(benchmark::State &state)
{
    std::string bytes = records_of(state);
    const auto length = static_cast<std::size_t>(state.range(2));
    const auto encoding = static_cast<int>(state.range(0));
    const bool little = state.range(1) != Big_Endian;
    std::vector<std::string> volume;
    std::vector<std::unique_ptr<MSRecord, FreeRecord>> parsed;
    for (std::size_t at = 0; at < bytes.size(); at += length) {
        std::string &record = volume.emplace_back(bytes.substr(at, length));
        if (little && encoding != 3)
            turn_words(&record, encoding);
        MSRecord *made = nullptr;
        if (msr_unpack(record.data(), static_cast<int>(length), &made, 0, 0) != MS_NOERROR)
            state.SkipWithError("a record was not read");
        parsed.emplace_back(made);
    }
    ms_loginit([](char *) { std::abort(); }, nullptr, [](char *) { std::abort(); }, nullptr);
    const flag swap = little ? 0 : 1;
    void *room = nullptr; // one for all records, as the other side has it
    std::size_t samples = 0;
    for ([[maybe_unused]] auto _ : state) {
        samples = 0;
        for (const auto &record : parsed) {
            record->datasamples = room;
            samples += static_cast<std::size_t>(msr_unpack_data(record.get(), swap, 0));
            room = std::exchange(record->datasamples, nullptr);
        }
    }
    std::free(room);
    set_rates(state, bytes.size(), samples);
}
#endif

/// Reads a volume of Steim-2 records through, with the samples or without.
void read_records(benchmark::State &state, bool decodes)
{
    const std::string bytes = records_of(state);
    const MemoryFile file(bytes);
    SampleBuffer buffer;
    std::size_t samples = 0;
    for ([[maybe_unused]] auto _ : state) {
        samples = 0;
        Volume volume(file.path(), {.message = [](const Message &) {}});
        for (const Item &item : volume)
            if (decodes)
                samples += decode(item, buffer).size();
    }
    set_rates(state, bytes.size(), samples);
}
void volume_read(benchmark::State &state) { read_records(state, false); }
void volume_read_and_decoded(benchmark::State &state) { read_records(state, true); }

const std::vector<std::string> Arguments = {"encoding", "big_endian", "length"};
BENCHMARK(volume_read)->ArgNames(Arguments)->ArgsProduct({{11}, {1}, {512, 4096}});
BENCHMARK(volume_read_and_decoded)->ArgNames(Arguments)->ArgsProduct({{11}, {1}, {512, 4096}});
BENCHMARK(decode_samples)->ArgNames(Arguments)->ArgsProduct({{3, 10, 11}, {1, 0}, {512, 4096}});
#ifdef QUARL_HAS_MSEED
BENCHMARK(decode_samples_libmseed)
    ->ArgNames(Arguments)
    ->ArgsProduct({{3, 10, 11}, {1, 0}, {512, 4096}});
#endif

} // namespace
