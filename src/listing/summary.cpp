#include "listing/summary.h"

#include "blockette/sdblknam.h"
#include "platform/format.h"

namespace quarl
{

void summary(Out &stream, int tapefile, const Statistics &statistics)
{
    if (statistics.items < 1)
        return;
    print<"\nBlockette Summary -- file #%d\n">(stream, tapefile);
    std::int64_t records = 0;
    for (const auto &[type, count, bytes] : statistics.types) {
        if (type == Data_Record)
            records = count;
        else
            print<"%5d (%03d) %10d %s blockettes\n">(stream, count, type, bytes, sdblknam(type));
    }
    const auto percent = [&](std::int64_t bytes) {
        return static_cast<double>(bytes) * 100.0 / static_cast<double>(statistics.bytes);
    };
    print<"%5d       %10d Data blockettes\n\n">(stream, records, statistics.data);
    print<"Total Parameter Info  : %10d = %6.1lf%%\n">(stream, statistics.parameters,
                                                       percent(statistics.parameters));
    print<"Total Data            : %10d = %6.1lf%%\n">(stream, statistics.data,
                                                       percent(statistics.data));
    print<"Total Wasted          : %10d = %6.1lf%%\n">(stream, statistics.waste,
                                                       percent(statistics.waste));
}

void summary_010(Out &stream, int tapefile, const blk_010_t &blk)
{
    print<"File #%d: SEED Volume Version %.1f  Start:%20s End:%20s Written: %s by '%s': '%s'\n">(
        stream, tapefile, blk.version, blk.beg_time, blk.end_time, blk.volume_time,
        blk.originating_org, blk.label);
}

void summary_011(Out &stream, const blk_011_t &blk)
{
    constexpr int Per_Line = 12;
    print<"Stations:">(stream);
    for (int i = 0; i < blk.num_stn; ++i) {
        if (i % Per_Line == 0)
            print<"\n\t">(stream);
        print<"%5s ">(stream, blk.station(i));
    }
    print<"\n">(stream);
}

} // namespace quarl
