// Prints the stations and channels of a SEED volume as tab-separated values.
#include "seed/seed.h"

#include <cstdio>

int main(int argc, char *argv[])
{
    const auto volume = seed_read(argc > 1 ? argv[1] : "-");
    Record record; // holds each blockette until the next one takes its place
    int type = 0;
    while (read_blk(volume.get(), &record, &type)) {
        if (type == 50) {
            const auto *station = static_cast<const blk_050_t *>(record.get());
            std::printf("station\t%s\t%s\t%.6f\t%.6f\t%.1f\t%s\t%s\t%s\n", station->network_code,
                        station->station, station->lat, station->lon, station->elev,
                        station->start_date, station->end_date, station->name);
        } else if (type == 52) {
            const auto *channel = static_cast<const blk_052_t *>(record.get());
            std::printf("channel\t%s\t%s\t%s\t%s\t%g\t%.1f\t%.1f\t%s\t%s\n", channel->network_code,
                        channel->station, channel->loc_id, channel->chan_id, channel->sample_rate,
                        channel->azimuth, channel->dip, channel->start_date, channel->end_date);
        }
    }
}
