// What all programs do around their work: standard streams, signals, ends.
#pragma once

#include "programs/console.h"

#include <csignal>
#include <functional>

namespace quarl
{

/// The status of a process whose reader has gone, as shells show it: it ends by SIGPIPE, quietly.
/// The signal itself is ignored, so that messages are not lost with the listing.
inline constexpr int Reader_Gone = 128 + SIGPIPE;

/// Runs `work`, whose messages go to `console`. Returns its status, or 1 with a message when an
/// Error or a lack of memory ended it, or Reader_Gone.
int run_guarded(Console *console, const std::function<int()> &work);

/// Runs `work` with a console of its own and returns the status of the process: that of `work`, or
/// 1 with a message when an Error or a lack of memory ended it. When the reader of the output has
/// gone, or a signal ended the run, the process ends by that signal.
int run_program(int argc, char *argv[], const std::function<int(Console *)> &work,
                MessageTexts texts = MessageTexts::escaped);

} // namespace quarl
