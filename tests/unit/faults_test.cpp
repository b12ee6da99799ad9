// What surrounds the tool fails: its output, its input, its files, memory, the database.
#include "blockette/blockette.h"
#include "compose/blockette_text.h"
#include "compose/files.h"
#include "compose/volume.h"
#include "platform/db.h"
#include "platform/gz_cat.h"
#include "platform/text.h"
#include "programs/sdd.h"
#include "support/capture.h"
#include "support/process.h"
#include "support/sanitized.h"
#include "volume/seed.h"

#include <algorithm>
#include <bit>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

namespace
{

namespace fs = std::filesystem;

class Faults : public testing::Test
{
protected:
    Faults()
    {
        setenv("QUARL_PFPATH", QUARL_SOURCE_DIR "/etc", 1);
        fs::create_directory(folder_);
    }
    ~Faults() override { fs::remove_all(folder_); }

    [[nodiscard]] std::string path(const std::string &name) const { return folder_ / name; }

    /// Writes a volume of `count` data records.
    std::string volume(int count, const std::string &name = "volume.seed", int length = 4096) const
    {
        VolumeBuilder volume(length);
        for (int i = 0; i < count; ++i)
            volume.data(
                {.samples = i,
                 .length = length,
                 .b1000 = DataOnly{.exponent = std::countr_zero(static_cast<unsigned>(length))}});
        write_file(path(name), volume.volume());
        return path(name);
    }

    /// Runs a line of the shell in which $0 is the tool and $1 the volume.
    [[nodiscard]] Outcome shell(const std::string &line, const std::string &volume) const
    {
        return run("/bin/sh", {"-c", line, QUARL_PROGRAM, volume}, STDIN_FILENO);
    }

    const fs::path folder_ = fs::temp_directory_path() / ("faults." + std::to_string(getpid()));
};

TEST_F(Faults, StandardDescriptors)
{
    const std::string file = volume(3);
    const std::string good = shell("exec \"$0\" \"$1\"", file).out;
    ASSERT_NE(good.find("Total Data"), std::string::npos);
    const std::string unwritten = "quarl: Can't write standard output: ";
    const struct {
        const char *line, *status, *out;
        std::string err;
    } cases[] = {
        {">/dev/full", "1", "", unwritten + "No space left on device\n"},
        {">&-", "1", "", unwritten + "Bad file descriptor\n"},
        {">&- 2>&-", "1", "", ""},
        {"2>&-", "0", good.c_str(), ""},
        {"2>/dev/full", "0", good.c_str(), ""},
        {"<&-", "0", good.c_str(), ""},
    };
    for (const auto &[line, status, out, err] : cases) {
        const Outcome seen = shell("exec \"$0\" \"$1\" " + std::string(line), file);
        EXPECT_EQ(seen.status, status) << line;
        EXPECT_EQ(seen.out, out) << line;
        EXPECT_EQ(seen.err, err) << line;
    }
    EXPECT_EQ(shell("exec \"$0\" <&-", file).err, "quarl: input read error: Bad file descriptor\n");
}

TEST_F(Faults, ReaderThatHasGone)
{
    const std::string file = volume(3, "volume", 512); // each record is complained about
    const std::string messages = shell("exec \"$0\" -s \"$1\"", file).err;
    ASSERT_EQ(std::ranges::count(messages, '\n'), 3);
    const int quiet = open("/dev/null", O_RDWR | O_CLOEXEC);
    for (const std::string before : {"", "trap '' PIPE; "}) {
        Pipe out;
        Pipe err;
        out.close_read();
        const pid_t tool =
            start("/bin/sh", {"-c", before + "exec \"$0\" -s \"$1\"", QUARL_PROGRAM, file},
                  {quiet, out.write_end, err.write_end});
        err.close_write();
        EXPECT_EQ(receive(err.read_end, messages.size()), messages);
        EXPECT_EQ(receive(err.read_end, 1), "");
        EXPECT_EQ(wait_for(tool), "signal " + std::to_string(SIGPIPE)) << before;
        Pipe gone;
        gone.close_read();
        const pid_t again = start(QUARL_PROGRAM, {file}, {quiet, quiet, gone.write_end});
        EXPECT_EQ(wait_for(again), "signal " + std::to_string(SIGPIPE));
    }
    close(quiet);
}

TEST_F(Faults, ConnectionResetInMidVolume)
{
    const std::string file = volume(20);
    std::array<int, 2> ends;
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()), 0);
    write_all(ends[0], read_file(file));
    write_all(ends[1], "?");
    close(ends[0]); // with a byte unread: the other end is reset
    const Outcome cut = run(QUARL_PROGRAM, {}, ends[1]);
    close(ends[1]);
    EXPECT_EQ(cut.out, shell("exec \"$0\" \"$1\"", file).out);
    EXPECT_EQ(cut.err, "quarl: input read error: Connection reset by peer\n");
    EXPECT_EQ(cut.status, "0");
}

/// Reads a file that somebody cuts to `size` bytes after the first read.
struct Shrinking : Inflater {
    Shrinking(const std::string &path, off_t later)
        : file(open(path.c_str(), O_RDWR | O_CLOEXEC)), size(later)
    {
    }
    Shrinking(const Shrinking &) = delete;
    Shrinking &operator=(const Shrinking &) = delete;
    ~Shrinking() override { close(file); }

    ssize_t read(char *to, std::size_t room) override
    {
        const ssize_t count = ::read(file, to, std::min<std::size_t>(room, 70000));
        return ftruncate(file, size) == 0 ? count : -1;
    }

    int file;
    off_t size;
};

TEST_F(Faults, FileThatShrinks)
{
    const std::string file = volume(40);
    const std::string cut = volume(40, "cut");
    fs::resize_file(cut, 80000);
    const auto listed = [](const std::function<std::unique_ptr<Stream>()> &stream) {
        return capture([&] {
            const auto handle = seed_read("/dev/null");
            handle->logical->stream = stream();
            Record record;
            int type = 0;
            int count = 0;
            while (read_blk(handle.get(), &record, &type))
                ++count;
            print<"%d records\n">(out(), count);
        });
    };
    const Captured shrunk = listed([&] {
        return std::make_unique<Stream>(-1, false, std::make_unique<Shrinking>(file, 80000));
    });
    const Captured whole = listed([&] { return gz_cat(cut.c_str()); });
    EXPECT_EQ(shrunk.out, "20 records\n");
    EXPECT_EQ(shrunk.out + shrunk.err, whole.out + whole.err);
}

TEST_F(Faults, UnreadableParameterFile)
{
    fs::create_directory(path("quarl.pf"));
    setenv("QUARL_PFPATH", folder_.c_str(), 1);
    const Outcome seen = run(QUARL_PROGRAM, {volume(1)}, STDIN_FILENO);
    EXPECT_EQ(seen.err, "quarl: " + path("quarl.pf") +
                            ": Is a directory\nquarl: Couldn't read parameter file quarl.pf.\n");
    EXPECT_EQ(seen.out, "");
    EXPECT_EQ(seen.status, "1");
}

/// Runs `f` without memory for a list, but for words.
Captured without_memory(const std::function<void()> &f)
{
    rlimit before = {};
    getrlimit(RLIMIT_AS, &before);
    Captured seen = capture([&] {
        std::vector<std::unique_ptr<char[]>> hogs;
        hogs.reserve(4000);
        const rlimit none = {1, before.rlim_max};
        setrlimit(RLIMIT_AS, &none);
        while (char *hog = new (std::nothrow) char[60000])
            hogs.emplace_back(hog);
        f();
    });
    setrlimit(RLIMIT_AS, &before);
    return seen;
}

TEST_F(Faults, NoMemory)
{
    if (sanitized())
        GTEST_SKIP() << "a sanitizer cannot live within a limit of memory";
    const auto add_forever = [](auto add) {
        for (int i = 0; i < 100'000'000; ++i)
            add(formatted<"%05d">(i % 100'000), formatted<"%03d">(i / 100'000));
    };
    const struct {
        const char *words;
        std::function<void()> happen;
    } cases[] = {
        {"parse_054 at line [0-9]+ of 'response.cpp'\n\tCan't malloc 9999 bytes for "
         "blk->numer_coef",
         [text = "0549999" + b054({}).substr(0, 9) + "9999"] { parse_blk(text, 54); }},
        {"update_rec_list at line [0-9]+ of 'handle.cpp'\n\tCan't malloc 1 bytes for rec_elem",
         [&] {
             RecList list;
             const FmtList formats = {"f", "f"};
             add_forever([&](const std::string &station, const std::string &channel) {
                 char stn[Station_Size] = "";
                 blk_052_t b052;
                 copy_text(stn, station);
                 copy_text(b052.chan_id, channel);
                 b052.format_id = 1;
                 update_rec_list(list, stn, formats, b052);
             });
         }},
        {"update_order_list at line [0-9]+ of 'handle.cpp'\n\tCan't malloc 1 bytes for order_elem",
         [&] {
             OrderList list;
             add_forever([&](const std::string &station, const std::string &channel) {
                 blk_050_t b050;
                 copy_text(b050.station, station + channel);
                 update_order_list(list, b050);
             });
         }},
        {"update_fmt_list at line [0-9]+ of 'handle.cpp'\n\tCan't malloc 1 bytes for fmt_elem",
         [] {
             FmtList list;
             blk_030_t b030;
             b030.format_id = 9999;
             update_fmt_list(list, b030);
         }},
        {"fix_channel at line [0-9]+ of 'station.cpp'\n\tCan't malloc 1 bytes for "
         "Geoscope_channels",
         [&] {
             add_forever([](const std::string &station, const std::string &channel) {
                 blk_052_t b052;
                 copy_text(b052.station, station);
                 copy_text(b052.chan_id, channel);
                 b052.subchan_id = 1;
                 b052.dip = -90;
                 fix_channel(&b052);
             });
         }},
    };
    for (const auto &[words, happen] : cases) {
        const Captured seen = without_memory(happen);
        EXPECT_EQ(seen.status, 1);
        const testing::Matcher<std::string> all = testing::MatchesRegex(
            "quarl: Out of memory in " + std::string(words) + ": Cannot allocate memory\n");
        EXPECT_TRUE(all.Matches(seen.err)) << seen.err;
    }
}

TEST_F(Faults, DatabaseThatGoesAway)
{
    const std::string two = volume(2);
    const std::string file = path("db");
    struct Case {
        std::string words;
        std::function<void()> happen;
    };
    const Case cases[] = {
        {"No such file or directory", [&] { fs::remove(file); }},
        {"database disk image is malformed", [&] { fs::resize_file(file, 100); }}};
    const std::string unknown = "quarl: No data format for 'QRL', 'BHZ' at time"
                                " 2024,001,00:00:00.0000 (file #0)\n";
    const std::string twice = "\n" + unknown + unknown;
    for (const Case &each : cases) {
        sqlite3 *made = nullptr;
        sqlite3_open(file.c_str(), &made);
        sqlite3_exec(made, "create table seedformat (sta, chan, seedstart, seedend, seedformat)",
                     nullptr, nullptr, nullptr);
        sqlite3_close(made);
        const Captured seen = capture([&] {
            VolumeOptions options = reading_options(&console(), std::make_shared<FormatSources>());
            options.format_sources->open_database(file);
            each.happen();
            sdd(&console(), std::move(options), two);
        });
        EXPECT_NE(seen.out.find("    2             8192 Data blockettes"), std::string::npos);
        std::string expected = "quarl: Can't read database table 'seedformat': ";
        EXPECT_EQ(seen.err, (expected += each.words) += twice);
    }
}

} // namespace
