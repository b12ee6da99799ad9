// Opens a possibly compressed file as one stream of plain bytes.
#pragma once

#include "platform/inflater.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <sys/types.h>

namespace quarl
{

/// What is known of a regular file: bytes of it that were read, and its size. Both count from where
/// the reading began. Size -1: the file is no regular one.
struct Stored {
    std::int64_t read = 0;
    std::int64_t size = -1;
};

/// A readable stream over a descriptor, which it owns except for standard input. Plain contents are
/// read straight from the descriptor with exactly the sizes asked for.
class Stream
{
public:
    Stream(int fd, bool owned, std::unique_ptr<Inflater> inflater);
    Stream(const Stream &) = delete;
    Stream &operator=(const Stream &) = delete;
    ~Stream();

    /// Reads up to `size` bytes: the count, 0 at the end of the file, or -1 with the reason left
    /// for elog (errno, or elog_set_reason for the decompressor's own words). Interrupted calls are
    /// repeated unless they are given up (EINTR). After a decompressor's fault every further call
    /// returns 0.
    ssize_t read(char *to, std::size_t size);
    [[nodiscard]] Stored stored() const;
    /// A pipe, a socket or a terminal that has nothing to read now, and is not at its end.
    [[nodiscard]] bool would_wait() const;
    [[nodiscard]] int fd() const { return fd_; }

private:
    int fd_;
    bool owned_;
    off_t begin_; ///< where the reading began; negative: it cannot be told
    std::unique_ptr<Inflater> inflater_;
};

/// Opens `path` for reading. A regular file that begins with the mark of gzip, compress, bzip2, xz,
/// lzma, zstd or lz4 is inflated on the way, in constant memory. Null with errno set when it cannot
/// be opened; EINTR when that was given up.
std::unique_ptr<Stream> gz_cat(const char *path);

/// The same for standard input, which stays open when the stream ends.
std::unique_ptr<Stream> gz_cat_stdin();

} // namespace quarl
