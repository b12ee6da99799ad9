// The run loop of quarl-mseed.
#pragma once

#include "inventory/selection.h"
#include "mseed/file_name.h"
#include "programs/console.h"

#include <optional>
#include <string>
#include <vector>

namespace quarl
{

/// What the command line asks for. Of output, archive and pattern one at most.
struct MseedWishes {
    std::string output;  ///< file; "": standard output
    std::string archive; ///< folder of a tree of files
    std::optional<mseed::NamePattern> pattern;
    ChannelSelection selection;
    bool renumber = false;
    std::string database;
};

/// Status of a run after which a volume was not read, or something not written.
inline constexpr int Not_Whole = 2;

/// Writes the data records of the volumes at `paths` ("-": standard input) as miniSEED, and says
/// what came of them. Returns the exit status: 1 when records were left out.
int write_mseed(Console *console, const MseedWishes &wishes, const std::vector<std::string> &paths);

} // namespace quarl
