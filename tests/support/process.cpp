#include "support/process.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace
{

[[noreturn]] void fail(const char *what)
{
    throw std::system_error(errno, std::generic_category(), what);
}

void close_once(int *fd)
{
    if (*fd >= 0)
        close(std::exchange(*fd, -1));
}

/// A file in memory for what a program writes.
struct Memory {
    Memory() : fd(memfd_create("output", MFD_CLOEXEC))
    {
        if (fd < 0)
            fail("memfd_create");
    }
    Memory(const Memory &) = delete;
    Memory &operator=(const Memory &) = delete;
    ~Memory() { close(fd); }

    [[nodiscard]] std::string text() const
    {
        const off_t size = lseek(fd, 0, SEEK_END);
        lseek(fd, 0, SEEK_SET);
        return receive(fd, static_cast<std::size_t>(size));
    }

    int fd;
};

} // namespace

Pipe::Pipe()
{
    std::array<int, 2> ends;
    if (pipe2(ends.data(), O_CLOEXEC) != 0)
        fail("pipe2");
    read_end = ends[0];
    write_end = ends[1];
}

Pipe::~Pipe()
{
    close_read();
    close_write();
}

void Pipe::close_read() { close_once(&read_end); }

void Pipe::close_write() { close_once(&write_end); }

pid_t start(const std::string &tool, std::vector<std::string> args, const std::array<int, 3> &wires,
            const std::string &folder)
{
    args.insert(args.begin(), "quarl");
    std::vector<char *> argv;
    argv.reserve(args.size() + 1);
    for (std::string &arg : args)
        argv.push_back(arg.data());
    argv.push_back(nullptr);
    const pid_t child = fork();
    if (child < 0)
        fail("fork");
    if (child > 0)
        return child;
    for (int fd = 0; fd < 3; ++fd)
        if (dup2(wires[fd], fd) < 0)
            _exit(126);
    if (chdir(folder.c_str()) != 0)
        _exit(126);
    std::signal(SIGPIPE, SIG_DFL);
    execv(tool.c_str(), argv.data());
    _exit(127);
}

std::string wait_for(pid_t child)
{
    int status = 0;
    while (waitpid(child, &status, 0) < 0)
        if (errno != EINTR)
            fail("waitpid");
    return WIFEXITED(status) ? std::to_string(WEXITSTATUS(status))
                             : "signal " + std::to_string(WTERMSIG(status));
}

Outcome run(const std::string &tool, const std::vector<std::string> &args, int in)
{
    const Memory out;
    const Memory err;
    std::string status = wait_for(start(tool, args, {in, out.fd, err.fd}));
    return {out.text(), err.text(), std::move(status)};
}

bool write_all(int fd, std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t count = write(fd, bytes.data(), bytes.size());
        if (count < 0 && errno != EINTR)
            return false;
        bytes.remove_prefix(count < 0 ? 0 : static_cast<std::size_t>(count));
    }
    return true;
}

std::string receive(int fd, std::size_t size)
{
    constexpr int Patience = 10000; // ms
    std::string bytes;
    std::array<char, 65536> block;
    pollfd ready{fd, POLLIN, 0};
    while (bytes.size() < size && poll(&ready, 1, Patience) > 0) {
        const ssize_t count = read(fd, block.data(), block.size());
        if (count <= 0)
            break;
        bytes.append(block.data(), static_cast<std::size_t>(count));
    }
    return bytes;
}
