// What stands between a compressed descriptor and its plain bytes.
#pragma once

#include <cstddef>
#include <sys/types.h>

namespace quarl
{

/// Inflates one compressed descriptor; what stands behind it is the decompression library's.
class Inflater
{
public:
    virtual ~Inflater() = default;
    /// Reads up to `size` bytes: the count, 0 at the end of the contents, or -1 with the reason
    /// left for elog (errno, or elog_set_reason for the library's own words). After -1 every
    /// further call returns 0.
    virtual ssize_t read(char *to, std::size_t size) = 0;
};

} // namespace quarl
