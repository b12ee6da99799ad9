#include "pfree.h"

#include "blockette/blockette.h"
#include "fixup_dh.h"
#include "platform/elog.h"

#define DEFINE_FREE(number, name)                                                                  \
    void free_##name(blk_##name##_t *blk) { std::default_delete<blk_##name##_t>()(blk); }
SEED_BLOCKETTES(DEFINE_FREE)
#undef DEFINE_FREE

void free_blk(record_t *record, int type)
{
    switch (type) {
    case Data_Record:
        return free_dh(static_cast<blk_dh_t *>(record));
#define CASE_FREE(number, name)                                                                    \
    case number:                                                                                   \
        return free_##name(static_cast<blk_##name##_t *>(record));
        SEED_BLOCKETTES(CASE_FREE)
#undef CASE_FREE
    default:
        elog_complain<"Unknown blockette: %5d\n">(0, type);
    }
}
