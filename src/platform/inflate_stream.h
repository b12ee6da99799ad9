// Inflaters that hand over every byte in front of a fault.
//
// libarchive drops the block of up to 64 KiB that it was filling when the input turns out to be cut
// short or damaged, and it does not compare gzip's check sums. gzip, xz and lzma, nearly all
// compressed volumes, are therefore decoded straight into the caller's buffer. bzip2, zstd and lz4
// yield whole blocks by nature, and compress has neither an end mark nor a check sum: they stay
// with libarchive.
#pragma once

#include "platform/inflater.h"

#include <memory>

namespace quarl
{

/// Inflates gzip members in a row; blocks of zeros may follow them. Lengths and check sums are
/// verified. At a fault the file is read a second time, from where `fd` stood.
std::unique_ptr<Inflater> new_gzip_inflater(int fd);

/// Inflates xz streams in a row.
std::unique_ptr<Inflater> new_xz_inflater(int fd);

/// Inflates one stream of xz's predecessor.
std::unique_ptr<Inflater> new_lzma_inflater(int fd);

} // namespace quarl
