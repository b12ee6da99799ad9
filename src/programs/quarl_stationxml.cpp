// quarl-stationxml: the headers of volumes as FDSN StationXML.
#include "programs/command_line.h"
#include "programs/program.h"
#include "programs/stationxml.h"

#include "inventory/selection.h"
#include "platform/format.h"
#include "platform/text.h"

#include <array>
#include <charconv>
#include <chrono>
#include <cstdlib>
#include <memory>
#include <quarl/time.h>
#include <quarl/version.h>
#include <string_view>

namespace
{

using namespace quarl;

constexpr std::string_view Help =
    R"(Usage: quarl-stationxml [OPTION...] [VOLUME...]
Writes the station and channel headers of SEED volumes, with their responses, as one document of
FDSN StationXML 1.2. Without VOLUME, or with "-", standard input is read.

  -o, --output=FILE   write the document to FILE, not to standard output
      --level=LEVEL   go down to network, station, channel or response (the default)
      --select=GLOBS  channels that match NETWORK.STATION.LOCATION.CHANNEL only
      --start=TIME    epochs that are there from TIME on only
      --end=TIME      epochs that are there before TIME only
      --source=TEXT   who answers for the document, when it is not the volume's organisation
      --sender=TEXT   who sends it
      --created=TIME  when it is made, for documents that are the same to the byte
      --keep-all      tell what StationXML has no place for in comments
      --resp=DIR      write each channel's response to a RESP file in DIR, too
      --validate      check the headers as quarl-check does, too
  -h, --help          print this text
  -V, --version       print the version

Exit status: 0 all was carried over, 1 something could not be, 2 a volume could not be read or the
call was wrong. The man page quarl-stationxml(1) tells what becomes of each field.
)";

/// Long options without a letter.
enum Option { Level = 256, Select, Start, End, Source, Sender, Created, Keep_All, Resp, Validate };

constexpr std::array<option, 14> Long_Options = {{{"output", required_argument, nullptr, 'o'},
                                                  {"level", required_argument, nullptr, Level},
                                                  {"select", required_argument, nullptr, Select},
                                                  {"start", required_argument, nullptr, Start},
                                                  {"end", required_argument, nullptr, End},
                                                  {"source", required_argument, nullptr, Source},
                                                  {"sender", required_argument, nullptr, Sender},
                                                  {"created", required_argument, nullptr, Created},
                                                  {"keep-all", no_argument, nullptr, Keep_All},
                                                  {"resp", required_argument, nullptr, Resp},
                                                  {"validate", no_argument, nullptr, Validate},
                                                  {"help", no_argument, nullptr, 'h'},
                                                  {"version", no_argument, nullptr, 'V'},
                                                  {nullptr, 0, nullptr, 0}}};

std::string take_level(std::string_view name, StationXmlLevel *level)
{
    constexpr std::array<std::string_view, 4> Names = {"network", "station", "channel", "response"};
    for (std::size_t i = 0; i < Names.size(); ++i) {
        if (Names[i] != name)
            continue;
        *level = static_cast<StationXmlLevel>(i);
        return {};
    }
    return formatted<"no level is named '%s': network, station, channel, response">(name);
}

std::string take_created(std::string_view text, double *created)
{
    std::optional<Time> time = read_iso_time(text);
    if (!time)
        time = read_time(text);
    if (!time)
        return formatted<"no time: %s">(text);
    *created = seconds(*time);
    return {};
}

std::string take_text(const char *name, std::string *text)
{
    *text = optarg;
    return text->empty() ? std::string(name) : "";
}

struct Wishes {
    StationXmlRun run;
    ChannelSelection selection;
};

std::string take_option(int option, Wishes *wishes)
{
    StationXmlRun &run = wishes->run;
    switch (option) {
    case 'o':
        return take_text("-o needs the name of a file", &run.output);
    case Level:
        return take_level(optarg, &run.options.level);
    case Select:
        return wishes->selection.add(optarg);
    case Start:
        return wishes->selection.set_start(optarg);
    case End:
        return wishes->selection.set_end(optarg);
    case Source:
        run.options.source = optarg;
        return {};
    case Sender:
        run.options.sender = optarg;
        return {};
    case Created:
        return take_created(optarg, &run.options.created);
    case Keep_All:
        run.options.keep_all = true;
        return {};
    case Resp:
        return take_text("--resp needs the name of a folder", &run.resp_folder);
    default:
        run.validate = true;
        return {};
    }
}

/// Now, or the time that builds which have to be reproducible agree on.
std::string default_created(double *created)
{
    *created = static_cast<double>(
        std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now())
            .time_since_epoch()
            .count());
    const char *epoch = std::getenv("SOURCE_DATE_EPOCH");
    if (!epoch || !*epoch)
        return {};
    const std::string_view text = epoch;
    std::int64_t whole = 0;
    constexpr std::int64_t Last = 253402300799; // the end of the year 9999
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), whole);
    if (error != std::errc() || end != text.data() + text.size() || whole < 0 || whole > Last)
        return formatted<"SOURCE_DATE_EPOCH is no time: %s">(text);
    *created = static_cast<double>(whole);
    return {};
}

int carry_volumes(Console *console, int argc, char *argv[])
{
    Wishes wishes;
    wishes.run.options.module_name = formatted<"quarl-stationxml %s">(version());
    const std::string fault = default_created(&wishes.run.options.created);
    std::optional<int> status;
    wishes.run.volumes =
        read_command_line(console, argc, argv,
                          {"quarl-stationxml", Help, ":o:hV", Long_Options.data(), false,
                           [&](int option) { return take_option(option, &wishes); }},
                          &status);
    if (status)
        return *status;
    if (!fault.empty()) {
        console->say({MessageKind::usage, fault, {}, 0, {}, nullptr});
        return Wrong_Call;
    }
    if (!wishes.selection.has_all())
        wishes.run.options.select = [&](const ChannelCode &code, double start, double end) {
            return wishes.selection.has(code) && wishes.selection.has(start, end);
        };
    return run_stationxml(console, std::move(wishes.run));
}

} // namespace

int main(int argc, char *argv[])
{
    bool finished = false;
    const int status = quarl::run_program(argc, argv, [&](quarl::Console *console) {
        const int carried = carry_volumes(console, argc, argv);
        console->elog_clear_register();
        finished = true;
        return carried;
    });
    return finished ? status : quarl::Volume_Unread;
}
