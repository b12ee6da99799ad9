// Prints a line for each SEED volume: what it is, what it holds, and whether it is whole.
#include <quarl/volume.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <set>
#include <string>

namespace
{

struct Contents {
    std::string begin = "-"; ///< earliest time; times are texts that sort as they follow each other
    std::string end = "-";
    std::set<std::string> stations;
    std::set<std::string> channels;
    std::int64_t records = 0; ///< data records
    std::int64_t bytes = 0;
    bool complete = true;
};

void add_time(Contents *all, const std::string &time)
{
    if (time.empty())
        return;
    all->begin = all->begin == "-" ? time : std::min(all->begin, time);
    all->end = all->end == "-" ? time : std::max(all->end, time);
}

void add_channel(Contents *all, const std::string &network, const std::string &station,
                 const std::string &location, const std::string &channel)
{
    all->stations.insert(network + "." + station);
    all->channels.insert(network + "." + station + "." + location + "." + channel);
}

void add_item(Contents *all, const quarl::Item &item)
{
    if (const auto *volume = item.get<quarl::blk_010_t>()) {
        add_time(all, volume->beg_time);
        add_time(all, volume->end_time);
    } else if (const auto *channel = item.get<quarl::blk_052_t>()) {
        add_channel(all, channel->network_code, channel->station, channel->loc_id,
                    channel->chan_id);
    } else if (const auto *data = item.get<quarl::blk_dh_t>()) {
        ++all->records;
        add_time(all, data->start_time);
        add_channel(all, data->network_code, data->stn_id, data->loc_id, data->chan_id);
    } else if (const auto *file = item.get<quarl::FileEnd>()) {
        all->bytes += file->statistics.bytes;
        all->complete = all->complete && file->complete();
    }
}

void print_line(const char *path)
{
    Contents all;
    quarl::Volume volume(path);
    for (const quarl::Item &item : volume)
        add_item(&all, item);
    std::printf("%s\t%s\t%s\t%zu stations\t%zu channels\t%lld records\t%lld bytes\t%s\n", path,
                all.begin.c_str(), all.end.c_str(), all.stations.size(), all.channels.size(),
                static_cast<long long>(all.records), static_cast<long long>(all.bytes),
                all.complete ? "complete" : "cut");
}

} // namespace

int main(int argc, char *argv[])
try {
    for (int i = 1; i < argc; ++i)
        print_line(argv[i]);
} catch (const quarl::Error &error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
}
