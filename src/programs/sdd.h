// The run loop over input files and blockettes.
#pragma once

#include "programs/console.h"
#include "volume/state.h"

#include <memory>
#include <string>

namespace quarl
{

/// Prints the statistics at the end of an input file, and the summary lines of a volume identifier
/// or a station header index.
void summarise(Out &stream, const Item &item);

/// Shows the listing of a blockette that has bad fields among the messages.
void show_bad_item(Console *console, const Item &item);

/// Reads the volume at `path` ("-": standard input) to its end, one input file after the other:
/// lists each blockette (unless `listing_off`), counts it, and prints the statistics at the end of
/// each file. `state` holds the flags and the database. Returns the exit status, 0.
int sdd(Console *console, std::unique_ptr<State> state, const std::string &path, int listing_off);

} // namespace quarl
