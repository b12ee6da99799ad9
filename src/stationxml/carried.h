// Several volumes put together: each epoch once.
#pragma once

#include "stationxml/carried_parts.h"

namespace quarl
{

/// Collects what is asked for, in the order of the volumes.
std::vector<CarriedNetwork> carried(std::span<const NamedInventory> volumes,
                                    const CarryOptions &options);

} // namespace quarl
