#include "platform/inflate_source.h"

#include "platform/elog.h"

#include <cerrno>
#include <unistd.h>

namespace quarl
{

std::size_t BlockSource::next()
{
    if (error_ != 0)
        return 0;
    const ssize_t count =
        unless_given_up([&] { return ::read(fd_, block_.data(), block_.size()); });
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
