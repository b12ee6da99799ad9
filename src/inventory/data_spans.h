// Joins the spans of data records that come in any order.
#pragma once

#include <quarl/contents.h>
#include <vector>

namespace quarl
{

/// The spans of one channel. Records in order of time cost one comparison each; others wait until
/// there are as many as joined spans, and are sorted into these: n records cost n logarithms, and
/// memory goes with the number of spans that do not join.
class SpanJoiner
{
public:
    void add(const DataSpan &span)
    {
        const double step = span.start - open_.end;
        if (has_open_ && step <= span.tolerance && step >= -span.tolerance)
            open_.end = span.end;
        else
            begin(span);
    }

    /// All spans in order of time; what overlaps is noted. Nothing may be added afterwards.
    void finish(DataChannel *channel);

private:
    void begin(const DataSpan &span);
    void join_waiting();
    void join(std::vector<DataSpan> *joined, const DataSpan &span);
    void note_overlap(const DataSpan &first, const DataSpan &second);

    bool has_open_ = false;
    DataSpan open_;
    std::vector<DataSpan> waiting_;
    std::vector<DataSpan> joined_; ///< in order of time
    Occurrences overlaps_;
    std::vector<DataOverlap> overlapping_;
};

} // namespace quarl
