// The run loop over input files and blockettes.
#pragma once

#include <string>

/// Reads the volume at `path` ("-": standard input) to its end, one input file after the other:
/// lists each blockette (unless `listing_off`), counts it, and prints the statistics at the end of
/// each file. Returns the exit status, 0.
int sdd(const std::string &path, int listing_off);
