#include "programs/stationxml.h"

#include "programs/carried_volumes.h"
#include "programs/finding_line.h"
#include "programs/interrupt.h"
#include "programs/out_stream.h"
#include "programs/output_file.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <system_error>
#include <utility>

namespace quarl
{

namespace
{

std::string_view name_of(CarryRemark::Severity severity)
{
    switch (severity) {
    case CarryRemark::Severity::error:
        return "error";
    case CarryRemark::Severity::warning:
        return "warning";
    case CarryRemark::Severity::note:
        break;
    }
    return "note";
}

void write_document(Console *console, const StationXml &document, const std::string &output)
{
    write_output(console->out(), output, [&](Out &out) {
        write_as_stream(out, [&](std::ostream &to) { document.write(to); });
    });
}

/// One file per channel, its epochs one behind the other.
void write_resp_files(const std::vector<NamedInventory> &volumes, const StationXml &document,
                      const std::string &folder)
{
    using Epochs = std::vector<std::pair<const Inventory *, const ChannelEpoch *>>;
    std::map<std::string, Epochs> files;
    document.for_each_channel([&](std::size_t volume, const ChannelEpoch &epoch) {
        const Inventory &inventory = *volumes[volume].inventory;
        files[resp_name(inventory.channel_of(epoch).code)].emplace_back(&inventory, &epoch);
    });
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error)
        throw Error(MessageKind::output_failed, "Can't make " + folder + ": " + error.message(),
                    error.value());
    for (const auto &[name, epochs] : files) {
        const auto write = [&epochs = epochs](std::ostream &to) {
            for (const auto &[inventory, epoch] : epochs)
                write_resp(to, *inventory, *epoch);
        };
        write_file(std::filesystem::path(folder) / name,
                   [&](Out &out) { write_as_stream(out, write); });
    }
}

/// Whether the document would replace a volume; says so.
bool is_in_the_way(Console *console, const StationXmlRun &run)
{
    const auto volume =
        std::find_if(run.volumes.begin(), run.volumes.end(),
                     [&](const std::string &path) { return is_one_file(path, run.output); });
    if (volume == run.volumes.end())
        return false;
    const std::string text = run.output + ": the document would replace the volume";
    console->say({MessageKind::usage, text, {}, 0, {}, nullptr});
    return true;
}

} // namespace

int run_stationxml(Console *console, StationXmlRun run)
{
    if (is_in_the_way(console, run))
        return Volume_Unread;
    CarriedVolumes volumes(console, run.validate);
    for (const std::string &path : run.volumes)
        if (!stop_asked())
            volumes.read(path);
    end_at_once(); // there is no reading any more that looks at flags
    if (stop_asked())
        return Volume_Unread;
    bool whole = !volumes.lacks_headers();
    run.options.tell = [&](const CarryRemark &remark) {
        whole &= remark.severity == CarryRemark::Severity::note;
        console->err().write(finding_line(volumes.inventories()[remark.volume].name, remark.record,
                                          name_of(remark.severity), remark.subject, remark.text,
                                          remark.name));
    };
    const StationXml document(volumes.inventories(), std::move(run.options));
    if (document.is_empty()) {
        if (!volumes.inventories().empty())
            console->say({MessageKind::usage, "nothing is selected", {}, 0, {}, nullptr});
        whole = false;
    } else {
        write_document(console, document, run.output);
        if (!run.resp_folder.empty())
            write_resp_files(volumes.inventories(), document, run.resp_folder);
    }
    if (run.validate)
        volumes.say_summary();
    return volumes.is_unread() ? Volume_Unread : whole ? 0 : Carried_In_Part;
}

} // namespace quarl
