// quarl-json: a volume as lines of JSON.
#include "programs/command_line.h"
#include "programs/json_lines.h"
#include "programs/program.h"
#include "programs/reading.h"
#include "json/schema.h"

#include <array>

namespace
{

using namespace quarl;

constexpr std::string_view Help =
    R"(Usage: quarl-json [-t TYPES] [-d DATABASE] [VOLUME]
Prints what a SEED volume holds as lines of JSON: one object for each control blockette, for each
data record and for the end of each input file, in volume order. Without VOLUME, or with "-",
standard input is read.

  -t, --types=TYPES        print only these: type numbers, "data" and "file", with commas between;
                           types add up when the option is given again
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
    bool schema = false;
};

std::string take_option(int option, Wishes *wishes)
{
    switch (option) {
    case 't':
        if (!wishes->selection.read(optarg))
            return formatted<"no list of types: %s">(std::string_view(optarg));
        break;
    case 'd':
        wishes->database = optarg;
        break;
    default:
        wishes->schema = true;
    }
    return {};
}

int print_volume(Console *console, int argc, char *argv[])
{
    Wishes wishes;
    std::optional<int> status;
    const auto volumes =
        read_command_line(console, argc, argv,
                          {"quarl-json", Help, ":t:d:hV", Long_Options.data(), true,
                           [&](int option) { return take_option(option, &wishes); }},
                          &status);
    if (status)
        return *status;
    if (wishes.schema) {
        console->out().write(json::schema());
        return 0;
    }
    const auto sources = read_format_sources(console);
    if (!wishes.database.empty())
        sources->open_database(wishes.database);
    return print_lines(console, reading_options(console, sources), volumes.front(),
                       wishes.selection);
}

} // namespace

int main(int argc, char *argv[])
{
    return quarl::run_program(
        argc, argv, [&](quarl::Console *console) { return print_volume(console, argc, argv); });
}
