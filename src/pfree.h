// Releasing of records.
#pragma once

#include "records.h"

/// Releases a record made by parse_blk through its type's free operation, lists included. A type
/// without a record is complained about and nothing is released.
void free_blk(record_t *record, int type);
