// quarl: start-up, parameter file, options, database; then the run loop.
#include "programs/banner.h"
#include "programs/program.h"
#include "programs/reading.h"
#include "programs/sdd.h"

#include <cstdlib>
#include <optional>
#include <unistd.h>
#include <utility>

namespace
{

using namespace quarl;

/// There is nothing left to do but to end with this.
using Status = std::optional<int>;

Status usage(Console *console)
{
    console->out().flush();
    print<"\nUsage: %s [-d database] [-f fileno] [-sv] [seed]\n">(console->err(),
                                                                  console->Program_Name);
    banner(console);
    return 1;
}

/// Reads the options in command-line order, each acted on at once.
Status read_options(Console *console, int argc, char *argv[], VolumeOptions *options,
                    ListingWishes *wishes)
{
    // The "+" ends the options at the first operand.
    for (int option = 0; (option = getopt(argc, argv, "+f:sSd:vVH")) != -1;) {
        switch (option) {
        case 'f':
            options->first_file = static_cast<int>(std::strtol(optarg, nullptr, 10));
            options->one_file = true;
            break;
        case 's':
            wishes->items = false;
            break;
        case 'S':
            wishes->simplified = true;
            break;
        case 'd':
            options->format_sources->open_database(optarg);
            break;
        case 'v':
            wishes->record_numbers = true;
            break;
        case 'V':
            banner(console);
            return 0;
        default:
            return usage(console);
        }
    }
    return argc - optind > 1 ? usage(console) : std::nullopt;
}

int list_volume(Console *console, int argc, char *argv[])
{
    VolumeOptions options = reading_options(console, read_format_sources(console));
    ListingWishes wishes;
    if (const Status status = read_options(console, argc, argv, &options, &wishes))
        return *status;
    return sdd(console, std::move(options), optind < argc ? argv[optind] : "-", wishes);
}

} // namespace

int main(int argc, char *argv[])
{
    return quarl::run_program(
        argc, argv, [&](quarl::Console *console) { return list_volume(console, argc, argv); },
        quarl::MessageTexts::raw);
}
