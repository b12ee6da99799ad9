// Fields and lines: scanners, numbers beside the C library's, data headers, listing.
#include "bench_support.h"
#include "blockette/data_header.h"
#include "blockette/scan.h"
#include "compose/blockette_text.h"
#include "compose/volume.h"
#include "listing/pbrief.h"
#include "platform/number.h"
#include "platform/read_number.h"
#include "platform/text.h"
#include "random.h"
#include "volume/fixup_dh.h"

#include <array>
#include <benchmark/benchmark.h>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace
{

constexpr int Fields = 1000;

void set_rate(benchmark::State &state, int items)
{
    state.SetItemsProcessed(state.iterations() * items);
}

std::vector<double> make_numbers()
{
    Random random(1);
    std::vector<double> numbers;
    numbers.reserve(Fields);
    for (int i = 0; i < Fields; i++)
        numbers.push_back(random.real(-9, 9));
    return numbers;
}

/// The numbers as fields of 12 characters: "+1.23456E-05".
std::vector<std::string> make_texts()
{
    std::vector<std::string> texts;
    for (const double number : make_numbers()) {
        char text[32];
        std::snprintf(text, sizeof text, "%+12.5E", number);
        texts.emplace_back(text);
    }
    return texts;
}

std::string joined(const std::vector<std::string> &texts)
{
    std::string all;
    for (const std::string &text : texts)
        all += text;
    return all;
}

void scan_int_fields(benchmark::State &state)
{
    Random random(2);
    std::string text;
    for (int i = 0; i < Fields; i++)
        text += std::to_string(random.between(100000, 999999));
    for ([[maybe_unused]] auto _ : state) {
        Cursor in(text);
        for (int i = 0; i < Fields; i++)
            benchmark::DoNotOptimize(scan_int(&in, 6));
    }
    set_rate(state, Fields);
}
BENCHMARK(scan_int_fields);

void scan_double_fields(benchmark::State &state)
{
    const std::string text = joined(make_texts());
    for ([[maybe_unused]] auto _ : state) {
        Cursor in(text);
        for (int i = 0; i < Fields; i++)
            benchmark::DoNotOptimize(scan_double(&in, 12));
    }
    set_rate(state, Fields);
}
BENCHMARK(scan_double_fields);

void scan_var_str_fields(benchmark::State &state)
{
    std::string text;
    for (int i = 0; i < Fields; i++)
        text += "Broadband seismometer, 120 s~";
    char into[51];
    for ([[maybe_unused]] auto _ : state) {
        Cursor in(text);
        for (int i = 0; i < Fields; i++) {
            scan_var_str(&in, into);
            benchmark::DoNotOptimize(into);
        }
    }
    set_rate(state, Fields);
}
BENCHMARK(scan_var_str_fields);

template <class Convert> void read_numbers(benchmark::State &state, Convert convert)
{
    const auto texts = make_texts();
    for ([[maybe_unused]] auto _ : state)
        for (const std::string &text : texts)
            benchmark::DoNotOptimize(convert(text));
    set_rate(state, Fields);
}

void number_read_real(benchmark::State &state)
{
    read_numbers(state, [](const std::string &text) {
        std::size_t used = 0;
        return read_real(text, &used);
    });
}
BENCHMARK(number_read_real);

void number_strtod(benchmark::State &state)
{
    read_numbers(state, [](const std::string &text) { return std::strtod(text.c_str(), nullptr); });
}
BENCHMARK(number_strtod);

template <class Convert> void write_numbers(benchmark::State &state, Convert convert)
{
    const auto numbers = make_numbers();
    std::array<char, Real_Room> text;
    for ([[maybe_unused]] auto _ : state)
        for (const double number : numbers) {
            convert(text.data(), number);
            benchmark::DoNotOptimize(text);
        }
    set_rate(state, Fields);
}

void number_put_scientific(benchmark::State &state)
{
    write_numbers(state, [](char *to, double number) { put_scientific(to, number, 5, 'E'); });
}
BENCHMARK(number_put_scientific);

void number_snprintf_scientific(benchmark::State &state)
{
    write_numbers(state,
                  [](char *to, double number) { std::snprintf(to, Real_Room, "%.5E", number); });
}
BENCHMARK(number_snprintf_scientific);

void number_put_fixed(benchmark::State &state)
{
    write_numbers(state, [](char *to, double number) { put_fixed(to, number, 2); });
}
BENCHMARK(number_put_fixed);

void number_snprintf_fixed(benchmark::State &state)
{
    write_numbers(state,
                  [](char *to, double number) { std::snprintf(to, Real_Room, "%.2f", number); });
}
BENCHMARK(number_snprintf_fixed);

/// A data record from its byte 8 on, as far as it is read before its length is known.
std::string header_bytes()
{
    return data_record_bytes({.time = "2024,061,12:00:00.0000", .b1000 = DataOnly{}}, 1)
        .substr(8, 128);
}

void header_parse_dh(benchmark::State &state)
{
    const std::string bytes = header_bytes();
    blk_dh_t header;
    for ([[maybe_unused]] auto _ : state) {
        parse_dh(&header, bytes);
        benchmark::DoNotOptimize(header);
    }
    set_rate(state, 1);
}
BENCHMARK(header_parse_dh);

/// With parsing, as completion changes what was parsed.
void header_parse_and_fixup_dh(benchmark::State &state)
{
    const std::string bytes = header_bytes();
    const MemoryFile nothing("");
    const auto handle = seed_read(nothing.path());
    blk_052_t channel;
    copy_text(channel.loc_id, "");
    copy_text(channel.chan_id, "BHZ");
    copy_text(channel.start_date, "2020,001");
    settbl(handle->fmt_list, channel.format_id, std::string("Steim2 Integer Compression Format"));
    const char station[Station_Size] = "QRL";
    update_rec_list(handle->rec_list, station, handle->fmt_list, channel);
    blk_dh_t header;
    for ([[maybe_unused]] auto _ : state) {
        parse_dh(&header, bytes);
        fixup_dh(&header, handle.get());
        benchmark::DoNotOptimize(header);
    }
    if (!*header.format)
        state.SkipWithError("the channel was not found");
    set_rate(state, 1);
}
BENCHMARK(header_parse_and_fixup_dh);

/// Lists one record again and again.
void list(benchmark::State &state, std::string_view bytes, int type)
{
    static Out null(open("/dev/null", O_WRONLY | O_CLOEXEC));
    const Record record = parse_blk(bytes, type);
    for ([[maybe_unused]] auto _ : state)
        pbrief_blk(null, record.get(), type);
    if (parsing().Bad_blkflag || !record)
        state.SkipWithError("the blockette was not read");
    set_rate(state, 1);
}

/// A blockette from its type on.
std::string framed(int type, const std::string &fields)
{
    char prefix[32];
    std::snprintf(prefix, sizeof prefix, "%03d%04d", type, static_cast<int>(fields.size()) + 7);
    return prefix + fields;
}

void listing_data_record(benchmark::State &state) { list(state, header_bytes(), Data_Record); }
BENCHMARK(listing_data_record);

void listing_052(benchmark::State &state) { list(state, framed(52, b052({})), 52); }
BENCHMARK(listing_052);

void listing_053_of_10_roots(benchmark::State &state)
{
    Random random(3);
    B053 poles;
    for (int i = 0; i < 10; i++)
        poles.poles.push_back({random.real(-3, 3), random.real(-3, 3)});
    list(state, framed(53, b053(poles)), 53);
}
BENCHMARK(listing_053_of_10_roots);

void listing_061_of_100_coefficients(benchmark::State &state)
{
    Random random(4);
    B061 filter;
    for (int i = 0; i < 100; i++)
        filter.coefficients.push_back(random.real(-8, 0));
    list(state, framed(61, b061(filter)), 61);
}
BENCHMARK(listing_061_of_100_coefficients);

} // namespace
