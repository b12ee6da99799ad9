// What a piece of the program writes to standard output and standard error, and how it ends.
#pragma once

#include "programs/program.h"
#include "programs/reading.h"
#include "programs/sdd.h"
#include "volume/state.h"

#include <stdexcept>
#include <string>
#include <sys/mman.h>
#include <system_error>
#include <unistd.h>
#include <utility>

using namespace quarl; // NOLINT: every test is about it

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

// Modules under test find their state here; each test is a process of its own.
inline State Test_State{VolumeOptions()};
inline const Reading Test_Reading{Test_State};
inline const Current<Databases> Test_Databases{*Test_State.run.databases};

/// What is captured at the moment.
inline Console *Test_Console = nullptr;
inline Console &console() { return *Test_Console; }
inline Out &out() { return console().out(); }

/// Lists the volume at `path` as the program does.
inline void list_volume(const std::string &path)
{
    sdd(Test_Console, reading_options(Test_Console, nullptr), path);
}

/// Runs `f` with both streams captured. An Error comes back as the message and the status
/// with which it ends a program.
template <class F> Captured capture(F &&f)
{
    Captured captured;
    {
        const Redirected out(STDOUT_FILENO);
        const Redirected err(STDERR_FILENO);
        const auto shown = std::make_unique<Console>("quarl", MessageTexts::raw);
        Test_Console = shown.get();
        const int status = run_guarded(shown.get(), [&] {
            std::forward<F>(f)();
            return -1;
        });
        captured.status = status;
        captured.out = out.text();
        captured.err = err.text();
    }
    return captured;
}
