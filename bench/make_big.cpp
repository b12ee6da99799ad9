// Writes volumes to measure with, the same bytes at every run; all but the worst in constant
// memory.
#include "big_data.h"
#include "big_headers.h"
#include "worst_volumes.h"

#include <algorithm>
#include <bit>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

namespace
{

constexpr std::int64_t Kilo = 1024;
constexpr std::int64_t Mega = Kilo * Kilo;

struct CloseFile {
    void operator()(std::FILE *file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

std::int64_t records_in(const std::string &section)
{
    return static_cast<std::int64_t>(section.size()) / Header_Length;
}

void write(std::FILE *to, const std::string &bytes)
{
    if (std::fwrite(bytes.data(), 1, bytes.size(), to) != bytes.size())
        throw std::runtime_error("cannot write the volume");
}

/// The control headers in front of the first time span. An index names record numbers that are
/// known when everything behind it was composed once, so it begins with none.
struct Headers {
    Wealth wealth;
    std::vector<StationEntry> stations = {};
    std::vector<SpanEntry> spans = {};
    std::int64_t index_records = 0;
    std::int64_t records = 0; ///< of all
};

Headers plan_headers(const Wealth &wealth, int stations, int spans)
{
    Headers headers{.wealth = wealth};
    headers.stations.resize(stations);
    headers.spans.resize(spans, {seed_time(Data_Begin), seed_time(Data_Begin), 0});
    headers.index_records = records_in(index_section(headers.stations, headers.spans));
    headers.records = headers.index_records + records_in(dictionary_section(1));
    for (int i = 0; i < stations; i++) {
        headers.stations[i] = {station_code(i), wrapped(headers.records + 1)};
        headers.records += records_in(station_section(1, i, wealth));
    }
    return headers;
}

void write_headers(std::FILE *to, const Headers &headers)
{
    write(to, index_section(headers.stations, headers.spans));
    write(to, dictionary_section(static_cast<int>(headers.index_records) + 1));
    for (int i = 0; i < static_cast<int>(headers.stations.size()); i++)
        write(to, station_section(headers.stations[i].seq, i, headers.wealth));
}

std::vector<Channel> channels_of(const Wealth &wealth, int stations)
{
    std::vector<Channel> all;
    for (int i = 0; i < stations; i++)
        for (Channel &channel : station_channels(i, wealth))
            all.push_back(std::move(channel));
    return all;
}

/// Some tens of stations in a volume of hundreds of megabytes, fewer in a smaller one.
int full_stations(std::int64_t size)
{
    return static_cast<int>(std::clamp<std::int64_t>(size / (6 * Mega), 1, 40));
}

Wealth full_wealth(std::int64_t size, int length)
{
    Wealth wealth;
    if (size < 64 * Kilo)
        wealth = {.fewest_channels = 1, .most_channels = 1, .brief = true};
    wealth.exponent = std::countr_zero(static_cast<unsigned>(length));
    return wealth;
}

/// A volume of control headers, then time spans with their data. Data records as long as the
/// control headers allow for a time span header between them; of shorter ones eight share a
/// number, and all of them are one span.
class FullVolume
{
public:
    FullVolume(std::int64_t size, int length)
        : size_(size), length_(length), sharing_(Header_Length / length),
          stations_(full_stations(size)), wealth_(full_wealth(size, length)),
          data_(channels_of(wealth_, stations_), length, wealth_.brief ? 8 : 32, sharing_)
    {
        const auto rounds = size_ / length_ / data_.records_per_round() + 1;
        rounds_ = static_cast<int>(rounds);
        span_rounds_ = sharing_ == 1 ? std::max(2, rounds_ / 100) : rounds_;
        spans_ = (rounds_ + span_rounds_ - 1) / span_rounds_;
    }

    void write_to(std::FILE *to)
    {
        Headers headers = plan_headers(wealth_, stations_, spans_);
        const std::int64_t span_records =
            records_in(span_text(0, 1)) + span_rounds_ * data_.records_per_round() / sharing_;
        for (int i = 0; i < spans_; i++)
            headers.spans[i] = {seed_time(begin_of(i)), seed_time(end_of(i)),
                                wrapped(headers.records + 1 + i * span_records)};
        write_headers(to, headers);
        written_ = headers.records * Header_Length;
        for (int i = 0; i < spans_ && written_ < size_; i++)
            write_span(to, i, headers.records + 1 + i * span_records);
    }

private:
    [[nodiscard]] Ticks begin_of(int span) const
    {
        return Data_Begin + Ticks{span} * span_rounds_ * data_.shortest_round();
    }
    [[nodiscard]] Ticks end_of(int span) const
    {
        return Data_Begin + (Ticks{span} + 1) * span_rounds_ * data_.longest_round();
    }

    [[nodiscard]] std::string span_text(int span, std::int64_t seq) const
    {
        const int first = span * span_rounds_;
        const std::int64_t data_seq = seq + span_header_records_;
        return span_section(wrapped(seq), begin_of(span), end_of(span),
                            data_.index(first, first + span_rounds_ - 1, data_seq));
    }

    void write_span(std::FILE *to, int span, std::int64_t seq)
    {
        span_header_records_ = records_in(span_text(span, seq));
        const std::string header = span_text(span, seq);
        write(to, header);
        written_ += static_cast<std::int64_t>(header.size());
        seq += span_header_records_;
        for (int i = 0; i < span_rounds_; i++, seq += data_.records_per_round() / sharing_)
            written_ += length_ * data_.write_round(to, span * span_rounds_ + i, seq,
                                                    (size_ - written_) / length_);
    }

    std::int64_t size_;
    int length_;
    int sharing_;
    int stations_;
    Wealth wealth_;
    DataMaker data_;
    int rounds_ = 0;
    int span_rounds_ = 0;
    int spans_ = 0;
    std::int64_t span_header_records_ = 0;
    std::int64_t written_ = 0;
};

void write_full(std::FILE *to, std::int64_t size, int length)
{
    FullVolume(size, length).write_to(to);
}

/// Data records without any control header.
void write_mini(std::FILE *to, std::int64_t size, int length)
{
    constexpr int Stations = 120;
    DataMaker data(channels_of({}, Stations), length, 32, 1);
    std::int64_t seq = 1;
    for (int round = 0; seq <= size / length; round++)
        seq += data.write_round(to, round, seq, size / length + 1 - seq);
}

/// The same records, in no order.
void write_scattered(std::FILE *to, std::int64_t size, int length)
{
    constexpr int Stations = 120;
    DataMaker(channels_of({}, Stations), length, 32, 1).write_scattered(to, size / length);
}

/// Control headers only: as many stations as make about `size` bytes.
void write_dataless(std::FILE *to, std::int64_t size)
{
    constexpr Wealth Rich = {.fewest_channels = 6, .most_channels = 12, .epochs = 3};
    constexpr int Probes = 7;
    std::int64_t records = 0;
    for (int i = 0; i < Probes; i++)
        records += records_in(station_section(1, i, Rich));
    const auto stations = std::max<std::int64_t>(size * Probes / (records * Header_Length), 1);
    write_headers(to, plan_headers(Rich, static_cast<int>(stations), 0));
}

std::int64_t parse_size(const std::string &text)
{
    std::size_t used = 0;
    const std::int64_t number = std::stoll(text, &used);
    const std::string suffix = text.substr(used);
    const std::size_t power = suffix.empty() ? 0 : std::string_view(".KMG").find(suffix);
    if (number <= 0 || suffix.size() > 1 || power > 3 || suffix == ".")
        throw std::invalid_argument("bad size '" + text + "'");
    return number << 10 * power;
}

void make(std::FILE *to, std::string_view kind, std::int64_t size)
{
    if (kind == "full-4096" || kind == "full-512")
        write_full(to, size, kind == "full-512" ? 512 : 4096);
    else if (kind == "mini-4096" || kind == "mini-512")
        write_mini(to, size, kind == "mini-512" ? 512 : 4096);
    else if (kind == "scattered-512")
        write_scattered(to, size, 512);
    else if (kind == "dataless")
        write_dataless(to, size);
    else if (kind.starts_with("worst-"))
        write(to, worst_volume(kind.substr(kind.find('-') + 1), size));
    else
        throw std::invalid_argument("bad kind '" + std::string(kind) + "'");
}

} // namespace

int main(int argc, char *argv[])
try {
    if (argc < 3 || argc > 4)
        throw std::invalid_argument(
            "usage: make_big "
            "full-4096|full-512|mini-512|mini-4096|scattered-512|dataless|worst-WHAT "
            "SIZE[K|M|G] [OUTPUT]");
    const std::string output = argc == 4 ? argv[3] : "-";
    const File file(output == "-" ? stdout : std::fopen(output.c_str(), "wb"));
    if (!file)
        throw std::runtime_error("cannot open " + output);
    make(file.get(), argv[1], parse_size(argv[2]));
    if (std::fflush(file.get()) != 0)
        throw std::runtime_error("cannot write " + output);
    return EXIT_SUCCESS;
} catch (const std::exception &fault) {
    std::fprintf(stderr, "make_big: %s\n", fault.what());
    return EXIT_FAILURE;
}
