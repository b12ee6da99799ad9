#include "blockette/blockette.h"

#include <cstring>

namespace quarl
{

#define DEFINE_MAKERS(name)                                                                        \
    std::unique_ptr<blk_##name##_t> new_##name()                                                   \
    {                                                                                              \
        auto blk = allocate_one<blk_##name##_t>("new_blk", 1, Where());                            \
        blk->type = blk_##name##_t::Number;                                                        \
        return blk;                                                                                \
    }                                                                                              \
    void init_##name(blk_##name##_t *blk)                                                          \
    {                                                                                              \
        std::destroy_at(blk);                                                                      \
        std::construct_at(blk);                                                                    \
        blk->type = blk_##name##_t::Number;                                                        \
    }
SEED_BLOCKETTES(DEFINE_MAKERS)
SEED_UNLISTED(DEFINE_MAKERS)
#undef DEFINE_MAKERS

void stamp_channel(channel_context_t *blk)
{
    const blk_050_t &station = parsing().blk_050;
    const blk_052_t &channel = parsing().blk_052;
    std::memcpy(blk->station, station.station, sizeof blk->station);
    std::memcpy(blk->network_code, station.network_code, sizeof blk->network_code);
    std::memcpy(blk->channel, channel.channel, sizeof blk->channel);
    std::memcpy(blk->start_date, channel.start_date, sizeof blk->start_date);
    std::memcpy(blk->end_date, channel.end_date, sizeof blk->end_date);
    blk->sample_rate = channel.sample_rate;
    blk->instr_id = channel.instr_id;
    std::memcpy(blk->loc_id, channel.loc_id, sizeof blk->loc_id);
    std::memcpy(blk->chan_id, channel.chan_id, sizeof blk->chan_id);
    blk->subchan_id = channel.subchan_id;
    blk->channel_is_of_station = parsing().channel_is_of_station;
}

} // namespace quarl
