// Files of records: what they hold, read back, and replaced as a whole.
#pragma once

#include <cstdint>
#include <functional>
#include <quarl/contents.h>
#include <quarl/time.h>
#include <string>
#include <string_view>
#include <vector>

namespace quarl
{
class Out;
}

namespace quarl::mseed
{

/// What could not be written, and why: it ends the run.
[[noreturn]] void fail_to_write(const std::string &path, int error);

/// A descriptor that is closed at the end; -1: none.
class Descriptor
{
public:
    explicit Descriptor(int fd = -1) : fd_(fd) {}
    Descriptor(Descriptor &&other) noexcept;
    Descriptor &operator=(Descriptor &&other) noexcept;
    ~Descriptor();

    [[nodiscard]] int get() const { return fd_; }

private:
    int fd_;
};

/// Reads pieces of a file that mostly follow each other.
class Pieces
{
public:
    explicit Pieces(int fd) : fd_(fd) {}
    /// `size` bytes from `offset` on, or fewer at the end of the file; until the next call.
    std::string_view read(std::uint64_t offset, std::size_t size);

private:
    int fd_;
    std::uint64_t begin_ = 0; ///< in the file, of what is held
    std::string held_;
};

/// Where a record stands in a file, and what tells it from others.
struct RecordPlace {
    Time start{};
    std::uint64_t offset = 0;
    std::uint32_t length = 0;
    std::uint64_t content = 0; ///< a hash of all but the sequence number, of this run
};

std::uint64_t content_of(std::string_view record);

/// Finds the records of a file of `size` bytes that holds nothing but miniSEED of one channel.
/// Returns what is wrong with it, or "".
std::string find_records(int fd, std::uint64_t size, const ChannelCode &channel,
                         std::vector<RecordPlace> *records);

/// Makes the folders that `path` names in front of its last slash.
void make_folders_of(const std::string &path);

/// Replaces the file at `path`, or makes it: `draft`, beside it, gets its bytes and then its name.
/// `may_replace` is asked right before; when it says no, all stays as it was and this is false.
bool replace_file(const std::string &path, const std::string &draft,
                  const std::function<void(Out &)> &write,
                  const std::function<bool()> &may_replace);

} // namespace quarl::mseed
