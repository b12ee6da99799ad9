// The data of a page, as one JSON object: what its script draws, and other programs may read.
#pragma once

#include "html/curves.h"
#include "html/volume_read.h"
#include "platform/json_writer.h"

#include <vector>

namespace quarl::html
{

/// quarl-html(1) explains every key.
void write_data(Out &out, const VolumeRead &volume, const std::vector<PageChannel> &channels,
                const Targets &targets, Curves *curves);

/// Seconds since 1970-01-01, to 0.0001 s; null for the times that stand for an open end.
void write_time(Json *json, double seconds);

} // namespace quarl::html
