// Prints when the data of a SEED volume were taken, as tab-separated values: channel, start of its
// epoch, first and last sample, seconds of data. Times are ISO 8601.
#include <quarl/time.h>
#include <quarl/volume.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <string>

namespace
{

struct Taken {
    std::string epoch = "-"; ///< start of the last one that was described
    quarl::Time first = quarl::Time::max();
    quarl::Time last = quarl::Time::min();
    std::chrono::microseconds length{};
};

std::string code(const std::string &network, const std::string &station,
                 const std::string &location, const std::string &channel)
{
    return network + '.' + station + '.' + location + '.' + channel;
}

void print(const std::string &channel, const Taken &taken)
{
    const std::string first = quarl::iso_text(taken.first);
    const std::string last = quarl::iso_text(taken.last);
    std::printf("%s\t%s\t%s\t%s\t%.6f\n", channel.c_str(), taken.epoch.c_str(),
                first.empty() ? "-" : first.c_str(), last.empty() ? "-" : last.c_str(),
                std::chrono::duration<double>(taken.length).count());
}

} // namespace

int main(int argc, char *argv[])
try {
    std::map<std::string, Taken> channels;
    quarl::Volume volume(argc > 1 ? argv[1] : "-");
    for (const quarl::Item &item : volume) {
        if (const auto *epoch = item.get<quarl::blk_052_t>()) {
            if (const auto start = quarl::read_time(epoch->start_date))
                channels[code(epoch->network_code, epoch->station, epoch->loc_id, epoch->chan_id)]
                    .epoch = quarl::iso_text(*start);
        } else if (const auto *header = item.get<quarl::blk_dh_t>()) {
            const auto times = quarl::data_times(*header);
            if (!times) // no time of the calendar
                continue;
            Taken &taken = channels[code(header->network_code, header->stn_id, header->loc_id,
                                         header->chan_id)];
            taken.first = std::min(taken.first, times->start);
            taken.last = std::max(taken.last, times->end);
            taken.length += times->next - times->start;
        }
    }
    for (const auto &[channel, taken] : channels)
        print(channel, taken);
} catch (const quarl::Error &error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
}
