// What the benchmarks of library pieces share: files in memory, silence, reading a volume through.
#pragma once

#include "volume/seed.h"
#include "volume/state.h"

#include <cerrno>
#include <cstdint>
#include <fcntl.h>
#include <string>
#include <string_view>
#include <sys/mman.h>
#include <system_error>
#include <unistd.h>

using namespace quarl; // NOLINT: every benchmark is about it

// The pieces under measurement find their state here.
inline State Bench_State{VolumeOptions()};
inline const Reading Bench_Reading{Bench_State};
inline const Current<Databases> Bench_Databases{*Bench_State.run.databases};

/// A file that exists in memory only and has a path as long as this lives.
class MemoryFile
{
public:
    explicit MemoryFile(std::string_view bytes) : fd_(memfd_create("volume", MFD_CLOEXEC))
    {
        while (fd_ >= 0 && !bytes.empty()) {
            const ssize_t written = write(fd_, bytes.data(), bytes.size());
            if (written <= 0)
                throw std::system_error(errno, std::generic_category(), "volume in memory");
            bytes.remove_prefix(static_cast<std::size_t>(written));
        }
    }
    MemoryFile(const MemoryFile &) = delete;
    MemoryFile &operator=(const MemoryFile &) = delete;
    ~MemoryFile() { close(fd_); }

    [[nodiscard]] std::string path() const { return "/proc/self/fd/" + std::to_string(fd_); }

private:
    int fd_;
};

/// Leads standard output and standard error to /dev/null. The benchmark library reports on standard
/// output, so this lives for one benchmark only.
class Quiet
{
public:
    Quiet() : null_(open("/dev/null", O_WRONLY | O_CLOEXEC)), out_(dup(1)), err_(dup(2))
    {
        if (null_ < 0 || out_ < 0 || err_ < 0 || dup2(null_, 1) < 0 || dup2(null_, 2) < 0)
            throw std::system_error(errno, std::generic_category(), "/dev/null");
    }
    Quiet(const Quiet &) = delete;
    Quiet &operator=(const Quiet &) = delete;
    ~Quiet()
    {
        dup2(out_, 1);
        dup2(err_, 2);
        for (const int fd : {null_, out_, err_})
            close(fd);
    }

private:
    int null_;
    int out_;
    int err_;
};

/// Reads the volume at `path` through: the number of blockettes and data records.
inline std::int64_t read_through(const std::string &path)
{
    const auto handle = seed_read(path);
    std::int64_t items = 0;
    Record record;
    int type = 0;
    while (read_blk(handle.get(), &record, &type))
        ++items;
    return items;
}
