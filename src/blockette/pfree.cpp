#include "blockette/pfree.h"

#include "blockette/blockette.h"
#include "blockette/data_header.h"
#include "platform/elog.h"

namespace quarl
{

#define DEFINE_FREE(name)                                                                          \
    void free_##name(blk_##name##_t *blk) { std::default_delete<blk_##name##_t>()(blk); }
SEED_BLOCKETTES(DEFINE_FREE)
SEED_UNLISTED(DEFINE_FREE)
#undef DEFINE_FREE

void free_blk(record_t *record, int type)
{
    if (type == Data_Record)
        return free_dh(static_cast<blk_dh_t *>(record));
    const bool known = with_any_family(type, [&](auto family) {
        family.free(static_cast<typename decltype(family)::Record *>(record));
    });
    if (!known)
        elog_complain<MessageKind::blockette_unknown, "Unknown blockette: %5d\n">(0, type);
}

} // namespace quarl
