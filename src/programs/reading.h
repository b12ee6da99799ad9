// What the programs share before a volume is read: parameter file, database.
#pragma once

#include "programs/console.h"
#include "volume/state.h"

#include <memory>
#include <string>

namespace quarl
{

/// The state for the reading of a volume, whose messages go to `console`; what is printed and said
/// is written before each wait. The parameter file is read; without one the run ends.
std::unique_ptr<State> prepare_state(Console *console);

/// Opens the database of -d for the current reading; one that cannot be opened ends the run.
void open_database(const char *name);

/// The state for the reading of a volume with the database `name`; "": none.
std::unique_ptr<State> prepare_state(Console *console, const std::string &name);

} // namespace quarl
