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
    bool has_chain = false; ///< the chain is that of the record at hand
};

} // namespace quarl
