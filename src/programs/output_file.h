// A file that is there whole or not at all.
#pragma once

#include "platform/out.h"

#include <functional>
#include <string>

namespace quarl
{

/// Writes what `write` writes to `path`: beside it first, and under its name when all is there. Of
/// links, the file at the end is meant, there or not. A device, pipe or the like is written to as
/// it is. Throws Error when that fails; then what `path` named before is untouched, as it is when a
/// signal ends the process at once.
void write_file(const std::string &path, const std::function<void(Out &)> &write);

} // namespace quarl
