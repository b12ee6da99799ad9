// The data of a page, as one JSON object: what its script draws, and other programs may read.
#pragma once

#include "html/volume_read.h"
#include "platform/out.h"

#include <vector>

namespace quarl::html
{

/// quarl-html(1) explains every key.
void write_data(Out &out, const VolumeRead &volume, const std::vector<PageChannel> &channels,
                const Targets &targets);

} // namespace quarl::html
