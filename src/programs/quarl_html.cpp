// quarl-html: a volume as one page.
#include "programs/page.h"
#include "programs/program.h"
#include "programs/reading.h"

#include <array>
#include <getopt.h>
#include <string_view>

namespace
{

using namespace quarl;

constexpr std::string_view Help =
    R"(Usage: quarl-html [-o FILE] [VOLUME]
Makes one page of HTML of a SEED volume: what it holds, what is wrong with it, where its stations
are, when they recorded, and their responses. The page needs nothing besides a browser. Without
VOLUME, or with "-", standard input is read.

  -o, --output=FILE  write the page to FILE, not to standard output
  -h, --help         print this text
  -V, --version      print the version

Exit status: 0 the page shows the volume, 1 the volume could be read in part, 2 there is no page.
The man page quarl-html(1) explains the page and its data.
)";

constexpr std::array<option, 4> Long_Options = {{{"output", required_argument, nullptr, 'o'},
                                                 {"help", no_argument, nullptr, 'h'},
                                                 {"version", no_argument, nullptr, 'V'},
                                                 {nullptr, 0, nullptr, 0}}};

/// What the command line asks for.
struct Wishes {
    std::string output;
    std::string text; ///< to be printed instead of a page
    std::string fault;
};

/// Acts on one option; false ends the options.
bool take_option(int option, int argc, char *argv[], Wishes *wishes)
{
    switch (option) {
    case 'o':
        wishes->output = optarg;
        if (wishes->output.empty())
            wishes->fault = "-o needs the name of a file";
        return wishes->fault.empty();
    case 'h':
        wishes->text = Help;
        return false;
    case 'V':
        wishes->text = "quarl-html " QUARL_VERSION "\n";
        return false;
    case ':':
        wishes->fault = refused_option(argc, argv) + " needs a value";
        return false;
    default:
        wishes->fault = "unknown option " + refused_option(argc, argv);
        return false;
    }
}

Wishes read_options(int argc, char *argv[])
{
    Wishes wishes;
    int option = 0;
    do
        option = getopt_long(argc, argv, ":o:hV", Long_Options.data(), nullptr);
    while (option != -1 && take_option(option, argc, argv, &wishes));
    if (option == -1 && argc - optind > 1)
        wishes.fault = "more than one volume";
    return wishes;
}

int show_volume(Console *console, int argc, char *argv[])
{
    const Wishes wishes = read_options(argc, argv);
    if (!wishes.fault.empty())
        return refuse(console, wishes.fault);
    if (!wishes.text.empty()) {
        console->out().write(wishes.text);
        return 0;
    }
    return make_page(console, optind < argc ? argv[optind] : "-", wishes.output);
}

} // namespace

int main(int argc, char *argv[])
{
    bool finished = false;
    const int status = quarl::run_program(argc, argv, [&](quarl::Console *console) {
        const int made = show_volume(console, argc, argv);
        console->elog_clear_register();
        finished = true;
        return made;
    });
    return finished ? status : quarl::No_Page;
}
