// Command lines of programs with long options: read in one way, wrong ones answered in one way.
#pragma once

#include "programs/console.h"

#include <functional>
#include <getopt.h>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quarl
{

/// Status of a program that was called in a way that it does not understand.
inline constexpr int Wrong_Call = 2;

/// What a program understands. --help (h) and --version (V) are among its options, but not its own.
struct CommandLine {
    const char *program;
    std::string_view help;
    const char *letters; ///< of getopt_long, ":" in front
    const option *options;
    bool one_volume; ///< at most
    /// Takes one option, whose value is in `optarg`. Returns what is wrong with it, or "".
    std::function<std::string(int)> take;
};

/// Reads the command line. Returns the volumes, "-" when there is none; nothing with `status` set
/// when the program ends with it, since help was printed or, in one line, what is wrong.
std::vector<std::string> read_command_line(Console *console, int argc, char *argv[],
                                           const CommandLine &line, std::optional<int> *status);

} // namespace quarl
