// The data blockettes of a record as members of its object.
#pragma once

#include "json/object.h"

#include <quarl/blockette_chain.h>

namespace quarl::json
{

/// Writes what the chain says of the record, and the array `blockettes`.
char *put_data_blockettes(Pen &pen, char *to, const DataBlockettes &chain);

} // namespace quarl::json
