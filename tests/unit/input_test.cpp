#include "compose/files.h"
#include "compose/volume.h"
#include "platform/text.h"
#include "sdd.h"
#include "seed/seed.h"
#include "support/capture.h"
#include "support/process.h"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <thread>
#include <unistd.h>

namespace
{

std::string records(int count)
{
    VolumeBuilder volume(512);
    for (int i = 1; i <= count; ++i)
        volume.data({.samples = i, .b1000 = DataOnly()});
    return volume.volume();
}

class Input : public testing::Test
{
protected:
    ~Input() override { std::filesystem::remove(path_); }

    const std::string path_ =
        std::filesystem::temp_directory_path() / ("input." + std::to_string(getpid()));
};

/// Hands out bytes in pieces of one size and notes how many were asked for.
class Pieces : public Inflater
{
public:
    Pieces(std::string bytes, std::size_t size, std::vector<std::size_t> *requests)
        : bytes_(std::move(bytes)), size_(size), requests_(requests)
    {
    }
    ssize_t read(char *to, std::size_t size) override
    {
        requests_->push_back(size);
        const std::size_t count = bytes_.copy(to, std::min(size, size_), at_);
        at_ += count;
        return static_cast<ssize_t>(count);
    }

private:
    std::string bytes_;
    std::size_t size_;
    std::size_t at_ = 0;
    std::vector<std::size_t> *requests_;
};

/// The sizes of the reads while all items are framed.
std::vector<std::size_t> requests(const std::string &bytes, std::size_t piece)
{
    std::vector<std::size_t> sizes;
    capture([&] {
        const auto handle = seed_read("/dev/null");
        auto pieces = std::make_unique<Pieces>(bytes, piece, &sizes);
        handle->logical->stream = std::make_unique<Stream>(-1, false, std::move(pieces));
        Record record;
        int type = 0;
        while (read_blk(handle.get(), &record, &type)) {
        }
    });
    return sizes;
}

TEST_F(Input, AsksForAllThatTheBufferTakes)
{
    const std::vector<std::size_t> whole = requests(records(600), 1000000);
    EXPECT_EQ(std::vector(whole.begin(), whole.begin() + 4),
              (std::vector<std::size_t>{131074, 66048, 66048, 66048}));
    const std::vector<std::size_t> pieces = requests(records(600), 1000);
    EXPECT_EQ(pieces.at(1), 130074U);
    EXPECT_EQ(pieces.at(65), 66074U);
    EXPECT_EQ(pieces.at(66), 65586U); // one record is done with
}

volatile std::sig_atomic_t Ticks = 0;

TEST_F(Input, SlowPipeAndInterruptedCallsChangeNothing)
{
    const std::string bytes = records(4);
    write_file(path_, bytes);
    const Captured plain = capture([&] { sdd(path_, 0); });
    std::filesystem::remove(path_);
    ASSERT_EQ(mkfifo(path_.c_str(), 0600), 0);
    struct sigaction action = {};
    action.sa_handler = [](int) { Ticks = Ticks + 1; };
    sigaction(SIGALRM, &action, nullptr);
    std::signal(SIGPIPE, SIG_IGN); // should the reader give up
    std::thread writer([&] {
        sigset_t alarm;
        sigemptyset(&alarm);
        sigaddset(&alarm, SIGALRM);
        pthread_sigmask(SIG_BLOCK, &alarm, nullptr);
        const int fd = open(path_.c_str(), O_WRONLY);
        for (std::size_t i = 0; i < bytes.size(); ++i) {
            write_all(fd, {&bytes[i], 1});
            if (i % 64 == 0)
                usleep(3000);
        }
        close(fd);
    });
    const itimerval often = {{0, 1000}, {0, 1000}};
    const itimerval never = {};
    setitimer(ITIMER_REAL, &often, nullptr);
    const Captured slow = capture([&] { sdd(path_, 0); });
    setitimer(ITIMER_REAL, &never, nullptr);
    writer.join();
    EXPECT_EQ(slow.out, plain.out);
    EXPECT_GT(Ticks, 10);
}

TEST_F(Input, CutAnywhereIsToldOnce)
{
    VolumeBuilder volume(512);
    volume.header('A');
    for (int i = 1; i <= 20; ++i)
        volume.blockette(33, std::to_string(100 + i) + "Some abbreviation of a word~");
    const std::string bytes = volume.data({.b1000 = DataOnly()}).volume();
    write_file(path_, bytes);
    for (std::size_t size = bytes.size() - 1; size > 0; --size) {
        std::filesystem::resize_file(path_, size);
        const std::string err = capture([&] { sdd(path_, 0); }).err;
        const std::string_view told = "quarl: Input ends inside logical record #";
        const std::size_t first = err.find(told);
        const std::string lost = bytes.substr(size, (512 - size % 512) % 512);
        EXPECT_TRUE(blank(lost) || first != std::string::npos) << size;
        EXPECT_EQ(first, err.rfind(told)) << size;
    }
}

TEST_F(Input, HandledRecordsAreShownBeforeItWaits)
{
    constexpr std::size_t Ahead = 65536; // bytes that are read before the first record is handled
    const std::string bytes = records(140);
    setenv("QUARL_PFPATH", QUARL_SOURCE_DIR "/etc", 1);
    write_file(path_, bytes);
    const std::string listing = run(QUARL_PROGRAM, {path_}, STDIN_FILENO).out;
    Pipe in;
    Pipe out;
    const int quiet = open("/dev/null", O_WRONLY | O_CLOEXEC);
    const pid_t tool = start(QUARL_PROGRAM, {}, {in.read_end, out.write_end, quiet});
    out.close_write();
    write_all(in.write_end, bytes.substr(0, Ahead));
    std::size_t shown = 0;
    for (std::size_t at = Ahead; at < bytes.size(); at += 512) {
        write_all(in.write_end, bytes.substr(at, 512));
        const std::size_t end = listing.find('\n', shown) + 1;
        const std::string line = receive(out.read_end, end - shown);
        EXPECT_EQ(line, listing.substr(shown, end - shown));
        shown += line.size();
    }
    in.close_write();
    EXPECT_EQ(receive(out.read_end, listing.size()), listing.substr(shown));
    EXPECT_EQ(wait_for(tool), "0");
    close(quiet);
}

} // namespace
