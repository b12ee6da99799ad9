// quarl-json: a volume as lines of JSON.
#include "programs/json_lines.h"
#include "programs/program.h"
#include "programs/reading.h"
#include "json/schema.h"

#include <array>
#include <getopt.h>

namespace
{

using namespace quarl;

constexpr std::string_view Help =
    R"(Usage: quarl-json [-t TYPES] [-d DATABASE] [VOLUME]
Prints what a SEED volume holds as lines of JSON: one object for each control blockette, for each
data record and for the end of each input file, in volume order. Without VOLUME, or with "-",
standard input is read.

  -t, --types=TYPES        print only these: type numbers, "data" and "file", with commas between
  -d, --database=DATABASE  look up the data formats of channels that the volume does not describe
      --schema             print the JSON Schema of the lines
  -h, --help               print this text
  -V, --version            print the version

The man page quarl-json(1) explains every key.
)";

constexpr int Schema = 256;

constexpr std::array<option, 6> Long_Options = {{{"types", required_argument, nullptr, 't'},
                                                 {"database", required_argument, nullptr, 'd'},
                                                 {"schema", no_argument, nullptr, Schema},
                                                 {"help", no_argument, nullptr, 'h'},
                                                 {"version", no_argument, nullptr, 'V'},
                                                 {nullptr, 0, nullptr, 0}}};

/// What the command line asks for.
struct Wishes {
    Selection selection;
    std::string database;
    std::string text; ///< to be printed instead of a volume
    std::string fault;
};

/// Acts on one option; false ends the options.
bool take_option(int option, int argc, char *argv[], Wishes *wishes)
{
    switch (option) {
    case 't':
        if (!wishes->selection.read(optarg))
            wishes->fault = formatted<"no list of types: %s">(std::string_view(optarg));
        return wishes->fault.empty();
    case 'd':
        wishes->database = optarg;
        return true;
    case Schema:
        wishes->text = json::schema();
        return false;
    case 'h':
        wishes->text = Help;
        return false;
    case 'V':
        wishes->text = "quarl-json " QUARL_VERSION "\n";
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
        option = getopt_long(argc, argv, ":t:d:hV", Long_Options.data(), nullptr);
    while (option != -1 && take_option(option, argc, argv, &wishes));
    if (option == -1 && argc - optind > 1)
        wishes.fault = "more than one volume";
    return wishes;
}

int print_volume(Console *console, int argc, char *argv[])
{
    const Wishes wishes = read_options(argc, argv);
    if (!wishes.fault.empty())
        return refuse(console, wishes.fault);
    if (!wishes.text.empty()) {
        console->out().write(wishes.text);
        return 0;
    }
    return print_lines(console, prepare_state(console, wishes.database),
                       optind < argc ? argv[optind] : "-", wishes.selection);
}

} // namespace

int main(int argc, char *argv[])
{
    return quarl::run_program(
        argc, argv, [&](quarl::Console *console) { return print_volume(console, argc, argv); });
}
