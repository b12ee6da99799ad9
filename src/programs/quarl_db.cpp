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

constexpr std::string_view Usage =
    "usage: quarl-db [-v] [-j N] [--no-check] [--no-data] [--select GLOB] DATABASE VOLUME...\n"
    "       quarl-db [-v] --list DATABASE\n"
    "       quarl-db [-v] --remove DATABASE VOLUME...\n"
    "       quarl-db [-v] --prune DATABASE\n"
    "       quarl-db --help | --version\n"
    "\n"
    "Merges SEED volumes into a CSS 3.0 database. DATABASE is the path of an SQLite file, or a\n"
    "URL (\"postgresql://...\"). VOLUME is a file, a folder, or - for a list of them on standard\n"
    "input. Volumes that have not changed since are passed over.\n"
    "\n"
    "  -j N           read N volumes at once (default: as many as there are processors)\n"
    "  -v             print a line for each volume\n"
    "  --no-check     do not keep what quarl-check finds\n"
    "  --no-data      do not keep what data records hold\n"
    "  --select GLOB  merge these channels only: NET.STA.LOC.CHA, commas between several\n"
    "  --list         print the volumes that the database holds\n"
    "  --remove       take volumes out\n"
    "  --prune        take those out whose files are gone\n"
    "  --help         print this\n"
    "  --version      print the version\n"
    "\n"
    "Exit status: 0 all was merged, 1 a volume could not be read, was cut or contradicted\n"
    "another, 2 the database could not be used.\n";

constexpr std::array<option, 9> Options = {{{"no-check", no_argument, nullptr, 'c'},
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
        return "no volume";
    if (!needs_volumes && !wishes->volumes.empty())
        return "no volumes are needed here";
    return {};
}

int work(Console *console, int argc, char *argv[])
{
    ArchiveWishes wishes;
    std::optional<int> status;
    auto names = read_command_line(console, argc, argv,
                                   {"quarl-db", Usage, ":hVj:v", Options.data(), false,
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
