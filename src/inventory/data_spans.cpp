#include "inventory/data_spans.h"

#include <algorithm>
#include <utility>

namespace quarl
{

namespace
{

constexpr std::size_t Waiting_At_Least = 256;

bool earlier(const DataSpan &a, const DataSpan &b)
{
    return a.start != b.start ? a.start < b.start : a.record < b.record;
}

} // namespace

void SpanJoiner::begin(const DataSpan &span)
{
    if (has_open_) {
        waiting_.push_back(open_);
        if (waiting_.size() >= std::max(Waiting_At_Least, joined_.size()))
            join_waiting();
    }
    open_ = span;
    has_open_ = true;
}

void SpanJoiner::join(std::vector<DataSpan> *joined, const DataSpan &span)
{
    if (joined->empty() || span.start - joined->back().end > span.tolerance) {
        joined->push_back(span);
        return;
    }
    DataSpan &last = joined->back();
    if (last.end - span.start > span.tolerance)
        note_overlap(last, span);
    last.end = std::max(last.end, span.end);
}

/// `second` starts before `first` ends, and not before it starts.
void SpanJoiner::note_overlap(const DataSpan &first, const DataSpan &second)
{
    if (overlaps_.count++ == 0 || second.record < overlaps_.record) {
        overlaps_.record = second.record;
        overlaps_.from = first.end;
        overlaps_.to = second.start;
    }
    const DataOverlap twice{second.start, std::min(first.end, second.end)};
    if (!overlapping_.empty() && twice.start >= overlapping_.back().start &&
        twice.start - overlapping_.back().end <= second.tolerance)
        overlapping_.back().end = std::max(overlapping_.back().end, twice.end);
    else
        overlapping_.push_back(twice);
}

void SpanJoiner::join_waiting()
{
    std::sort(waiting_.begin(), waiting_.end(), earlier);
    std::vector<DataSpan> joined;
    auto next = waiting_.begin();
    for (const DataSpan &span : joined_) {
        for (; next != waiting_.end() && earlier(*next, span); ++next)
            join(&joined, *next);
        join(&joined, span);
    }
    for (; next != waiting_.end(); ++next)
        join(&joined, *next);
    joined_ = std::move(joined);
    waiting_.clear();
}

void SpanJoiner::finish(DataChannel *channel)
{
    if (has_open_)
        waiting_.push_back(open_);
    has_open_ = false;
    join_waiting();
    waiting_ = {};
    joined_.shrink_to_fit();
    channel->spans = std::move(joined_);
    channel->overlaps = overlaps_;
    std::sort(overlapping_.begin(), overlapping_.end(),
              [](const DataOverlap &a, const DataOverlap &b) { return a.start < b.start; });
    channel->overlapping = std::move(overlapping_);
}

} // namespace quarl
