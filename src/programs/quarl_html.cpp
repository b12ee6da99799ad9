// quarl-html: a volume as one page.
#include "programs/command_line.h"
#include "programs/make_page.h"
#include "programs/program.h"

#include <array>
#include <string_view>

namespace
{

using namespace quarl;

constexpr std::string_view Help =
    R"(Usage: quarl-html [-o FILE] [VOLUME]
Makes one page of HTML of a SEED volume: what it holds, what is wrong with it, where its stations
are, when they recorded, and their responses. The page needs nothing besides a browser. Without
VOLUME, or with "-", standard input is read.

  -o, --output=FILE  write the page to FILE ("-": standard output, as without this option)
  -h, --help         print this text
  -V, --version      print the version

Exit status: 0 the page shows the volume, 1 the volume could be read in part, 2 there is no page.
The man page quarl-html(1) explains the page and its data.
)";

constexpr std::array<option, 4> Long_Options = {{{"output", required_argument, nullptr, 'o'},
                                                 {"help", no_argument, nullptr, 'h'},
                                                 {"version", no_argument, nullptr, 'V'},
                                                 {nullptr, 0, nullptr, 0}}};

int show_volume(Console *console, int argc, char *argv[])
{
    std::string output;
    const auto take = [&](int) -> std::string {
        output = optarg;
        return output.empty() ? "-o needs the name of a file" : "";
    };
    std::optional<int> status;
    const auto volumes =
        read_command_line(console, argc, argv,
                          {"quarl-html", Help, ":o:hV", Long_Options.data(), true, take}, &status);
    return status ? *status : make_page(console, volumes.front(), output);
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
