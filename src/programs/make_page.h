// The run of quarl-html.
#pragma once

#include "programs/console.h"

#include <string>

namespace quarl
{

/// Status of a run that shows a part of the volume: its reading failed on the way.
inline constexpr int Page_Of_Part = 1;
/// Status of a run that gives no page.
inline constexpr int No_Page = 2;

/// Reads the first input file of the volume at `path` ("-": standard input) and writes its page to
/// `output` ("" or "-": standard output). Returns the exit status; what keeps the volume from being
/// read goes to the messages.
int make_page(Console *console, const std::string &path, const std::string &output);

} // namespace quarl
