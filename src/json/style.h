// What the user wants to have in the lines.
#pragma once

#include <string>

namespace quarl::json
{

struct Style {
    std::string volume = "\"-\""; ///< its name as JSON text
    bool has_name = false;        ///< every object names the volume
    bool has_seconds = false;     ///< seconds since 1970 beside each time
    bool takes_utf8 = false;      ///< texts that are UTF-8 are taken so, and not for Latin-1
};

} // namespace quarl::json
