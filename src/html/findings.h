// The findings of a page, grouped by rule.
#pragma once

#include "html/markup.h"
#include "html/volume_read.h"

namespace quarl::html
{

/// The section "findings": errors first, then warnings and notes.
void write_findings(Markup &page, const VolumeRead &volume, const Targets &targets);

} // namespace quarl::html
