// A file that is there whole or not at all.
#pragma once

#include "platform/out.h"

#include <functional>
#include <string>
#include <string_view>

namespace quarl
{

/// Whether what a user gave as the name of an output means standard output: "" or "-".
bool is_standard_output(std::string_view path);

/// Writes what `write` writes to `standard` where `path` means it, else to the file of that name.
void write_output(Out &standard, const std::string &path, const std::function<void(Out &)> &write);

/// Writes what `write` writes to `path`: beside it first, and under its name when all is there. Of
/// links, the file at the end is meant, there or not. A device, pipe or the like is written to as
/// it is. Throws Error when that fails; then what `path` named before is untouched, as it is when a
/// signal ends the process at once.
void write_file(const std::string &path, const std::function<void(Out &)> &write);

/// Whether the volume at `path` ("-": standard input) and the regular file at `output` are one.
bool is_one_file(const std::string &path, const std::string &output);

} // namespace quarl
