// quarl-json: volumes as lines of JSON.
#include "programs/command_line.h"
#include "programs/interrupt.h"
#include "programs/json_lines.h"
#include "programs/program.h"
#include "programs/reading.h"
#include "json/schema.h"

#include <algorithm>
#include <array>

namespace
{

using namespace quarl;

constexpr std::string_view Help =
    R"(Usage: quarl-json [-n] [-t TYPES] [-d DATABASE] [OPTIONS] [VOLUME...]
Prints what SEED volumes hold as lines of JSON: one object for each control blockette, for each
data record and for the end of each input file, in volume order. Without VOLUME, or with "-",
standard input is read.

  -t, --types=TYPES        print only these: type numbers and "data", with commas between, and
                           always the ends of input files; types add up when it is given again
  -n, --name               begin each object with the volume's name
      --samples            print the samples of data records
      --select=GLOBS       of data records print those of these channels, as NET.STA.LOC.CHA
      --start=TIME         of data records print those with samples from this time on
      --end=TIME           of data records print those with samples before this time
      --epoch              print the seconds since 1970 beside each time
      --utf8               take texts that are UTF-8 as such, and not for Latin-1
  -d, --database=DATABASE  look up the data formats of channels that the volume does not describe
      --schema             print the JSON Schema of the lines
  -h, --help               print this text
  -V, --version            print the version

The man page quarl-json(1) explains every key.
)";

enum LongOption { Schema = 256, Epoch, Utf8, With_Samples, Select, Start, End };

constexpr std::array<option, 13> Long_Options = {{{"types", required_argument, nullptr, 't'},
                                                  {"name", no_argument, nullptr, 'n'},
                                                  {"samples", no_argument, nullptr, With_Samples},
                                                  {"select", required_argument, nullptr, Select},
                                                  {"start", required_argument, nullptr, Start},
                                                  {"end", required_argument, nullptr, End},
                                                  {"epoch", no_argument, nullptr, Epoch},
                                                  {"utf8", no_argument, nullptr, Utf8},
                                                  {"database", required_argument, nullptr, 'd'},
                                                  {"schema", no_argument, nullptr, Schema},
                                                  {"help", no_argument, nullptr, 'h'},
                                                  {"version", no_argument, nullptr, 'V'},
                                                  {nullptr, 0, nullptr, 0}}};

/// What the command line asks for.
struct Wishes {
    LinesWanted lines;
    std::string database;
    bool schema = false;
};

std::string take_option(int option, Wishes *wishes)
{
    switch (option) {
    case 't':
        if (!wishes->lines.selection.read(optarg))
            return formatted<"no list of types: %s">(std::string_view(optarg));
        break;
    case 'n':
        wishes->lines.style.has_name = true;
        break;
    case 'd':
        wishes->database = optarg;
        break;
    case With_Samples:
        wishes->lines.samples = true;
        break;
    case Select:
        return wishes->lines.channels.add(optarg);
    case Start:
        return wishes->lines.channels.set_start(optarg);
    case End:
        return wishes->lines.channels.set_end(optarg);
    case Epoch:
        wishes->lines.style.has_seconds = true;
        break;
    case Utf8:
        wishes->lines.style.takes_utf8 = true;
        break;
    default:
        wishes->schema = true;
    }
    return {};
}

/// Messages name the volume that they are about, once.
void name_volume(Console *console, const std::string &path, VolumeOptions *options)
{
    options->message = [console, path](const Message &message) {
        const bool named = message.text.ends_with(" " + path);
        const std::string text = (named ? "" : path + ": ") + std::string(message.text);
        console->say(
            {message.kind, text, message.reason, message.error, message.place, message.item});
    };
}

int print_volumes(Console *console, int argc, char *argv[])
{
    Wishes wishes;
    std::optional<int> status;
    const auto volumes =
        read_command_line(console, argc, argv,
                          {"quarl-json", Help, ":t:nd:hV", Long_Options.data(), false,
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
    int worst = 0;
    for (const std::string &path : volumes) {
        if (stop_asked())
            break;
        VolumeOptions options = reading_options(console, sources);
        if (volumes.size() > 1)
            name_volume(console, path, &options);
        worst = std::max(worst, print_lines(console, std::move(options), path, wishes.lines));
    }
    return worst;
}

} // namespace

int main(int argc, char *argv[])
{
    return quarl::run_program(
        argc, argv, [&](quarl::Console *console) { return print_volumes(console, argc, argv); });
}
