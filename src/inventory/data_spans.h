// Joins the spans of data records that come in any order.
#pragma once

#include <cstddef>
#include <quarl/contents.h>
#include <vector>

namespace quarl
{

/// The spans of one channel. Records in order of time cost one comparison each; others wait until
/// there are as many as joined spans, and are sorted into these: n records cost n logarithms, and
/// memory goes with the number of spans that do not join, and of their overlaps.
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
    void join_overlapping();

    bool has_open_ = false;
    DataSpan open_;
    std::vector<DataSpan> waiting_;
    std::vector<DataSpan> joined_; ///< in order of time
    Occurrences overlaps_;
    struct Twice : DataOverlap {
        double tolerance = 0.0; ///< s: what ends not further in front of it joins
    };
    std::vector<Twice> overlapping_;     ///< each batch of spans in order of time
    std::size_t overlapping_joined_ = 0; ///< how many there were when they were joined last
};

} // namespace quarl
