#include "volume/count.h"

#include "blockette/blockette.h"
#include "blockette/sdblknam.h"
#include "platform/elog.h"
#include "volume/run.h"

#include <cerrno>

namespace quarl
{

void init_count() { *run().count = Count(); }

std::int64_t block_size(const record_t *blk, int blk_type)
{
    if (blk_type == Data_Record)
        return static_cast<const blk_dh_t *>(blk)->length;
    std::int64_t size = 0;
    if (!visit(blk, blk_type, [&](const blk_t &known) { size = known.length; }))
        elog_complain<MessageKind::blockette_unknown, "Block size: unknown blockette: %5d\n">(
            0, blk_type);
    return size;
}

void count_blk(const record_t *blk, int blk_num)
{
    Count &count = *run().count;
    ++count.nblks;
    const int index = blk_num + 1;
    if (index < 0 || index >= Count::Types) {
        errno = 0; // no system call failed
        elog_complain<MessageKind::blockette_unknown, "Unknown block type = %d\n">(1, blk_num);
        return;
    }
    ++count.blk_cnt[index];
    count.tot_siz[index] += blk ? block_size(blk, blk_num) : 0;
}

Statistics statistics(std::int64_t bytes, std::int64_t records)
{
    const Count &count = *run().count;
    Statistics all;
    all.items = count.nblks;
    all.records = records;
    all.bytes = bytes;
    all.data = count.tot_siz[0];
    for (int i = 0; i < Count::Types; ++i) {
        if (count.blk_cnt[i] != 0)
            all.types.push_back({i - 1, count.blk_cnt[i], count.tot_siz[i]});
        all.parameters += i > 0 ? count.tot_siz[i] : 0;
    }
    all.waste = bytes - all.parameters - all.data;
    return all;
}

} // namespace quarl
