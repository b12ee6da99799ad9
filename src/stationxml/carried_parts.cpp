#include "stationxml/carried_parts.h"

#include <quarl/time.h>

namespace quarl
{

namespace
{

std::string subject_of(const ChannelCode &code, double start)
{
    const std::string time = time_text(start);
    return time.empty() ? code.text() : code.text() + ' ' + time;
}

} // namespace

const ChannelCode &code_of(const CarriedStation &station)
{
    return station.inventory->station_of(*station.epoch).code;
}

const ChannelCode &code_of(const CarriedChannel &channel)
{
    return channel.inventory->channel_of(*channel.epoch).code;
}

Teller::Teller(const CarryOptions &options, const CarriedStation &station)
    : Teller(options, station.volume, station.epoch->record,
             subject_of(code_of(station), station.epoch->start))
{
}

Teller::Teller(const CarryOptions &options, const CarriedChannel &channel)
    : Teller(options, channel.volume, channel.epoch->record,
             subject_of(code_of(channel), channel.epoch->start))
{
}

} // namespace quarl
