// The samples of a data record as members of its object.
#pragma once

#include "json/object.h"

#include <quarl/samples.h>

namespace quarl::json
{

/// Writes `values` or `text`, and `values_error` when something is wrong with them.
char *put_samples(Pen &pen, char *to, const Item &item, SampleBuffer *buffer);

} // namespace quarl::json
