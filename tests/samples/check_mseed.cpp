// Reads with libmseed what quarl-mseed writes: check_mseed PROGRAM FOLDER
//
// Of the volumes in FOLDER, and of composed ones whose records lack Blockette 1000. Each record has
// to have the time and the samples of the one in the volume. Exits with 1 when one has not, with 77
// when there are no real volumes.
#include "compose/blockette_text.h"
#include "compose/files.h"
#include "compose/samples.h"
#include "compose/volume.h"
#include "samples/peer.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <quarl/volume.h>
#include <stdexcept>
#include <string>
#include <unistd.h>
#include <vector>

namespace fs = std::filesystem;

namespace
{

const fs::path Scratch =
    fs::temp_directory_path() / ("quarl_check_mseed_" + std::to_string(getpid()));

/// Reads a file record by record, as clients of libmseed do.
class Records
{
public:
    explicit Records(std::string path) : path_(std::move(path)) {}
    Records(const Records &) = delete;
    Records &operator=(const Records &) = delete;
    ~Records() { ms_readmsr(&record_, nullptr, 0, nullptr, nullptr, 0, 1, 0); } // closes it

    /// Null at the end; throws at what libmseed takes for no record.
    const MSRecord *next()
    {
        return fs::file_size(path_) > 0 ? next(path_.c_str()) : nullptr; // that would be an error
    }

private:
    const MSRecord *next(const char *path)
    {
        const int code = ms_readmsr(&record_, path, 0, nullptr, nullptr, 0, 1, 0);
        if (path && code != MS_NOERROR && code != MS_ENDOFFILE)
            throw std::runtime_error(path_ + ": " + ms_errorstr(code));
        return code == MS_NOERROR ? record_ : nullptr;
    }

    std::string path_;
    MSRecord *record_ = nullptr;
};

struct Totals {
    int records = 0;
    std::size_t samples = 0;
    int left_out = 0; ///< cannot be miniSEED
    int differ = 0;
};

std::int64_t microseconds(Time time) { return time.time_since_epoch().count(); }

/// Compares the records of a volume that tell their encoding with those of `written`.
Totals compare(const fs::path &volume, const std::string &written)
{
    Totals totals;
    Records records(written);
    SampleBuffer buffer;
    for (const Item &item : Volume(volume, {.message = [](const Message &) {}})) {
        const auto *header = item.get<blk_dh_t>();
        if (!header)
            continue;
        const Samples samples = decode(item, buffer);
        if (samples.encoding == Encoding::none && header->nsamps != 0) {
            ++totals.left_out;
            continue;
        }
        ++totals.records;
        totals.samples += samples.size();
        const auto times = data_times(*header, item.data_blockettes().refinement());
        const MSRecord *peer = records.next();
        if (peer && times && peer->starttime == microseconds(times->start) &&
            is_same_of_any_type(samples, *peer))
            continue;
        ++totals.differ;
        std::printf("%s: record %d differs\n", volume.filename().c_str(), totals.records);
    }
    if (records.next()) {
        ++totals.differ;
        std::printf("%s: there are more records than in the volume\n", volume.filename().c_str());
    }
    return totals;
}

bool is_right(const std::string &program, const fs::path &volume)
{
    const std::string written = Scratch / "written.mseed";
    const std::string command = "'" + program + "' -o '" + written + "' '" + volume.string() +
                                "' 2>'" + (Scratch / "messages").string() + "'";
    const int status = std::system(command.c_str()); // NOLINT: the command is this program's own
    const Totals totals = compare(volume, written);
    const int expected = totals.left_out > 0 ? 1 : 0;
    if (totals.records + totals.left_out > 0)
        std::printf("%s: %d records, %zu samples, %d records left out, %d differ\n",
                    volume.filename().c_str(), totals.records, totals.samples, totals.left_out,
                    totals.differ);
    if (status != expected << 8)
        std::printf("%s: status %d\n", volume.filename().c_str(), status);
    return totals.differ == 0 && status == expected << 8;
}

/// A volume of one channel whose format the dictionary names, with records whose data begin at
/// several places, full and with fill behind them. Frames are big-endian behind headers of either
/// order, since libmseed mixes up the differences of others.
std::string described(const char *format, std::size_t size, int length)
{
    VolumeBuilder volume(4096);
    volume.header('A').blockette(30, b030(format, 1, 0, {}));
    volume.header('S').blockette(50, b050({}));
    volume.blockette(52, b052({.exponent = length == 512 ? 9 : 12}));
    std::vector<std::int32_t> values;
    values.reserve(9000);
    for (int i = 0; i < 9000; ++i)
        values.push_back(i * i % 3001 - 1500);
    const int version = std::string(format).find("Steim2") == 0 ? 2 : 1;
    for (const int begin : {48, 56, 64, 68, 128})
        for (const bool full : {true, false})
            for (const bool little : {false, true}) {
                const auto room = static_cast<std::size_t>(length - begin);
                const std::size_t used = full ? room : room / 2;
                DataRecord record{.time = "2024,001,00:00:00.1234",
                                  .length = length,
                                  .little = little,
                                  .begin_data = begin};
                if (begin == 56 || begin >= 68)
                    record.timing_quality = 99;
                if (begin >= 68)
                    record.actual_rate = 20.0F;
                if (size == 0) {
                    const SteimFrames frames =
                        steim_frames(values, {version, false, used / 64, 0, true});
                    record.payload = frames.bytes;
                    record.samples = static_cast<int>(frames.samples);
                } else {
                    record.samples = static_cast<int>(used / size);
                    for (std::size_t i = 0; i < used / size * size; ++i)
                        record.payload += "a\nbd"[i % 4];
                }
                record.payload.resize(room, '\0');
                volume.data(record);
            }
    return volume.volume();
}

bool are_composed_right(const std::string &program)
{
    const std::pair<const char *, std::size_t> formats[] = {
        {"32-Bit Integer Format", 4},
        {"DWWSSN SUN IEEE short integer", 2},
        {"DWWSSN Integer Format", 2},
        {"CDSN Gain-Ranged Format", 2},
        {"IEEE single precision real", 4},
        {"Geoscope gain-range on 3 bits", 2},
        {"Geoscope gain range on 4 bits", 2},
        {"ASCII RefTek Log Files, State of Health", 1},
        {"Steim Integer Compression Format", 0},
        {"Steim2 Integer Compression Format", 0}};
    bool right = true;
    for (const auto &[format, size] : formats)
        for (const int length : {512, 4096}) {
            const fs::path volume = Scratch / format;
            write_file(volume, described(format, size, length));
            right &= is_right(program, volume);
        }
    return right;
}

} // namespace

int main(int argc, char *argv[])
try {
    ms_loginit([](char *) {}, nullptr, [](char *text) { std::fputs(text, stdout); }, nullptr);
    fs::create_directories(Scratch);
    const struct Removal {
        Removal() = default;
        Removal(const Removal &) = delete;
        Removal &operator=(const Removal &) = delete;
        ~Removal() { fs::remove_all(Scratch); }
    } removal;
    if (argc != 3)
        return 1;
    bool right = are_composed_right(argv[1]);
    if (!fs::is_directory(argv[2])) {
        std::puts("skipped: no real volumes");
        return right ? 77 : 1;
    }
    std::vector<fs::path> volumes;
    for (const auto &entry : fs::directory_iterator(argv[2]))
        if (entry.path().filename().string().find("seed") != std::string::npos)
            volumes.push_back(entry.path());
    std::sort(volumes.begin(), volumes.end());
    for (const fs::path &volume : volumes)
        right &= is_right(argv[1], volume);
    return right ? 0 : 1;
} catch (const std::exception &error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
}
