// What the reading of a volume takes from its format sources.
#pragma once

#include "platform/db.h"
#include "platform/pf.h"

#include <functional>
#include <quarl/error.h>
#include <quarl/format_sources.h>

namespace quarl
{

struct FormatSources::Parts {
    std::function<void(const Message &)> message;
    Pf parameters;
    Databases databases;
    Dbptr db = dbinvalid(); ///< the database opened last
};

} // namespace quarl
