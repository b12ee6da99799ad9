// The line of JSON for an item of a volume.
#pragma once

#include "platform/out.h"

#include <quarl/item.h>
#include <quarl/volume.h>

namespace quarl::json
{

/// Writes `item`, which `volume` yielded last, as one object and a newline.
void print_item(Out &out, const Volume &volume, const Item &item);

/// The same for the end of input file number `file` of `volume`.
void print_file(Out &out, const Volume &volume, int file, const FileEnd &end);

} // namespace quarl::json
