// quarl: start-up, parameter file, options, database; then the run loop.
#include "programs/banner.h"
#include "programs/program.h"
#include "programs/reading.h"
#include "programs/sdd.h"

#include <cstdlib>
#include <unistd.h>

namespace
{

using namespace quarl;

/// What the command line asks for beyond the run's flags.
struct Wishes {
    bool listing_off = false;
    bool ends = false; ///< there is nothing left to do but to end with `status`
    int status = 0;
};

Wishes usage(Console *console)
{
    console->out().flush();
    print<"\nUsage: %s [-d database] [-f fileno] [-sv] [seed]\n">(console->err(),
                                                                  console->Program_Name);
    banner(console);
    return {.ends = true, .status = 1};
}

/// Reads the options in command-line order, each acted on at once.
Wishes read_options(Console *console, int argc, char *argv[])
{
    Wishes wishes;
    // The "+" ends the options at the first operand.
    for (int option = 0; (option = getopt(argc, argv, "+f:sSd:vVH")) != -1;) {
        switch (option) {
        case 'f':
            run().File_No = static_cast<int>(std::strtol(optarg, nullptr, 10));
            run().File_Flag = 1;
            break;
        case 's':
            wishes.listing_off = true;
            break;
        case 'S':
            ++run().Simplify;
            break;
        case 'd':
            open_database(optarg);
            break;
        case 'v':
            ++run().Verbose_Flag;
            break;
        case 'V':
            banner(console);
            return {.ends = true};
        default:
            return usage(console);
        }
    }
    return argc - optind > 1 ? usage(console) : wishes;
}

int list_volume(Console *console, int argc, char *argv[])
{
    auto state = prepare_state(console);
    const Reading reading(*state);
    const Wishes wishes = read_options(console, argc, argv);
    if (wishes.ends)
        return wishes.status;
    const std::string path = optind < argc ? argv[optind] : "-";
    return sdd(console, std::move(state), path, wishes.listing_off);
}

} // namespace

int main(int argc, char *argv[])
{
    return quarl::run_program(
        argc, argv, [&](quarl::Console *console) { return list_volume(console, argc, argv); },
        quarl::MessageTexts::raw);
}
