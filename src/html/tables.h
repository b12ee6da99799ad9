// The tables of a page: stations, channels, comments, dictionaries.
#pragma once

#include "html/curves.h"
#include "html/markup.h"
#include "html/volume_read.h"

#include <vector>

namespace quarl::html
{

/// The section "tables".
void write_tables(Markup &page, const VolumeRead &volume, const std::vector<PageChannel> &channels,
                  const Curves &curves);

} // namespace quarl::html
