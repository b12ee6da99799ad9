#include "programs/output_file.h"

#include "programs/interrupt.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <quarl/error.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace quarl
{

namespace
{

[[noreturn]] void fail(const std::string &path, int error)
{
    throw Error(MessageKind::output_failed,
                "Can't write " + path + ": " + std::string(std::strerror(error)), error);
}

/// A file that is being written, and goes away unless it gets its name.
class Draft
{
public:
    /// `path` is that of a regular file, or of none; `status` tells of the one that is there.
    Draft(std::string path, const struct stat *status) : path_(std::move(path))
    {
        constexpr int Attempts = 100; // at names that killed runs may have left
        const HeldSignals held;       // none comes between the making of the file and its name's
        for (int i = 0; fd_ < 0 && i < Attempts; ++i) {
            draft_ = path_ + "." + std::to_string(getpid() + i) + ".tmp";
            fd_ = open(draft_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
            if (fd_ < 0 && errno != EEXIST)
                break;
        }
        if (fd_ < 0)
            fail(path_, errno);
        remove_at_end(draft_.c_str());
        if (status)
            (void)fchmod(fd_, status->st_mode & 0777);
    }
    Draft(const Draft &) = delete;
    Draft &operator=(const Draft &) = delete;
    ~Draft()
    {
        if (fd_ >= 0)
            close(fd_);
        if (!draft_.empty())
            unlink(draft_.c_str());
        remove_at_end(nullptr);
    }

    [[nodiscard]] int fd() const { return fd_; }
    void finish()
    {
        if (close(std::exchange(fd_, -1)) != 0 || rename(draft_.c_str(), path_.c_str()) != 0)
            fail(path_, errno);
        draft_.clear();
    }

private:
    std::string path_;
    std::string draft_;
    int fd_ = -1;
};

/// What a link to nothing names at last.
std::string end_of_links(const std::string &path)
{
    constexpr int Most = 40; // as many as the system follows
    std::filesystem::path at = path;
    std::error_code error;
    for (int i = 0; i < Most && std::filesystem::is_symlink(at, error); ++i)
        at = at.parent_path() / std::filesystem::read_symlink(at, error);
    return at;
}

/// The file behind `path`, links followed, where it can be made or replaced by another of that
/// name; empty for what has to be written to as it is. A name in /dev or /proc stands for what a
/// process has open, whatever that is.
std::string replaceable(const std::string &path, const struct stat *status)
{
    if (!status)
        return end_of_links(path);
    if (!S_ISREG(status->st_mode) || path.starts_with("/dev/") || path.starts_with("/proc/"))
        return {};
    const std::unique_ptr<char, void (*)(void *)> real(realpath(path.c_str(), nullptr), std::free);
    return real ? real.get() : "";
}

/// Closes a descriptor.
class Closing
{
public:
    explicit Closing(int fd) : fd_(fd) {}
    Closing(const Closing &) = delete;
    Closing &operator=(const Closing &) = delete;
    ~Closing() { close(fd_); }

private:
    int fd_;
};

void write_through(int fd, const std::string &path, const std::function<void(Out &)> &write)
try {
    Out out(fd);
    write(out);
    out.flush();
} catch (const Error &error) {
    if (error.kind() == MessageKind::output_failed)
        fail(path, error.error());
    throw;
}

} // namespace

bool is_standard_output(std::string_view path) { return path.empty() || path == "-"; }

void write_output(Out &standard, const std::string &path, const std::function<void(Out &)> &write)
{
    if (is_standard_output(path))
        write(standard);
    else
        write_file(path, write);
}

void write_file(const std::string &path, const std::function<void(Out &)> &write)
{
    struct stat status = {};
    const struct stat *there = stat(path.c_str(), &status) == 0 ? &status : nullptr;
    if (!there && errno != ENOENT) // a link that may not be followed, for one
        fail(path, errno);
    if (const std::string target = replaceable(path, there); !target.empty()) {
        Draft draft(target, there);
        write_through(draft.fd(), path, write);
        draft.finish();
        return;
    }
    const int fd = open(path.c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC);
    if (fd < 0)
        fail(path, errno);
    const Closing closing(fd);
    write_through(fd, path, write);
}

bool is_one_file(const std::string &path, const std::string &output)
{
    struct stat in = {};
    struct stat out = {};
    const bool has_in = path == "-" ? fstat(STDIN_FILENO, &in) == 0 : stat(path.c_str(), &in) == 0;
    return has_in && !is_standard_output(output) && stat(output.c_str(), &out) == 0 &&
           S_ISREG(out.st_mode) && in.st_dev == out.st_dev && in.st_ino == out.st_ino;
}

} // namespace quarl
