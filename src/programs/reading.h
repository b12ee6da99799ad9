// What quarl and quarl-json share before a volume is read: parameter file, database.
#pragma once

#include "programs/console.h"

#include <memory>
#include <quarl/volume.h>

namespace quarl
{

/// Reads the parameter file; without one the run ends.
std::shared_ptr<FormatSources> read_format_sources(Console *console);

/// How a volume is read whose messages go to `console`: what is printed and said is written before
/// each wait.
VolumeOptions reading_options(Console *console, std::shared_ptr<FormatSources> sources);

} // namespace quarl
