// How a volume is to be read, and what its reader wants to hear.
#pragma once

#include <atomic>
#include <functional>
#include <map>
#include <quarl/error.h>
#include <quarl/item.h>
#include <string>

namespace quarl
{

/// All may be left out.
struct VolumeOptions {
    /// Parameter file (TOML) with the table `data_type_aliases`; "": none.
    std::string parameter_file = {};

} // namespace quarl
