// quarl-check: options; then one volume after the other.
#include "programs/check.h"
#include "programs/interrupt.h"
#include "programs/program.h"

#include "platform/text.h"

#include <algorithm>
#include <array>
#include <getopt.h>

namespace
{

using namespace quarl;

constexpr int Unusable = 2; ///< the command line is wrong, or a volume could not be read

constexpr const char *Usage =
    "usage: quarl-check [--rules LIST] [--ignore LIST] [--json] [VOLUME...]\n"
    "       quarl-check --list | --help | --version\n"
    "\n"
    "Checks SEED volumes: their records, headers, indexes, dictionaries, epochs, responses and\n"
    "data against each other. Prints one line for each finding. Without VOLUME, or with -,\n"
    "standard input is read.\n"
    "\n"
    "  --rules LIST   check these rules only: names with commas between them\n"
    "  --ignore LIST  leave these rules out\n"
    "  --json         print each finding as a JSON object\n"
    "  --list         print all rules with their severities\n"
    "  --help         print this\n"
    "  --version      print the version\n"
    "\n"
    "Exit status: 0 no error was found, 1 one was, 2 a volume could not be read.\n";

constexpr std::array<option, 7> Options = {{{"rules", required_argument, nullptr, 'r'},
                                            {"ignore", required_argument, nullptr, 'i'},
                                            {"json", no_argument, nullptr, 'j'},
                                            {"list", no_argument, nullptr, 'l'},
                                            {"help", no_argument, nullptr, 'h'},
                                            {"version", no_argument, nullptr, 'V'},
                                            {nullptr, 0, nullptr, 0}}};

/// The command line, as far as it is read.
struct Wishes {
    CheckRun run;
    int status = -1; ///< not below 0: the program ends with it
};

void say(Console *console, const std::string &text)
{
    console->say({MessageKind::usage, text, {}, 0, {}, nullptr});
}

/// Sets the rules that `list` names; says so when there is no such rule.
bool choose(Console *console, std::string_view list, bool value, Chosen *chosen)
{
    for (std::size_t at = 0; at <= list.size();) {
        const std::size_t end = std::min(list.find(',', at), list.size());
        const std::string_view name = trimmed(list.substr(at, end - at));
        at = end + 1;
        const auto rule = std::find_if(all_rules().begin(), all_rules().end(),
                                       [&](const Rule &each) { return each.name == name; });
        if (rule == all_rules().end()) {
            say(console, "no rule is named '" + std::string(name) + "'; --list prints all");
            return false;
        }
        (*chosen)[static_cast<std::size_t>(rule - all_rules().begin())] = value;
    }
    return true;
}

int list_rules(Console *console)
{
    for (const Rule &rule : all_rules())
        print<"%-24s %-8s %s\n">(console->out(), rule.name, name_of(rule.severity), rule.sentence);
    return 0;
}

int print_usage(Console *console)
{
    console->out().write(Usage);
    return 0;
}

int print_version(Console *console)
{
    print<"quarl-check %s\n">(console->out(), std::string_view(QUARL_VERSION));
    return 0;
}

/// The rules of --rules, less those of --ignore, whatever their order.
Chosen chosen_rules(const Chosen &only, bool has_only, const Chosen &ignored)
{
    Chosen chosen(all_rules().size());
    for (std::size_t i = 0; i < chosen.size(); ++i)
        chosen[i] = (only[i] || !has_only) && !ignored[i];
    return chosen;
}

Wishes read_options(Console *console, int argc, char *argv[])
{
    Wishes wishes;
    Chosen only(all_rules().size());
    Chosen ignored(all_rules().size());
    bool has_only = false;
    opterr = 0;
    for (int option = 0; (option = getopt_long(argc, argv, "", Options.data(), nullptr)) != -1;) {
        switch (option) {
        case 'r':
        case 'i':
            has_only |= option == 'r';
            if (!choose(console, optarg, true, option == 'r' ? &only : &ignored))
                wishes.status = Unusable;
            break;
        case 'j':
            wishes.run.json = true;
            break;
        case 'l':
            wishes.status = list_rules(console);
            return wishes;
        case 'h':
            wishes.status = print_usage(console);
            return wishes;
        case 'V':
            wishes.status = print_version(console);
            return wishes;
        default:
            say(console,
                std::string("cannot use '") + argv[optind - 1] + "'; --help prints what can be");
            wishes.status = Unusable;
            return wishes;
        }
    }
    wishes.run.chosen = chosen_rules(only, has_only, ignored);
    return wishes;
}

std::string counted(std::int64_t count, const char *what)
{
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

int check_volumes(Console *console, int argc, char *argv[])
{
    Wishes wishes = read_options(console, argc, argv);
    if (wishes.status >= 0)
        return wishes.status;
    std::vector<std::string> paths(argv + optind, argv + argc);
    if (paths.empty())
        paths.emplace_back("-");
    std::int64_t volumes = 0;
    for (const std::string &path : paths) {
        if (stop_asked())
            break;
        check_volume(console, &wishes.run, path);
        console->elog_clear_register();
        ++volumes;
    }
    const CheckRun &run = wishes.run;
    say(console, counted(run.errors, "error") + ", " + counted(run.warnings, "warning") + ", " +
                     counted(run.notes, "note") + " in " + counted(volumes, "volume"));
    if (run.unread)
        return Unusable;
    return run.errors > 0 ? 1 : 0;
}

} // namespace

int main(int argc, char *argv[])
{
    bool finished = false;
    const int status = quarl::run_program(argc, argv, [&](quarl::Console *console) {
        const int found = check_volumes(console, argc, argv);
        console->elog_clear_register();
        finished = true;
        return found;
    });
    return finished ? status : Unusable;
}
