// quarl-check: options; then one volume after the other.
#include "programs/check.h"
#include "programs/command_line.h"
#include "programs/interrupt.h"
#include "programs/program.h"

#include "platform/text.h"

#include <algorithm>
#include <array>

namespace
{

using namespace quarl;

constexpr int Unusable = 2; ///< a volume could not be read

constexpr std::string_view Help =
    R"(Usage: quarl-check [--rules=LIST] [--ignore=LIST] [--baseline=FILE] [--summary] [--json]
                   [VOLUME...]
Checks SEED volumes: their records, headers, indexes, dictionaries, epochs, responses and data
against each other. Prints one line for each finding. Without VOLUME, or with "-", standard input
is read.

      --rules=LIST   check these rules only: names with commas between them
      --ignore=LIST  leave these rules out
      --baseline=FILE
                     leave out the findings that stand in FILE, printed with --json before
      --summary      print a table of the rules that found something instead
      --json         print each finding, or row of the table, as a JSON object
      --list         print all rules with their severities
  -h, --help         print this text
  -V, --version      print the version

Lists add up when they are given again.

Exit status: 0 no error was found, 1 one was, 2 a volume could not be read.
The man page quarl-check(1) explains every rule.
)";

constexpr std::array<option, 9> Options = {{{"rules", required_argument, nullptr, 'r'},
                                            {"ignore", required_argument, nullptr, 'i'},
                                            {"baseline", required_argument, nullptr, 'b'},
                                            {"summary", no_argument, nullptr, 's'},
                                            {"json", no_argument, nullptr, 'j'},
                                            {"list", no_argument, nullptr, 'l'},
                                            {"help", no_argument, nullptr, 'h'},
                                            {"version", no_argument, nullptr, 'V'},
                                            {nullptr, 0, nullptr, 0}}};

/// What the command line asks for.
struct Wishes {
    Chosen only = Chosen(all_rules().size());
    Chosen ignored = Chosen(all_rules().size());
    bool has_only = false;
    bool json = false;
    bool list = false;
    bool summary = false;
    Baseline baseline;
};

void say(Console *console, const std::string &text)
{
    console->say({MessageKind::usage, text, {}, 0, {}, nullptr});
}

/// Adds the rules that `list` names to `chosen`. Returns what is wrong with the list, or "".
std::string choose(std::string_view list, Chosen *chosen)
{
    for (std::size_t at = 0; at <= list.size();) {
        const std::size_t end = std::min(list.find(',', at), list.size());
        const std::string_view name = trimmed(list.substr(at, end - at));
        at = end + 1;
        const auto rule = std::find_if(all_rules().begin(), all_rules().end(),
                                       [&](const Rule &each) { return each.name == name; });
        if (rule == all_rules().end())
            return formatted<"no rule is named '%s', --list prints all">(name);
        (*chosen)[static_cast<std::size_t>(rule - all_rules().begin())] = true;
    }
    return {};
}

int list_rules(Console *console)
{
    for (const Rule &rule : all_rules())
        print<"%-24s %-8s %s\n">(console->out(), rule.name, name_of(rule.severity), rule.sentence);
    return 0;
}

/// The rules of --rules, less those of --ignore, whatever their order.
Chosen chosen_rules(const Wishes &wishes)
{
    Chosen chosen(all_rules().size());
    for (std::size_t i = 0; i < chosen.size(); ++i)
        chosen[i] = (wishes.only[i] || !wishes.has_only) && !wishes.ignored[i];
    return chosen;
}

std::string take_option(int option, Wishes *wishes)
{
    switch (option) {
    case 'r':
        wishes->has_only = true;
        return choose(optarg, &wishes->only);
    case 'i':
        return choose(optarg, &wishes->ignored);
    case 'b':
        return wishes->baseline.read(optarg);
    case 's':
        wishes->summary = true;
        break;
    case 'j':
        wishes->json = true;
        break;
    default:
        wishes->list = true;
    }
    return {};
}

std::string counted(std::int64_t count, const char *what)
{
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

int check_volumes(Console *console, int argc, char *argv[])
{
    Wishes wishes;
    std::optional<int> status;
    const auto paths = read_command_line(console, argc, argv,
                                         {"quarl-check", Help, ":hV", Options.data(), false,
                                          [&](int option) { return take_option(option, &wishes); }},
                                         &status);
    if (status)
        return *status;
    if (wishes.list)
        return list_rules(console);
    CheckRun run;
    run.json = wishes.json;
    run.summary = wishes.summary;
    run.baseline = std::move(wishes.baseline);
    run.chosen = chosen_rules(wishes);
    for (const std::string &path : paths) {
        if (stop_asked())
            break;
        check_volume(console, &run, path);
        console->elog_clear_register();
    }
    if (run.summary)
        print_summary(console, run);
    say(console,
        counted(run.errors, "error") + ", " + counted(run.warnings, "warning") + ", " +
            counted(run.notes, "note") + " in " + counted(run.volumes, "volume") +
            (run.baseline.is_used() ? "; " + counted(run.known, "known finding") + " not told"
                                    : std::string()));
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
