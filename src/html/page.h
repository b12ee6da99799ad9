// One page of HTML for a volume: nothing in it refers to anything outside of it, and what browsers
// may run in it is allowed by its hash alone.
#pragma once

#include "html/volume_read.h"
#include "platform/out.h"

namespace quarl::html
{

void write_page(Out &out, const VolumeRead &volume);

} // namespace quarl::html
