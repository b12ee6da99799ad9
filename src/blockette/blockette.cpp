#include "blockette/blockette.h"

namespace
{

/// A station whose texts are all empty: a comment before the first station carries no network code.
blk_050_t no_station()
{
    blk_050_t blk;
    blk.network_code[0] = '\0';
    return blk;
}

} // namespace

blk_050_t blk_050 = no_station();
blk_052_t blk_052;

#define DEFINE_MAKERS(number, name)                                                                \
    std::unique_ptr<blk_##name##_t> new_##name()                                                   \
    {                                                                                              \
        auto blk = allocate_one<blk_##name##_t>("new_blk", 1, Where());                            \
        init_##name(blk.get());                                                                    \
        return blk;                                                                                \
    }                                                                                              \
    void init_##name(blk_##name##_t *blk)                                                          \
    {                                                                                              \
        std::destroy_at(blk);                                                                      \
        std::construct_at(blk);                                                                    \
        blk->type = number;                                                                        \
    }
SEED_BLOCKETTES(DEFINE_MAKERS)
#undef DEFINE_MAKERS

void stamp_channel(channel_context_t *blk)
{
    std::memcpy(blk->station, blk_050.station, sizeof blk->station);
    std::memcpy(blk->network_code, blk_050.network_code, sizeof blk->network_code);
    std::memcpy(blk->channel, blk_052.channel, sizeof blk->channel);
    std::memcpy(blk->start_date, blk_052.start_date, sizeof blk->start_date);
    std::memcpy(blk->end_date, blk_052.end_date, sizeof blk->end_date);
    blk->sample_rate = blk_052.sample_rate;
    blk->instr_id = blk_052.instr_id;
}
