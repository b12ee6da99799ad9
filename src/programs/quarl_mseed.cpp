// quarl-mseed: the data records of volumes as miniSEED.
#include "programs/command_line.h"
#include "programs/mseed.h"
#include "programs/program.h"

#include <array>
#include <string_view>

namespace
{

using namespace quarl;

constexpr std::string_view Help =
    R"(Usage: quarl-mseed [-o FILE | --sds DIR | --split PATTERN] [OPTION...] [VOLUME...]
Writes the data records of SEED volumes as plain miniSEED, each as it is. One without a
Blockette 1000 gets one. Without VOLUME, or with "-", standard input is read.

  -o, --output=FILE        write all records to FILE, not to standard output
      --sds=DIR            put them into the archive's tree below DIR: a file for each channel and
                           day; what is there already is not put there again
      --split=PATTERN      write them to files whose names PATTERN tells: %n network, %s station,
                           %l location, %c channel, %q quality indicator, %Y %m %d %j %H %M %S
                           parts of the record's start time, %j the day of the year
      --select=GLOB[,...]  of these channels only: NETWORK.STATION.LOCATION.CHANNEL with *, ? and
                           [AB], "--" for an empty location; may be given again
      --start=TIME         records with samples at this time or later: 2018-07-10T12:30:00
      --end=TIME           records with samples before this time
      --renumber           give the records of each file the sequence numbers 1, 2, 3 ...
  -d, --database=DATABASE  look up the data formats of channels that the volume does not describe
  -h, --help               print this text
  -V, --version            print the version

Exit status: 0 all records were written that were asked for, 1 some were left out, 2 a volume could
not be read, or something not written. The man page quarl-mseed(1) tells more.
)";

constexpr int Sds = 256;
constexpr int Split = 257;
constexpr int Select = 258;
constexpr int Start = 259;
constexpr int End = 260;
constexpr int Renumber = 261;

constexpr std::array<option, 11> Long_Options = {{{"output", required_argument, nullptr, 'o'},
                                                  {"sds", required_argument, nullptr, Sds},
                                                  {"split", required_argument, nullptr, Split},
                                                  {"select", required_argument, nullptr, Select},
                                                  {"start", required_argument, nullptr, Start},
                                                  {"end", required_argument, nullptr, End},
                                                  {"renumber", no_argument, nullptr, Renumber},
                                                  {"database", required_argument, nullptr, 'd'},
                                                  {"help", no_argument, nullptr, 'h'},
                                                  {"version", no_argument, nullptr, 'V'},
                                                  {nullptr, 0, nullptr, 0}}};

/// Takes where the records go; one such option is enough.
std::string take_target(int option, const std::string &value, MseedWishes *wishes, int *targets)
{
    if (++*targets > 1)
        return "of -o, --sds and --split one at most";
    if (value.empty())
        return "where to write has no name";
    if (option == Split)
        return wishes->pattern.emplace().set(value);
    if (option == Sds)
        wishes->archive = value;
    else if (value != "-")
        wishes->output = value;
    return {};
}

std::string take_option(int option, MseedWishes *wishes, int *targets)
{
    switch (option) {
    case 'o':
    case Sds:
    case Split:
        return take_target(option, optarg, wishes, targets);
    case Select:
        return wishes->selection.add(optarg);
    case Start:
        return wishes->selection.set_start(optarg);
    case End:
        return wishes->selection.set_end(optarg);
    case 'd':
        wishes->database = optarg;
        return {};
    default:
        wishes->renumber = true;
        return {};
    }
}

int convert(Console *console, int argc, char *argv[])
{
    MseedWishes wishes;
    int targets = 0;
    std::optional<int> status;
    const auto volumes =
        read_command_line(console, argc, argv,
                          {"quarl-mseed", Help, ":o:d:hV", Long_Options.data(), false,
                           [&](int option) { return take_option(option, &wishes, &targets); }},
                          &status);
    return status ? *status : write_mseed(console, wishes, volumes);
}

} // namespace

int main(int argc, char *argv[])
{
    bool finished = false;
    const int status = quarl::run_program(argc, argv, [&](quarl::Console *console) {
        const int done = convert(console, argc, argv);
        console->elog_clear_register();
        finished = true;
        return done;
    });
    return finished ? status : quarl::Not_Whole;
}
