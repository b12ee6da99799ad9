#include "mseed/spool.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

namespace quarl::mseed
{

namespace
{

constexpr std::size_t Most_Held = 1 << 18; ///< bytes

int open_nameless(const std::string &folder)
{
    const int fd = open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
    if (fd >= 0)
        return fd;
    std::string name = folder + "/.quarl-mseed.XXXXXX"; // a file system without such files
    const int named = mkostemp(name.data(), O_CLOEXEC);
    if (named < 0)
        fail_to_write(folder, errno);
    unlink(name.c_str());
    return named;
}

} // namespace

Spool::Spool(const std::string &folder) : folder_(folder), file_(open_nameless(folder)) {}

void Spool::add(const std::string &path, const ChannelCode &channel, Time start,
                std::string_view record)
{
    if (!last_ || last_path_ != path) {
        last_ = &queues_.try_emplace(path, Queue{channel, {}}).first->second;
        last_path_ = path;
    }
    last_->records.push_back(
        {start, size_, static_cast<std::uint32_t>(record.size()), content_of(record)});
    size_ += record.size();
    held_ += record;
    if (held_.size() >= Most_Held)
        flush();
}

void Spool::flush()
{
    std::uint64_t at = size_ - held_.size();
    for (std::string_view rest = held_; !rest.empty();) {
        const ssize_t count = pwrite(file_.get(), rest.data(), rest.size(), static_cast<off_t>(at));
        if (count < 0 && errno != EINTR)
            fail_to_write(folder_, errno);
        if (count > 0) {
            rest.remove_prefix(static_cast<std::size_t>(count));
            at += static_cast<std::uint64_t>(count);
        }
    }
    held_.clear();
}

void Spool::clear()
{
    queues_.clear();
    last_ = nullptr;
    held_.clear();
    size_ = 0;
    if (ftruncate(file_.get(), 0) != 0)
        fail_to_write(folder_, errno);
}

} // namespace quarl::mseed
