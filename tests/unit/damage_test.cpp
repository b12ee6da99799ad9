// Thousands of damaged volumes, the same ones in every run: no crash, no hang, no runaway memory,
// and what was listed in front of the damage stays as it was.
#include "compose/files.h"
#include "compose/sample.h"
#include "listing/pbrief.h"
#include "programs/make_page.h"
#include "programs/sdd.h"
#include "support/capture.h"
#include "support/recipe.h"
#include "support/sanitized.h"
#include "volume/count.h"
#include "volume/seed.h"

#include <algorithm>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <random>
#include <sys/resource.h>
#include <sys/wait.h>

namespace
{

namespace fs = std::filesystem;

/// KiB; the sanitizer keeps freed memory to find its users.
long most_memory() { return sanitized() ? 800 << 10 : 64 << 10; }

constexpr unsigned Patience = 20; // s for one volume

/// Up to where an item was read, and how much had been listed then.
struct Mark {
    std::size_t read;
    std::size_t listed;
};

struct Listing {
    std::string text;
    std::vector<Mark> marks;
};

/// Bytes as a file that is rewritten for every volume.
class VolumeFile
{
public:
    VolumeFile() : fd_(memfd_create("volume", 0)) {}
    VolumeFile(const VolumeFile &) = delete;
    VolumeFile &operator=(const VolumeFile &) = delete;
    ~VolumeFile() { close(fd_); }

    std::string path_of(const std::string &bytes)
    {
        if (ftruncate(fd_, 0) != 0 ||
            pwrite(fd_, bytes.data(), bytes.size(), 0) != std::ssize(bytes))
            throw std::runtime_error("volume file");
        return "/proc/self/fd/" + std::to_string(fd_);
    }

private:
    int fd_;
};

/// Lists the first input file of an undamaged volume item by item.
Listing listing_of(const std::string &path)
{
    Listing listing;
    listing.text = capture([&] {
                       const auto handle = seed_read(path);
                       const SeedInput &in = *handle->logical;
                       Record record;
                       int type = 0;
                       std::size_t read = 0;
                       init_count();
                       while (read_blk(handle.get(), &record, &type)) {
                           if (record)
                               pbrief_blk(out(), record.get(), type);
                           count_blk(record.get(), type);
                           summarise(out(), handle->now);
                           out().flush();
                           const std::int64_t at = in.record_begin() + in.record_read();
                           read = std::max(read, static_cast<std::size_t>(at));
                           listing.marks.push_back(
                               {read, static_cast<std::size_t>(lseek(STDOUT_FILENO, 0, SEEK_CUR))});
                       }
                   }).out;
    return listing;
}

/// One seeded damage of some kind at some place.
std::string damaged(std::string bytes, unsigned seed)
{
    std::mt19937 random(seed);
    const auto below = [&](std::size_t n) { return random() % n; };
    const std::size_t at = below(bytes.size());
    const std::size_t size = 1 + below(std::min<std::size_t>(600, bytes.size() - at));
    const std::size_t digit = std::min(bytes.find_first_of("0123456789", at), bytes.size() - 1);
    const std::size_t header = at / 256 * 256;
    static const std::string_view plants[] = {
        "9999", "-999", "~", "\xff\xff\xff\xff", {"\0\0\0\0", 4}, "0100010", "052", "1E99", "*"};
    switch (seed % 10) {
    case 0:
        bytes[at] = static_cast<char>(bytes[at] ^ 1 << below(8));
        break;
    case 1:
    case 2:
        bytes[digit] = "0123456789 -~"[below(13)];
        break;
    case 3:
        bytes.resize(seed % 20 < 10 ? at : header + below(16));
        break;
    case 4:
        bytes.erase(at, size);
        break;
    case 5:
        bytes.insert(at, bytes.substr(at, size));
        break;
    case 6: { // two records change places
        const std::size_t other = below(bytes.size()) / 256 * 256;
        const std::size_t both = std::min<std::size_t>(256, bytes.size() - std::max(header, other));
        std::swap_ranges(&bytes[header], &bytes[header] + both, &bytes[other]);
        break;
    }
    case 7: // the header of a record
        bytes[header + below(std::min<std::size_t>(64, bytes.size() - header))] =
            static_cast<char>(random());
        break;
    default:
        const std::string_view plant = plants[below(std::size(plants))];
        bytes.replace(at, std::min(plant.size(), bytes.size() - at), plant);
    }
    return bytes;
}

long peak_memory()
{
    rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

/// In a process of its own: damages one volume `count` times, and tells through `at_work` which
/// damage it is at. Exits with 1 when the listing differs too early, 2 after too much memory, 3
/// when something was thrown.
[[noreturn]] void work(const std::string &bytes, int count, volatile int *at_work)
{
    const int nowhere = open("/dev/null", O_WRONLY);
    VolumeFile file;
    const Listing whole = listing_of(file.path_of(bytes));
    const long before = peak_memory();
    for (int seed = 0; seed < count; ++seed) {
        *at_work = seed;
        alarm(Patience);
        const std::string volume = damaged(bytes, seed);
        const auto first = std::mismatch(bytes.begin(), bytes.end(), volume.begin(), volume.end());
        const auto intact = static_cast<std::size_t>(first.first - bytes.begin());
        std::size_t same = 0;
        for (const Mark &mark : whole.marks)
            same = mark.read <= intact ? mark.listed : same;
        const std::string path = file.path_of(volume);
        const std::string out = capture([&] { list_volume(path); }).out;
        // The page holds what quarl-check finds. Nobody reads it here: its script alone is longer
        // than most of these volumes.
        capture([&] {
            dup2(nowhere, STDOUT_FILENO);
            make_page(&console(), path, {});
        });
        if (out.compare(0, same, whole.text, 0, same) != 0)
            _exit(1);
    }
    _exit(peak_memory() - before > most_memory() ? 2 : 0);
}

void damage(const std::string &name, const std::string &bytes, int count)
{
    auto *at_work = static_cast<int *>(
        mmap(nullptr, sizeof(int), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    ASSERT_NE(at_work, MAP_FAILED);
    if (bytes.empty())
        return;
    const pid_t child = fork();
    if (child == 0) {
        try {
            work(bytes, count, at_work);
        } catch (const std::exception &) {
            _exit(3);
        }
    }
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0) << name << ", damage " << *at_work << ": "
                         << (WIFSIGNALED(status) ? "signal" : "exit status") << ' '
                         << (WIFSIGNALED(status) ? WTERMSIG(status) : WEXITSTATUS(status));
    munmap(at_work, sizeof(int));
}

TEST(Damage, Sample) { damage("sample", sample_volume(), 2000); }

TEST(Damage, GoldenVolumes)
{
    for (const auto &entry : fs::directory_iterator(QUARL_SOURCE_DIR "/tests/golden"))
        if (const fs::path recipe = entry.path() / "volume.txt"; fs::exists(recipe))
            damage(entry.path(), parse_recipe(read_file(recipe)).volume(), 300);
}

TEST(Damage, DataRecordsAlone)
{
    VolumeBuilder volume;
    for (int i = 0; i < 40; ++i)
        volume.data({.channel = i % 2 == 0 ? "BHZ" : "LHZ",
                     .length = 128 << i % 3,
                     .b1000 = DataOnly{11, 1, 7 + i % 3}});
    damage("data records", volume.volume(), 2000);
}

TEST(Damage, RealVolumes)
{
    const fs::path folder = fs::path(QUARL_SOURCE_DIR) / "../shared/volumes";
    if (!fs::is_directory(folder))
        GTEST_SKIP() << "no real volumes at " << folder;
    for (const auto &entry : fs::directory_iterator(folder))
        if (entry.path().string().ends_with("seed"))
            damage(entry.path(), read_file(entry.path()).substr(0, 40000), 100);
}

} // namespace
