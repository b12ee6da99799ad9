// Data without a gap, in the order in which a volume has them.
#pragma once

#include "archive/sql.h"
#include "inventory/selection.h"

#include <deque>
#include <quarl/contents.h>
#include <quarl/item.h>
#include <unordered_map>

namespace quarl::archive
{

/// Rows of wfdisc: one for each run of records of a channel that join to within half a sample at
/// one rate. Records of several channels may stand between each other's.
class DataRuns
{
public:
    explicit DataRuns(const ChannelSelection &selection) : selection_(selection) {}

    void add(const Item &item, const blk_dh_t &header);
    /// In order of the runs' first records: foff, sta, chan, time, jdate, endtime, nsamp,
    /// samprate, segtype, datatype.
    Rows take();

private:
    struct Run {
        ChannelCode code;
        double start = 0.0;
        double end = 0.0;  ///< of the last sample
        double next = 0.0; ///< when the next sample would come
        double rate = 0.0;
        std::int64_t samples = 0;
        std::int64_t offset = 0;
    };
    struct Hash {
        std::size_t operator()(const ChannelCode &code) const { return code.hash(); }
    };

    const ChannelSelection &selection_;
    std::deque<Run> runs_;
    std::unordered_map<ChannelCode, std::size_t, Hash> open_; ///< index of the run
};

/// YYYYDDD of a time; -1 when it is none.
std::int64_t julian_date(double time);

} // namespace quarl::archive
