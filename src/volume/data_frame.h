// Data records, each framed as one item.
#pragma once

#include "volume/handle.h"

namespace quarl
{

/// The input ended inside the item: true when that is a fault, and not what was asked for.
bool is_cut(read_handle_t *handle);

/// Reads the data record of which the input has just read the prefix, as the listing does: its
/// numbers have a sign, and its header is 128 bytes long. 1; 0 when the input ends.
int frame_data(read_handle_t *handle, Record *record, int *type);

/// The same as the record stands there: in one piece, with what it lacks.
int frame_data_strictly(read_handle_t *handle, Record *record, int *type);

} // namespace quarl
