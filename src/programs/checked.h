// The reading of a volume that a checker listens to, for the programs that tell what it finds.
#pragma once

#include "check/checker.h"
#include "programs/console.h"

#include <quarl/volume.h>
#include <string>

namespace quarl
{

/// What the reading of the volume at `path` tells goes to the checker; what keeps the program from
/// working goes to the messages, with the path in front.
VolumeOptions checked_options(Console *console, Checker *checker, const std::string &path);

/// Says what has ended the reading.
void say_unread(Console *console, const std::string &path, const Error &error);

} // namespace quarl
