// What the programs share before a volume is read: options, parameter file, database.
#pragma once

#include "programs/console.h"
#include "volume/state.h"

#include <memory>
#include <string>
#include <string_view>

namespace quarl
{

/// Status of a program that was called in a way that it does not understand.
inline constexpr int Wrong_Call = 2;

/// The state for the reading of a volume, whose messages go to `console`; what is printed and said
/// is written before each wait. The parameter file is read; without one the run ends.
std::unique_ptr<State> prepare_state(Console *console);

/// Opens the database of -d for the current reading; one that cannot be opened ends the run.
void open_database(const char *name);

/// The state for the reading of a volume with the database `name`; "": none.
std::unique_ptr<State> prepare_state(Console *console, const std::string &name);

/// Says in one line what is wrong with the command line, and where help is. Returns Wrong_Call.
int refuse(Console *console, std::string_view what);

/// The option that getopt_long has just refused, as the user wrote it.
std::string refused_option(int argc, char *const argv[]);

} // namespace quarl
