#include "platform/out.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <poll.h>
#include <quarl/error.h>
#include <string>
#include <unistd.h>

namespace quarl
{

namespace
{

/// Waits until a non-blocking descriptor takes bytes again; any other fault is final.
bool can_go_on(int fd)
{
    if (errno == EINTR)
        return true;
    if (errno != EAGAIN)
        return false;
    pollfd waiting{fd, POLLOUT, 0};
    return poll(&waiting, 1, -1) >= 0 || errno == EINTR;
}

bool write_all(int fd, const char *from, std::size_t size)
{
    while (size > 0) {
        const ssize_t written = ::write(fd, from, size);
        if (written < 0) {
            if (!can_go_on(fd))
                return false;
            continue;
        }
        from += written;
        size -= static_cast<std::size_t>(written);
    }
    return true;
}

} // namespace

void Out::write(std::string_view text)
{
    if (text.size() <= Capacity - used_) {
        std::memcpy(buffer_.get() + used_, text.data(), text.size());
        used_ += text.size();
        return;
    }
    while (!text.empty()) {
        if (used_ == Capacity)
            flush();
        const std::size_t part = std::min(text.size(), Capacity - used_);
        std::copy_n(text.data(), part, buffer_.get() + used_);
        used_ += part;
        text.remove_prefix(part);
    }
}

void Out::flush()
{
    const std::size_t size = used_;
    used_ = 0;
    deliver({buffer_.get(), size});
}

void Out::deliver(std::string_view bytes)
{
    if (write_all(fd_, bytes.data(), bytes.size()) || (fd_ == STDERR_FILENO && errno != EPIPE))
        return;
    const int error = errno;
    throw Error(MessageKind::output_failed,
                std::string("Can't write standard output: ") + std::strerror(error), error);
}

} // namespace quarl
