// Look-ups that every data record makes: in the channel dictionary and in the format table of a
// database. What a look-up costs must not depend on how much there is to look through.
#include "bench_support.h"
#include "blockette/seed_utl.h"
#include "platform/text.h"
#include "volume/seedformat.h"

#include <array>
#include <benchmark/benchmark.h>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <sqlite3.h>
#include <stdexcept>
#include <sys/wait.h>
#include <vector>

namespace
{

std::string digits(int number, int width)
{
    char text[32];
    std::snprintf(text, sizeof text, "%0*d", width, number);
    return text;
}

/// Three epochs, one after the other, of each channel.
void add_channel(RecList *list, const FmtList &formats, const char (&station)[Station_Size],
                 const std::string &code)
{
    constexpr std::array<const char *, 4> Dates = {"2012,001", "2016,001", "2020,001", ""};
    blk_052_t channel;
    copy_text(channel.loc_id, "");
    copy_text(channel.chan_id, code);
    for (std::size_t i = 0; i + 1 < Dates.size(); i++) {
        copy_text(channel.start_date, Dates[i]);
        copy_text(channel.end_date, Dates[i + 1]);
        update_rec_list(*list, station, formats, channel);
    }
}

/// Data records of all channels in turn.
void channel_lookups(benchmark::State &state)
{
    const auto channels = static_cast<int>(state.range(0));
    const FmtList formats = {"Steim2 Integer Compression Format"};
    RecList list;
    std::vector<blk_dh_t> headers(channels);
    for (int i = 0; i < channels; i++) {
        blk_dh_t &header = headers[i];
        copy_text(header.stn_id, "S" + digits(i / 100, 3));
        copy_text(header.chan_id, "B" + digits(i % 100, 2));
        header.epoch = seed2epoch("2018,100");
        add_channel(&list, formats, header.stn_id, header.chan_id);
    }
    int found = 0;
    for ([[maybe_unused]] auto _ : state)
        for (blk_dh_t &header : headers)
            found += lookup_rec_list(list, &header);
    if (found != state.iterations() * channels)
        state.SkipWithError("a channel was not found");
    state.SetItemsProcessed(state.iterations() * channels);
}
BENCHMARK(channel_lookups)->Arg(100)->Arg(10000);

constexpr int Database_Channels = 1000;

/// A database file that is removed at the end.
class DatabaseFile
{
public:
    /// `rows` epochs of a month each, shared among the channels.
    explicit DatabaseFile(int rows)
    {
        close(mkstemp(path_.data()));
        sqlite3 *opened = nullptr;
        const int status = sqlite3_open(path_.c_str(), &opened);
        const std::unique_ptr<sqlite3, decltype(&sqlite3_close)> database(opened, sqlite3_close);
        if (status != SQLITE_OK ||
            sqlite3_exec(opened, fill(rows).c_str(), nullptr, nullptr, nullptr) != SQLITE_OK)
            throw std::runtime_error("cannot make the database");
    }
    DatabaseFile(const DatabaseFile &) = delete;
    DatabaseFile &operator=(const DatabaseFile &) = delete;
    ~DatabaseFile() { unlink(path_.c_str()); }

    [[nodiscard]] const char *path() const { return path_.c_str(); }

private:
    static std::string fill(int rows)
    {
        return "create table seedformat"
               " (sta text, chan text, seedstart text, seedend text, seedformat text);"
               "with recursive numbers(n) as"
               " (values(0) union all select n + 1 from numbers where n + 1 < " +
               std::to_string(rows) +
               ") insert into seedformat select printf('S%03d', n % 1000), 'BHZ',"
               " printf('%04d,%03d', 2000 + n / 12000, 1 + 30 * (n / 1000 % 12)),"
               " printf('%04d,%03d', 2000 + n / 12000, 29 + 30 * (n / 1000 % 12)),"
               " 'Steim2 Integer Compression Format' from numbers;";
    }

    std::string path_ =
        std::filesystem::temp_directory_path() / ("quarl-bench-" + std::string(6, 'X'));
};

/// Seconds of `count` look-ups, all channels in turn, time advancing through all epochs as it does
/// in an archive.
double time_format_lookups(int epochs, int count)
{
    char station[Station_Size];
    char channel[Channel_Id_Size] = "BHZ";
    std::vector<double> times;
    times.reserve(epochs);
    for (int i = 0; i < epochs; i++)
        times.push_back(
            seed2epoch((digits(2000 + i / 12, 4) + "," + digits(15 + 30 * (i % 12), 3)).c_str()));
    copy_text(station, "S000");
    int found = !lookup_seedformat(station, channel, times[0]).empty();
    const auto begin = std::chrono::steady_clock::now();
    for (int i = 0; i < count; i++) {
        const int number = i % Database_Channels;
        station[1] = static_cast<char>('0' + number / 100);
        station[2] = static_cast<char>('0' + number / 10 % 10);
        station[3] = static_cast<char>('0' + number % 10);
        found +=
            !lookup_seedformat(station, channel, times[std::int64_t{i} * epochs / count]).empty();
    }
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begin;
    return found == count + 1 ? taken.count() : -1;
}

/// The same in a process of its own, as a process reads the table once.
double time_in_child(const char *database, int epochs, int count)
{
    std::array<int, 2> ends{};
    double taken = -1;
    if (pipe(ends.data()) != 0)
        return taken;
    const pid_t child = fork();
    if (child == 0) {
        if (VXdbopen(database, "r+", &run().Db) == 0)
            taken = time_format_lookups(epochs, count);
        _exit(write(ends[1], &taken, sizeof taken) == sizeof taken ? 0 : 1);
    }
    close(ends[1]);
    if (child < 0 || read(ends[0], &taken, sizeof taken) != sizeof taken)
        taken = -1;
    close(ends[0]);
    waitpid(child, nullptr, 0);
    return taken;
}

void format_lookups(benchmark::State &state)
{
    constexpr int Lookups = 1000000;
    const auto rows = static_cast<int>(state.range(0));
    const DatabaseFile database(rows);
    const Quiet quiet;
    for ([[maybe_unused]] auto _ : state) {
        const double taken = time_in_child(database.path(), rows / Database_Channels, Lookups);
        if (taken < 0) {
            state.SkipWithError("a format was not found");
            break;
        }
        state.SetIterationTime(taken);
    }
    state.SetItemsProcessed(state.iterations() * Lookups);
}
BENCHMARK(format_lookups)
    ->Arg(1000)
    ->Arg(100000)
    ->UseManualTime()
    ->Iterations(5)
    ->Unit(benchmark::kMillisecond);

} // namespace
