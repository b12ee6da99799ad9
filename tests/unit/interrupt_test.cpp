// Signals, and what is shown while a volume is read.
#include "compose/files.h"
#include "compose/volume.h"
#include "programs/progress.h"
#include "support/compressed.h"
#include "support/process.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <regex>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace quarl; // NOLINT: every test is about it

namespace
{

namespace fs = std::filesystem;

constexpr std::size_t Length = 4096;
constexpr std::size_t Everything = std::string::npos;
const std::string At_Byte = "quarl: Interrupted at byte ";

std::string records(int count)
{
    VolumeBuilder volume(Length);
    for (int i = 0; i < count; ++i)
        volume.data({.samples = i, .length = Length, .b1000 = DataOnly{.exponent = 12}});
    return volume.volume();
}

std::string first_lines(const std::string &text, int count)
{
    std::size_t end = 0;
    for (int i = 0; i < count; ++i)
        end = text.find('\n', end) + 1;
    return text.substr(0, end);
}

class Interrupt : public testing::Test
{
protected:
    Interrupt()
    {
        setenv("QUARL_PFPATH", QUARL_SOURCE_DIR "/etc", 1);
        std::signal(SIGPIPE, SIG_IGN); // a tool that ends too early fails its test only
        fs::create_directory(folder_);
    }
    ~Interrupt() override { fs::remove_all(folder_); }

    [[nodiscard]] std::string file(const std::string &bytes) const
    {
        write_file(folder_ / "volume", bytes);
        return folder_ / "volume";
    }
    /// The listing of so many records.
    [[nodiscard]] std::string listing(int count) const
    {
        return run(QUARL_PROGRAM, {file(records(count))}, STDIN_FILENO).out;
    }

    const fs::path folder_ = fs::temp_directory_path() / ("interrupt." + std::to_string(getpid()));
};

/// The tool with 25 records to come, of which 24 and a byte are sent. `before` is a line of the
/// shell. Output goes to descriptors that are given, else to pipes.
struct Waiting {
    explicit Waiting(const std::string &before = "", int to_out = -1, int to_err = -1)
        : tool(start("/bin/sh", {"-c", before + "exec \"$0\"", QUARL_PROGRAM},
                     {in.read_end, to_out < 0 ? out.write_end : to_out,
                      to_err < 0 ? err.write_end : to_err}))
    {
        in.close_read();
        out.close_write();
        err.close_write();
        write_all(in.write_end, volume.substr(0, Sent));
    }
    /// Comes back when all is read that was sent: this is when the ninth record is listed, as 64
    /// KiB and a byte behind the beginning of a record are needed to enter it.
    void wait(const std::string &listing)
    {
        const std::string lines = first_lines(listing, 9);
        listed = receive(out.read_end, lines.size());
        EXPECT_EQ(listed, lines);
    }
    Outcome finish(std::string_view rest)
    {
        write_all(in.write_end, rest);
        in.close_write();
        listed += receive(out.read_end, Everything);
        std::string said = receive(err.read_end, Everything);
        return {listed, std::move(said), wait_for(tool)};
    }

    static constexpr std::size_t Sent = 8 * Length + 65537;
    const std::string volume = records(25);
    Pipe in, out, err;
    pid_t tool;
    std::string listed;
};

TEST_F(Interrupt, ReadThatWaits)
{
    const std::string whole = listing(24);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        Waiting run;
        run.wait(whole);
        kill(run.tool, signal);
        run.listed += receive(run.out.read_end, Everything); // with the input still open
        const Outcome seen = run.finish("");
        EXPECT_EQ(seen.out, whole);
        EXPECT_EQ(seen.err, At_Byte + "98304 of input file #0\n");
        EXPECT_EQ(seen.status, "signal " + std::to_string(signal));
    }
}

TEST_F(Interrupt, SignalsThatAreIgnoredOrAsk)
{
    const std::string whole = listing(25);
    Waiting run("trap '' INT TERM HUP; ");
    run.wait(whole);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGUSR1})
        kill(run.tool, signal);
    const std::string said = receive(run.err.read_end, 1);
    EXPECT_TRUE(std::regex_match(said, std::regex("quarl: 98\\.3 kB read, [0-9.]+ k?M?B/s\n")))
        << said;
    const Outcome seen = run.finish(run.volume.substr(Waiting::Sent));
    EXPECT_EQ(seen.out, whole);
    EXPECT_EQ(seen.err, "");
    EXPECT_EQ(seen.status, "0");
}

/// Starts the tool with a pipe for the listing that holds a page, and comes back when it is full.
pid_t start_with_little_room(const std::string &volume, Pipe *out, int err)
{
    const int room = fcntl(out->write_end, F_SETPIPE_SZ, 1);
    const pid_t tool = start(QUARL_PROGRAM, {volume}, {err, out->write_end, err});
    out->close_write();
    for (int held = 0; held < room; ioctl(out->read_end, FIONREAD, &held))
        usleep(1000);
    return tool;
}

TEST_F(Interrupt, ListingThatNobodyTakes)
{
    constexpr int Records = 300;
    const std::string volume = records(Records);
    const std::string whole = listing(Records);
    for (const char *filter : {"", "gzip", "zstd"}) {
        Pipe out;
        Pipe err;
        const pid_t tool = start_with_little_room(
            file(*filter ? compressed(volume, filter) : volume), &out, err.write_end);
        err.close_write();
        kill(tool, SIGTERM);
        usleep(300'000); // the write that waits is interrupted again
        const std::string listed = receive(out.read_end, Everything);
        const int count = static_cast<int>(std::ranges::count(listed, '\n')) - 7; // statistics
        const std::string bytes = std::to_string(Length * static_cast<std::size_t>(count));
        EXPECT_LT(count, Records);
        EXPECT_TRUE(listed.starts_with(first_lines(whole, count) + "\nBlockette Summary"));
        EXPECT_NE(listed.find(bytes + " =  100.0%\nTotal Wasted"), listed.npos);
        EXPECT_EQ(receive(err.read_end, Everything), At_Byte + bytes + " of input file #0\n");
        EXPECT_EQ(wait_for(tool), "signal " + std::to_string(SIGTERM)) << filter;
    }
    Pipe out;
    const pid_t tool = start_with_little_room(file(volume), &out, STDERR_FILENO);
    int status = 0;
    for (int i = 0; i < 1000 && waitpid(tool, &status, WNOHANG) == 0; ++i) {
        kill(tool, SIGINT); // a later one than the first ends it, though nobody reads
        usleep(10000);
    }
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGINT);
    EXPECT_TRUE(whole.starts_with(receive(out.read_end, Everything)));
}

/// True once the process has a handler for SIGTERM.
bool catches_term(pid_t process)
{
    std::ifstream status("/proc/" + std::to_string(process) + "/status");
    for (std::string word; status >> word;)
        if (word == "SigCgt:" && status >> word)
            return (std::stoull(word, nullptr, 16) >> (SIGTERM - 1) & 1) != 0;
    return false;
}

TEST_F(Interrupt, FifoThatNobodyOpens)
{
    const std::string path = folder_ / "fifo";
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    Pipe err;
    const pid_t tool = start(QUARL_PROGRAM, {path}, {err.write_end, err.write_end, err.write_end});
    err.close_write();
    while (!catches_term(tool))
        usleep(1000);
    kill(tool, SIGTERM);
    EXPECT_EQ(receive(err.read_end, Everything),
              "quarl: Interrupted while opening input file " + path + "\n");
    EXPECT_EQ(wait_for(tool), "signal " + std::to_string(SIGTERM));
}

TEST(ProgressText, TellsWhatIsKnown)
{
    const struct {
        Progress progress;
        double seconds;
        const char *text;
    } cases[] = {
        {{}, 0, "0 B read"},
        {{0, 999, 0, -1}, 1, "999 B read, 999 B/s"},
        {{0, 999'960, 0, -1}, 4, "1.0 MB read, 250.0 kB/s"},
        {{2, 3'000'000'000, 1'000'000, 4'000'000},
         20,
         "3.0 GB read of input file #2, 25 %, 150.0 MB/s, 1:00 left"},
        {{0, 1, 1, 3602}, 1, "1 B read, 0 %, 1 B/s, 1:00:01 left"},
        {{0, 5, 5, 4}, 1, "5 B read, 100 %, 5 B/s"}, // the file grew or shrank
        {{0, 1, 1, INT64_MAX}, 1e9, "1 B read, 0 %, 0 B/s, 99:59:59 left"},
        {{0, INT64_MAX, 0, 0}, 1, "9223372.0 TB read, 9223372.0 TB/s"},
    };
    for (const auto &[progress, seconds, text] : cases)
        EXPECT_EQ(progress_text(progress, seconds), text);
}

TEST_F(Interrupt, OneOfSeveralVolumes)
{
    Pipe in;
    Pipe err;
    const pid_t tool = start(std::string(QUARL_PROGRAM) + "-check", {"-", file("")},
                             {in.read_end, err.write_end, err.write_end});
    err.close_write();
    while (!catches_term(tool))
        usleep(1000);
    kill(tool, SIGTERM);
    EXPECT_EQ(receive(err.read_end, Everything),
              "quarl: -: Interrupted at byte 0 of input file #0\n"
              "quarl: 0 errors, 0 warnings, 0 notes in 1 volume\n");
    EXPECT_EQ(wait_for(tool), "signal " + std::to_string(SIGTERM));
}

/// A terminal: what is written to `inside` can be read from `outside`.
struct Terminal {
    Terminal() : outside(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC))
    {
        if (grantpt(outside) == 0 && unlockpt(outside) == 0)
            inside = open(ptsname(outside), O_RDWR | O_NOCTTY | O_CLOEXEC);
    }
    Terminal(const Terminal &) = delete;
    Terminal &operator=(const Terminal &) = delete;
    ~Terminal() { close(outside); }

    int outside;
    int inside = -1;
};

/// What stands on the screen of a terminal in the end.
std::string screen(const std::string &stream)
{
    std::string text;
    std::string line;
    std::size_t at = 0;
    for (const char c : stream + "\n")
        if (c == '\r') {
            at = 0;
        } else if (c == '\n') {
            text += line.substr(0, line.find_last_not_of(' ') + 1) + c;
            line.clear();
        } else {
            line.resize(std::max(line.size(), at + 1), ' ');
            line[at++] = c;
        }
    return text;
}

TEST_F(Interrupt, StatusLine)
{
    const std::string message = "quarl: Input ends inside logical record #26: 1 of 4096 bytes\n";
    Terminal terminal;
    Waiting run("", -1, terminal.inside);
    close(terminal.inside);
    std::string shown;
    for (std::string part = "-"; !part.empty() && shown.find(" read, ") == shown.npos;)
        shown += part = receive(terminal.outside, 1);
    EXPECT_EQ(screen(shown).find("98.3 kB read, "), 0) << shown;
    run.finish(run.volume.substr(Waiting::Sent) + "0");
    shown += receive(terminal.outside, Everything);
    EXPECT_EQ(screen(shown), message + "\n");
    shown.erase(0, shown.find(message.substr(0, message.size() - 1)));
    EXPECT_EQ(shown.find(" read"), shown.npos);
}

TEST_F(Interrupt, NoStatusLineInAListingOrLog)
{
    Terminal both;
    Terminal listing;
    Waiting one("", both.inside, both.inside);
    Waiting other("", listing.inside);
    close(both.inside);
    close(listing.inside);
    usleep(1'500'000); // time enough for a line to show
    EXPECT_EQ(one.finish("").err, "");
    EXPECT_EQ(other.finish("").err,
              "quarl: Input ends inside logical record #25: 1 of 4096 bytes\n");
    for (const Terminal *each : {&both, &listing}) {
        const std::string shown = receive(each->outside, Everything);
        EXPECT_NE(shown.find("Total Wasted"), shown.npos);
        EXPECT_EQ(shown.find(" read"), shown.npos);
    }
}

} // namespace
