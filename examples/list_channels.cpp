// Prints the stations and channels of a SEED volume as tab-separated values.
#include <quarl/volume.h>

#include <cstdio>

int main(int argc, char *argv[])
try {
    quarl::Volume volume(argc > 1 ? argv[1] : "-");
    for (const quarl::Item &item : volume) {
        if (const auto *station = item.get<quarl::blk_050_t>())
            std::printf("station\t%s\t%s\t%.6f\t%.6f\t%.1f\t%s\t%s\t%s\n", station->network_code,
                        station->station, station->lat, station->lon, station->elev,
                        station->start_date, station->end_date, station->name);
        else if (const auto *channel = item.get<quarl::blk_052_t>())
            std::printf("channel\t%s\t%s\t%s\t%s\t%g\t%.1f\t%.1f\t%s\t%s\n", channel->network_code,
                        channel->station, channel->loc_id, channel->chan_id, channel->sample_rate,
                        channel->azimuth, channel->dip, channel->start_date, channel->end_date);
    }
} catch (const quarl::Error &error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
}
