// The line of JSON for an item of a volume.
#pragma once

#include "platform/out.h"
#include "json/style.h"

#include <quarl/item.h>
#include <quarl/samples.h>
#include <quarl/volume.h>

namespace quarl::json
{

/// Writes `item`, which `volume` yielded last, as one object and a newline; with its samples when
/// there is a buffer for them.
void print_item(Out &out, const Volume &volume, const Style &style, const Item &item,
                SampleBuffer *buffer = nullptr);

/// The same for the end of input file number `file`.
void print_file(Out &out, const Style &style, int file, const FileEnd &end);

} // namespace quarl::json
