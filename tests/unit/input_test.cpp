#include "compose/files.h"
#include "compose/volume.h"
#include "platform/text.h"
#include "programs/sdd.h"
#include "support/capture.h"
#include "support/process.h"
#include "volume/seed.h"

#include <array>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/socket.h>
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
              (std::vector<std::size_t>{131072 + 4096, 65536, 65536, 65536}));
    const std::vector<std::size_t> pieces = requests(records(600), 1000);
    EXPECT_EQ(pieces.at(1), 131072 + 4096 - 1000);
    EXPECT_EQ(pieces.at(65), 131072 + 4096 - 65000);
    EXPECT_EQ(pieces.at(66), 131072 + 4096 - 66000); // one record is done with
}

volatile std::sig_atomic_t Ticks = 0;

TEST_F(Input, SlowPipeAndInterruptedCallsChangeNothing)
{
    const std::string bytes = records(4);
    write_file(path_, bytes);
    const Captured plain = capture([&] { list_volume(path_); });
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
    const Captured slow = capture([&] { list_volume(path_); });
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
        const std::string err = capture([&] { list_volume(path_); }).err;
        const std::string_view told = "quarl: Input ends inside logical record #";
        const std::size_t first = err.find(told);
        EXPECT_EQ(first == std::string::npos, size % 512 == 0) << size;
        EXPECT_EQ(first, err.rfind(told)) << size;
    }
}

TEST_F(Input, HandledRecordsAreShownBeforeItWaits)
{
    constexpr std::size_t Ahead = 65536; // bytes that are read before the first record is handled
    const std::string bytes = records(140);
    setenv("QUARL_PFPATH", QUARL_SOURCE_DIR "/etc", 1);
    write_file(path_, bytes);
    const Outcome whole = run(QUARL_PROGRAM, {path_}, STDIN_FILENO);
    Pipe in;
    Pipe out;
    Pipe err;
    const pid_t tool = start(QUARL_PROGRAM, {}, {in.read_end, out.write_end, err.write_end});
    out.close_write();
    err.close_write();
    write_all(in.write_end, bytes.substr(0, Ahead));
    std::size_t listed = 0;
    std::size_t told = 0;
    const auto next_line = [](int fd, const std::string &all, std::size_t *at) {
        const std::size_t size = all.find('\n', *at) + 1 - *at;
        EXPECT_EQ(receive(fd, size), all.substr(*at, size));
        *at += size;
    };
    for (std::size_t at = Ahead; at < bytes.size(); at += 512) {
        write_all(in.write_end, bytes.substr(at, 512));
        next_line(out.read_end, whole.out, &listed);
        next_line(err.read_end, whole.err, &told);
    }
    in.close_write();
    EXPECT_EQ(receive(out.read_end, whole.out.size()), whole.out.substr(listed));
    EXPECT_EQ(receive(err.read_end, whole.err.size()), whole.err.substr(told));
    EXPECT_EQ(wait_for(tool), "0");
}

/// The lines of `text`, each with its newline.
std::vector<std::string> lines(const std::string &text)
{
    std::vector<std::string> all;
    for (std::size_t at = 0, end = 0; at < text.size(); at = end) {
        end = text.find('\n', at) + 1;
        all.push_back(text.substr(at, end - at));
    }
    return all;
}

TEST_F(Input, BothStreamsInOneFileKeepTheReadingOrder)
{
    setenv("QUARL_PFPATH", QUARL_SOURCE_DIR "/etc", 1);
    write_file(path_, records(300)); // of which each is complained about
    const Outcome apart = run(QUARL_PROGRAM, {path_}, STDIN_FILENO);
    const std::vector<std::string> messages = lines(apart.err);
    std::string expected;
    std::size_t i = 0;
    for (const std::string &line : lines(apart.out)) {
        if (i < messages.size())
            expected += messages[i++];
        expected += line;
    }
    ASSERT_EQ(i, 300U);
    const std::string both = path_ + ".both";
    for (const std::string onto :
         {">\"$2\" 2>&1", "2>\"$2\" >\"$2\"", ">>\"$2\" 2>>\"$2\"", "2>&1 | cat >\"$2\""}) {
        std::filesystem::remove(both);
        run("/bin/sh", {"-c", "\"$0\" \"$1\" " + onto, QUARL_PROGRAM, path_, both}, STDIN_FILENO);
        EXPECT_EQ(read_file(both), expected) << onto;
    }
    std::filesystem::remove(both);
}

TEST_F(Input, MessagesLeaveWhole)
{
    setenv("QUARL_PFPATH", QUARL_SOURCE_DIR "/etc", 1);
    write_file(path_, records(300));
    std::array<int, 2> packets; // of which each is one write
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, packets.data()), 0);
    const pid_t tool =
        start(QUARL_PROGRAM, {"-s", path_}, {STDIN_FILENO, STDERR_FILENO, packets[1]});
    close(packets[1]);
    std::string packet(Out::Capacity, ' ');
    std::string all;
    int writes = 0;
    for (ssize_t n = 0; (n = recv(packets[0], packet.data(), packet.size(), 0)) > 0; ++writes) {
        EXPECT_LE(n, PIPE_BUF);
        EXPECT_EQ(packet.substr(0, 7), "quarl: ");
        EXPECT_EQ(packet[static_cast<std::size_t>(n) - 1], '\n');
        all.append(packet, 0, static_cast<std::size_t>(n));
    }
    close(packets[0]);
    EXPECT_EQ(wait_for(tool), "0");
    EXPECT_EQ(all, run(QUARL_PROGRAM, {"-s", path_}, STDIN_FILENO).err);
    EXPECT_LT(writes, 10);
}

} // namespace
