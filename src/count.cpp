#include "count.h"

#include "pbrief.h"
#include "platform/elog.h"
#include "sdblknam.h"

#include <array>
#include <cerrno>

namespace
{

constexpr int Types = 500; ///< types -1 to 498, each at the index one above

struct Counters {
    std::int64_t nblks = 0; ///< everything counted, types outside the table included
    std::array<std::int64_t, Types> blk_cnt{};
    std::array<std::int64_t, Types> tot_siz{}; ///< bytes
};

Counters Count;

} // namespace

void init_count() { Count = Counters(); }

std::int64_t block_size(const record_t *blk, int blk_type)
{
    switch (blk_type) {
    case Data_Record:
        return static_cast<const blk_dh_t *>(blk)->length;
#define CASE_SIZE(number, name) case number:
        SEED_BLOCKETTES(CASE_SIZE)
#undef CASE_SIZE
        return static_cast<const blk_t *>(blk)->length;
    default:
        elog_complain<"Block size: unknown blockette: %5d\n">(0, blk_type);
        return 0;
    }
}

void count_blk(const record_t *blk, int blk_num)
{
    if (blk_num == 10)
        summary_010(Stdout, *static_cast<const blk_010_t *>(blk));
    else if (blk_num == 11)
        summary_011(Stdout, *static_cast<const blk_011_t *>(blk));
    ++Count.nblks;
    const int index = blk_num + 1;
    if (index < 0 || index >= Types) {
        errno = 0; // no system call failed
        elog_complain<"Unknown block type = %d\n">(1, blk_num);
        return;
    }
    ++Count.blk_cnt[index];
    Count.tot_siz[index] += blk ? block_size(blk, blk_num) : 0;
}

void summary(int tapefile, std::int64_t seed_volume_size)
{
    if (Count.nblks < 1)
        return;
    print<"\nBlockette Summary -- file #%d\n">(Stdout, tapefile);
    std::int64_t parameters = 0;
    for (int i = 1; i < Types; ++i) {
        parameters += Count.tot_siz[i];
        if (Count.blk_cnt[i] != 0)
            print<"%5d (%03d) %10d %s blockettes\n">(Stdout, Count.blk_cnt[i], i - 1,
                                                     Count.tot_siz[i], sdblknam(i - 1));
    }
    const std::int64_t data = Count.tot_siz[0];
    const std::int64_t waste = seed_volume_size - parameters - data;
    const auto percent = [&](std::int64_t bytes) {
        return static_cast<double>(bytes) * 100.0 / static_cast<double>(seed_volume_size);
    };
    print<"%5d       %10d Data blockettes\n\n">(Stdout, Count.blk_cnt[0], data);
    print<"Total Parameter Info  : %10d = %6.1lf%%\n">(Stdout, parameters, percent(parameters));
    print<"Total Data            : %10d = %6.1lf%%\n">(Stdout, data, percent(data));
    print<"Total Wasted          : %10d = %6.1lf%%\n">(Stdout, waste, percent(waste));
}
