// What the fuzz targets share: hostile bytes as text or file, and the end of the process as the end
// of one input.
#pragma once

#include "platform/elog.h"
#include "platform/out.h"
#include "records.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <sys/mman.h>
#include <unistd.h>
#include <utility>

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

/// Runs `f`; a fatal message ends it and nothing else. What the run loop keeps is forgotten.
template <class F> void run_one(F &&f)
{
    struct Ended {
    };
    Process_End = [](int) { throw Ended(); };
    Tbl_031.clear();
    Tbl_033.clear();
    Tbl_034.clear();
    Geoscope_channels.clear();
    try {
        std::forward<F>(f)();
        Stdout.flush();
        Stderr.flush();
    } catch (const Ended &) {
        Stdout.discard();
    }
}
