// Releasing of records, and their owner.
#pragma once

#include <memory>
#include <quarl/records.h>

namespace quarl
{

/// Releases a record made by parse_blk through its type's free operation, lists included. A type
/// without a record is complained about and nothing is released.
void free_blk(record_t *record, int type);

struct FreeBlk {
    int type = 0;
    void operator()(record_t *record) const { free_blk(record, type); }
};

/// Owner of one parsed record; null for a blockette type without a parser.
using Record = std::unique_ptr<record_t, FreeBlk>;

} // namespace quarl
