// The run loop over input files and blockettes.
#pragma once

#include "listing/pbrief.h"
#include "programs/console.h"

#include <quarl/volume.h>
#include <string>

namespace quarl
{

/// What a listing shows besides summaries and statistics.
struct ListingWishes {
    bool items = true; ///< a line for each
    bool simplified = false;
    bool record_numbers = false; ///< of the logical records that are entered
};

/// Prints the statistics at the end of an input file, and the summary lines of a volume identifier
/// or a station header index.
void summarise(Out &stream, const Item &item);

/// Shows the listing of a blockette that has bad fields among the messages.
void show_bad_item(Console *console, const Item &item, const ListingStyle &style = {});

/// Reads the volume at `path` ("-": standard input) to its end, one input file after the other:
/// lists each blockette, and prints the statistics at the end of each file. Returns the exit
/// status, 0.
int sdd(Console *console, VolumeOptions options, const std::string &path,
        const ListingWishes &wishes = {});

} // namespace quarl
