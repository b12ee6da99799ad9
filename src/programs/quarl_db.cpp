// quarl-db: options; then what is asked for.
#include "programs/archive_run.h"
#include "programs/command_line.h"
#include "programs/program.h"

#include "platform/db.h"
#include "platform/text.h"

#include <algorithm>
#include <array>
#include <thread>

namespace
{

using namespace quarl;

constexpr int Unusable = 2; ///< the database could not be used
constexpr int Most_Threads = 256;

constexpr std::string_view Help =
    R"(Usage: quarl-db [OPTION...] DATABASE VOLUME...
       quarl-db --list [-v] DATABASE
       quarl-db --remove [-v] DATABASE VOLUME...
       quarl-db --prune [-v] DATABASE
Merges SEED volumes into a CSS 3.0 database. DATABASE is the path of an SQLite file, or a URL
("postgresql://..."). VOLUME is a file, a folder of them, or "-": a list on standard input. Volumes
that have not changed since are passed over.

  -j, --jobs=N             read N volumes at once; otherwise as many as there are processors
  -v, --verbose            print a line for each volume
      --no-check           do not keep what quarl-check finds
      --no-data            do not keep what data records hold
      --select=GLOB[,...]  merge these channels only: NETWORK.STATION.LOCATION.CHANNEL with *, ? and
                           [AB], "--" for an empty location; may be given again
      --list               print the volumes that the database holds
      --remove             take volumes out
      --prune              take volumes out whose files are gone
  -h, --help               print this text
  -V, --version            print the version

Exit status: 0 all volumes were merged, 1 one could not be read, was cut or contradicted another,
2 the database could not be used. The man page quarl-db(1) tells more.
)";

constexpr std::array<option, 11> Long_Options = {{{"jobs", required_argument, nullptr, 'j'},
                                                  {"verbose", no_argument, nullptr, 'v'},
                                                  {"no-check", no_argument, nullptr, 'c'},
                                                  {"no-data", no_argument, nullptr, 'd'},
                                                  {"select", required_argument, nullptr, 's'},
                                                  {"list", no_argument, nullptr, 'l'},
                                                  {"remove", no_argument, nullptr, 'r'},
                                                  {"prune", no_argument, nullptr, 'p'},
                                                  {"help", no_argument, nullptr, 'h'},
                                                  {"version", no_argument, nullptr, 'V'},
                                                  {nullptr, 0, nullptr, 0}}};

std::string set_task(ArchiveWishes::Task task, ArchiveWishes *wishes)
{
    if (wishes->task != ArchiveWishes::Task::merge && wishes->task != task)
        return "one of --list, --remove and --prune at a time";
    wishes->task = task;
    return {};
}

std::string set_threads(ArchiveWishes *wishes)
{
    std::size_t used = 0;
    wishes->threads = leading_int(optarg, &used);
    if (used != std::string_view(optarg).size() || wishes->threads < 1 ||
        wishes->threads > Most_Threads)
        return formatted<"-j needs a number from 1 to %d">(Most_Threads);
    return {};
}

std::string take_option(int option, ArchiveWishes *wishes)
{
    switch (option) {
    case 'j':
        return set_threads(wishes);
    case 'v':
        wishes->verbose = true;
        break;
    case 'c':
        wishes->reading.check = false;
        break;
    case 'd':
        wishes->reading.data = false;
        break;
    case 's':
        wishes->reading.select += (wishes->reading.select.empty() ? "" : ",") + std::string(optarg);
        return wishes->reading.selection.add(optarg);
    case 'l':
        return set_task(ArchiveWishes::Task::list, wishes);
    case 'r':
        return set_task(ArchiveWishes::Task::remove, wishes);
    default:
        return set_task(ArchiveWishes::Task::prune, wishes);
    }
    return {};
}

/// What is wrong with the names behind the options, or "".
std::string take_names(std::vector<std::string> names, ArchiveWishes *wishes)
{
    const bool needs_volumes =
        wishes->task == ArchiveWishes::Task::merge || wishes->task == ArchiveWishes::Task::remove;
    if (names.front() == "-")
        return "no database";
    wishes->database = names.front();
    wishes->volumes.assign(names.begin() + 1, names.end());
    if (needs_volumes && wishes->volumes.empty())
        return wishes->database + ": no volume is named for it";
    if (!needs_volumes && !wishes->volumes.empty())
        return "no volumes are needed here";
    return {};
}

int work(Console *console, int argc, char *argv[])
{
    ArchiveWishes wishes;
    std::optional<int> status;
    auto names = read_command_line(console, argc, argv,
                                   {"quarl-db", Help, ":j:vhV", Long_Options.data(), false,
                                    [&](int option) { return take_option(option, &wishes); }},
                                   &status);
    if (status)
        return *status;
    const auto say = [&](const std::string &text) {
        console->say({MessageKind::usage, text, {}, 0, {}, nullptr});
    };
    if (const std::string fault = take_names(std::move(names), &wishes); !fault.empty()) {
        say(fault + " (see quarl-db --help)");
        return Wrong_Call;
    }
    if (wishes.threads == 0)
        wishes.threads = std::clamp(static_cast<int>(std::thread::hardware_concurrency()), 1, 64);
    try {
        return run_archive(console, wishes);
    } catch (const DatabaseError &error) {
        console->elog_clear_register();
        say(shown_database(wishes.database.c_str()) + ": " + error.what());
        return Unusable;
    }
}

} // namespace

int main(int argc, char *argv[])
{
    bool finished = false;
    const int status = quarl::run_program(argc, argv, [&](quarl::Console *console) {
        const int found = work(console, argc, argv);
        console->elog_clear_register();
        finished = true;
        return found;
    });
    return finished ? status : Unusable;
}
