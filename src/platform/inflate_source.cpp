#include "platform/inflate_source.h"

#include "platform/elog.h"

#include <cerrno>
#include <unistd.h>

namespace quarl
{

std::size_t BlockSource::next()
{
    ssize_t count = 0;
    do
        count = error_ != 0 ? 0 : ::read(fd_, block_.data(), block_.size());
    while (count < 0 && errno == EINTR && !gives_up());
    if (count >= 0)
        return static_cast<std::size_t>(count);
    error_ = errno;
    return 0;
}

ssize_t leave_reason(int error, std::string_view words)
{
    elog_set_reason(error != 0 ? "" : words);
    errno = error;
    return -1;
}

} // namespace quarl
