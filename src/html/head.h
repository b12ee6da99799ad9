// The head of a page: whether the volume is sound, what it is, and what its bytes are.
#pragma once

#include "html/markup.h"
#include "html/volume_read.h"

#include <string_view>
#include <vector>

namespace quarl::html
{

/// The name of the volume, without its folder.
std::string_view title_of(const VolumeRead &volume);

void write_head(Markup &page, const VolumeRead &volume, const std::vector<PageChannel> &channels);

} // namespace quarl::html
