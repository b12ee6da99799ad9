// Opens a possibly compressed file as one stream of plain bytes.
#pragma once

#include "platform/inflater.h"

#include <cstddef>
#include <memory>
#include <string>
#include <sys/types.h>

namespace quarl
{

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
    /// repeated. After a decompressor's fault every further call returns 0.
    ssize_t read(char *to, std::size_t size);
    [[nodiscard]] int fd() const { return fd_; }

private:
    int fd_;
    bool owned_;
    std::unique_ptr<Inflater> inflater_;
};

/// Opens `path` for reading. A regular file that begins with the mark of gzip, compress, bzip2, xz,
/// lzma, zstd or lz4 is inflated on the way, in constant memory. Null with errno set when it cannot
/// be opened.
std::unique_ptr<Stream> gz_cat(const char *path);

/// The same for standard input, which stays open when the stream ends.
std::unique_ptr<Stream> gz_cat_stdin();

} // namespace quarl
