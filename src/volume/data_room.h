// Room for what an item makes of a data record.
#pragma once

#include <quarl/blockette_chain.h>
#include <string>

namespace quarl
{

/// Made on the day that it is asked for.
struct DataRoom {
    std::string bytes; ///< the record with its own header
    DataBlockettes chain;
    bool has_record = false; ///< the item at hand is a data record
    bool has_chain = false;  ///< the chain is that of this record
};

} // namespace quarl
