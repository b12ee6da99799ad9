// quarl-check: findings as lines, for editors and CI systems, or as JSON.
#pragma once

#include "check/checker.h"
#include "programs/console.h"

#include <string>

namespace quarl
{

/// How findings are printed, and how many there were.
struct CheckRun {
    Chosen chosen;
    bool json = false;
    std::int64_t errors = 0;
    std::int64_t warnings = 0;
    std::int64_t notes = 0;
    bool unread = false; ///< a volume could not be read to its end
};

/// Checks the volume at `path` ("-": standard input), one input file after the other, and prints
/// what was found. What keeps it from being read goes to the messages.
void check_volume(Console *console, CheckRun *run, const std::string &path);

} // namespace quarl
