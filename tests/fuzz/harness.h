// What the fuzz targets share: hostile bytes as text or file, and the end of the process as the end
// of one input.
#pragma once

#include "programs/program.h"
#include "programs/sdd.h"
#include "volume/state.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <sys/mman.h>
#include <unistd.h>
#include <utility>

using namespace quarl; // NOLINT: every target is about it

/// One input of a target; always 0.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

inline std::string_view as_text(const std::uint8_t *data, std::size_t size)
{
    return {reinterpret_cast<const char *>(data), size};
}

/// Bytes as a regular file that has a path.
class MemoryFile
{
public:
    explicit MemoryFile(std::string_view bytes) : fd_(memfd_create("input", MFD_CLOEXEC))
    {
        if (fd_ < 0 || write(fd_, bytes.data(), bytes.size()) != std::ssize(bytes))
            __builtin_trap();
    }
    MemoryFile(const MemoryFile &) = delete;
    MemoryFile &operator=(const MemoryFile &) = delete;
    ~MemoryFile() { close(fd_); }

    [[nodiscard]] std::string path() const { return "/proc/self/fd/" + std::to_string(fd_); }

private:
    int fd_;
};

/// Runs f(Console *) with state of its own; a fatal message ends it and nothing else.
template <class F> void run_one(F &&f)
{
    Console console("quarl");
    State state{VolumeOptions()};
    const Reading reading(state);
    run_guarded(&console, [&] {
        std::forward<F>(f)(&console);
        return 0;
    });
}
