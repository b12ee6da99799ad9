#include "platform/gz_cat.h"

#include "platform/elog.h"
#include "platform/inflate.h"

#include <array>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace quarl
{

namespace
{

/// The inflater for a regular file that begins, at the descriptor's position, with the mark of a
/// compressed one; otherwise null.
std::unique_ptr<Inflater> inflater_for(int fd)
{
    struct stat status = {};
    if (fstat(fd, &status) != 0 || !S_ISREG(status.st_mode))
        return nullptr;
    std::array<char, 8> bytes;
    const off_t at = lseek(fd, 0, SEEK_CUR);
    const ssize_t count = at < 0 ? -1 : pread(fd, bytes.data(), bytes.size(), at);
    return count > 0 ? new_inflater(fd, {bytes.data(), static_cast<std::size_t>(count)}) : nullptr;
}

std::unique_ptr<Stream> open_descriptor(int fd, bool owned)
{
    return std::make_unique<Stream>(fd, owned, inflater_for(fd));
}

} // namespace

Stream::Stream(int fd, bool owned, std::unique_ptr<Inflater> inflater)
    : fd_(fd), owned_(owned), begin_(lseek(fd, 0, SEEK_CUR)), inflater_(std::move(inflater))
{
}

Stream::~Stream()
{
    inflater_.reset();
    if (owned_)
        close(fd_);
}

ssize_t Stream::read(char *to, std::size_t size)
{
    return unless_given_up(
        [&] { return inflater_ ? inflater_->read(to, size) : ::read(fd_, to, size); });
}

Stored Stream::stored() const
{
    struct stat status = {};
    if (begin_ < 0 || fstat(fd_, &status) != 0 || !S_ISREG(status.st_mode))
        return {};
    return {lseek(fd_, 0, SEEK_CUR) - begin_, status.st_size - begin_};
}

bool Stream::would_wait() const
{
    if (begin_ >= 0)
        return false;
    pollfd descriptor = {fd_, POLLIN, 0};
    return poll(&descriptor, 1, 0) == 0;
}

std::unique_ptr<Stream> gz_cat(const char *path)
{
    const int fd = unless_given_up([&] { return open(path, O_RDONLY | O_CLOEXEC); });
    if (fd < 0)
        return nullptr;
    return open_descriptor(fd, true);
}

std::unique_ptr<Stream> gz_cat_stdin() { return open_descriptor(STDIN_FILENO, false); }

} // namespace quarl
