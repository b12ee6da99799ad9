#include "programs/command_line.h"

#include "platform/text.h"

#include <quarl/version.h>

namespace quarl
{

namespace
{

/// What an option asks to be printed, or what is wrong with it.
struct Answer {
    std::string text;
    std::string fault;

    [[nodiscard]] bool is_empty() const { return text.empty() && fault.empty(); }
};

/// The option that getopt_long has just refused, as the user wrote it.
std::string refused_option(int argc, char *const argv[])
{
    const std::string_view last = optind > 0 && optind <= argc ? argv[optind - 1] : "";
    if (last.starts_with("--"))
        return std::string(last);
    return optopt > 0 && optopt < 256 ? std::string{'-', static_cast<char>(optopt)}
                                      : std::string(last);
}

Answer take_option(int option, int argc, char *argv[], const CommandLine &line)
{
    switch (option) {
    case 'h':
        return {std::string(line.help), {}};
    case 'V':
        return {formatted<"%s %s\n">(line.program, version()), {}};
    case ':':
        return {{}, refused_option(argc, argv) + " needs a value"};
    case '?':
        return {{}, "unknown option " + refused_option(argc, argv)};
    default:
        return {{}, line.take(option)};
    }
}

Answer read_options(int argc, char *argv[], const CommandLine &line)
{
    Answer answer;
    for (int option = 0; answer.is_empty();) {
        option = getopt_long(argc, argv, line.letters, line.options, nullptr);
        if (option == -1)
            break;
        answer = take_option(option, argc, argv, line);
    }
    if (answer.is_empty() && line.one_volume && argc - optind > 1)
        answer.fault = "more than one volume";
    return answer;
}

} // namespace

std::vector<std::string> read_command_line(Console *console, int argc, char *argv[],
                                           const CommandLine &line, std::optional<int> *status)
{
    const Answer answer = read_options(argc, argv, line);
    if (!answer.fault.empty()) {
        const std::string text =
            formatted<"%s (see %s --help)">(answer.fault, base_name(console->Program_Name));
        console->say({MessageKind::usage, text, {}, 0, {}, nullptr});
        *status = Wrong_Call;
        return {};
    }
    if (!answer.text.empty()) {
        console->out().write(answer.text);
        *status = 0;
        return {};
    }
    if (optind >= argc)
        return {"-"};
    return {argv + optind, argv + argc};
}

} // namespace quarl
