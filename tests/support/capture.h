// What a piece of the program writes to standard output and standard error, and how it ends.
#pragma once

#include "platform/elog.h"
#include "platform/out.h"

#include <stdexcept>
#include <string>
#include <sys/mman.h>
#include <system_error>
#include <unistd.h>
#include <utility>

/// Both streams of a captured call. Status -1: it returned; else the process would have ended so.
struct Captured {
    std::string out;
    std::string err;
    int status = -1;
};

/// A descriptor led into memory until it is taken back.
class Redirected
{
public:
    explicit Redirected(int fd) : fd_(fd), saved_(dup(fd)), memory_(memfd_create("capture", 0))
    {
        if (saved_ < 0 || memory_ < 0 || dup2(memory_, fd) < 0)
            throw std::system_error(errno, std::generic_category(), "capture");
    }
    Redirected(const Redirected &) = delete;
    Redirected &operator=(const Redirected &) = delete;
    ~Redirected()
    {
        dup2(saved_, fd_);
        close(saved_);
        close(memory_);
    }

    [[nodiscard]] std::string text() const
    {
        std::string all(static_cast<std::size_t>(lseek(memory_, 0, SEEK_END)), '\0');
        const ssize_t size = pread(memory_, all.data(), all.size(), 0);
        if (size != static_cast<ssize_t>(all.size()))
            throw std::runtime_error("capture: short read");
        return all;
    }

private:
    int fd_;
    int saved_;
    int memory_;
};

/// Runs `f`. An end of the process inside it comes back as `status`.
template <class F> Captured capture(F &&f)
{
    struct Ended {
        int status;
    };
    const auto process_end = std::exchange(Process_End, [](int status) { throw Ended{status}; });
    Captured captured;
    {
        Stdout.flush();
        Stderr.flush();
        const Redirected out(STDOUT_FILENO);
        const Redirected err(STDERR_FILENO);
        try {
            std::forward<F>(f)();
        } catch (const Ended &end) {
            captured.status = end.status;
        }
        Stdout.flush();
        Stderr.flush();
        captured.out = out.text();
        captured.err = err.text();
    }
    Process_End = process_end;
    return captured;
}
