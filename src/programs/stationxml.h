// The run of quarl-stationxml.
#pragma once

#include "programs/console.h"

#include <quarl/stationxml.h>
#include <string>
#include <vector>

namespace quarl
{

/// What the command line asks for.
struct StationXmlRun {
    std::vector<std::string> volumes; ///< paths; "-": standard input
    std::string output = {};          ///< "" or "-": standard output
    std::string resp_folder = {};     ///< "": no RESP files
    bool validate = false;
    CarryOptions options = {};
};

/// Status of a run in which something could not be carried over.
inline constexpr int Carried_In_Part = 1;
/// Status of a run that could not read a volume.
inline constexpr int Volume_Unread = 2;

/// Reads the volumes and writes the document. Returns the exit status; what could not be carried
/// over, and what keeps a volume from being read, goes to the messages.
int run_stationxml(Console *console, StationXmlRun run);

} // namespace quarl
