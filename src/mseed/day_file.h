// A file of an archive: one channel, one day.
#pragma once

#include "mseed/spool.h"

namespace quarl::mseed
{

/// What putting records into a file did.
struct Filed {
    std::int64_t added = 0;
    std::int64_t known = 0; ///< were there already
    std::string fault;      ///< why the file stays as it is; "": nothing is wrong
};

/// Puts the records of `queue` into the file at `path`, which is replaced as a whole, or made.
Filed add_to_file(const std::string &path, const Spool &spool, const Spool::Queue &queue,
                  bool renumber);

} // namespace quarl::mseed
