// The release banner.
#pragma once

#include "programs/console.h"

namespace quarl
{

/// Writes program, version and purpose to standard error.
void banner(Console *console);

} // namespace quarl
