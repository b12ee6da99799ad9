// quarl-check: findings as lines, for editors and CI systems, or as JSON.
#pragma once

#include "check/checker.h"
#include "programs/baseline.h"
#include "programs/console.h"

#include <map>
#include <string>
#include <utility>

namespace quarl
{

/// How findings are printed, and how many there were.
struct CheckRun {
    Chosen chosen;
    bool json = false;
    bool summary = false; ///< instead of the findings
    Baseline baseline;
    std::int64_t known = 0; ///< findings that stand in it
    std::int64_t errors = 0;
    std::int64_t warnings = 0;
    std::int64_t notes = 0;
    std::int64_t volumes = 0; ///< that could be opened
    bool unread = false;      ///< a volume could not be read to its end

    struct Told {
        std::int64_t volumes = 0;
        std::int64_t findings = 0;
        std::int64_t last_volume = -1;
    };
    std::map<std::pair<Severity, std::size_t>, Told> told; ///< by rule
};

/// A table of what was told, rule by rule.
void print_summary(Console *console, const CheckRun &run);

/// Checks the volume at `path` ("-": standard input), one input file after the other, and prints
/// what was found. What keeps it from being read goes to the messages.
void check_volume(Console *console, CheckRun *run, const std::string &path);

} // namespace quarl
