#include "inventory/data_spans.h"

#include <algorithm>
#include <utility>

namespace quarl
{

namespace
{

constexpr std::size_t At_Least = 256; ///< that are joined at a time

bool earlier(const DataSpan &a, const DataSpan &b)
{
    return a.start != b.start ? a.start < b.start : a.record < b.record;
}

} // namespace

void SpanJoiner::begin(const DataSpan &span)
{
    if (has_open_) {
        waiting_.push_back(open_);
        if (waiting_.size() >= std::max(At_Least, joined_.size()))
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
    const double start = second.start;
    const double end = std::min(first.end, second.end);
    if (overlaps_.count++ == 0 || second.record < overlaps_.record) {
        overlaps_.record = second.record;
        overlaps_.from = end;
        overlaps_.to = start;
    }
    overlaps_.largest = std::max(overlaps_.largest, end - start);
    overlaps_.sum += end - start;
    if (!overlapping_.empty() && start >= overlapping_.back().start &&
        start - overlapping_.back().end <= second.tolerance) {
        overlapping_.back().end = std::max(overlapping_.back().end, end);
        return;
    }
    if (overlapping_.size() >= std::max(At_Least, 2 * overlapping_joined_))
        join_overlapping();
    overlapping_.push_back({{start, end}, second.tolerance});
}

/// Data that are repeated again and again overlap at the same times every time.
void SpanJoiner::join_overlapping()
{
    std::sort(overlapping_.begin(), overlapping_.end(),
              [](const Twice &a, const Twice &b) { return a.start < b.start; });
    std::size_t last = 0;
    for (std::size_t i = 1; i < overlapping_.size(); ++i) {
        const Twice &next = overlapping_[i];
        if (next.start - overlapping_[last].end <= next.tolerance)
            overlapping_[last].end = std::max(overlapping_[last].end, next.end);
        else
            overlapping_[++last] = next;
    }
    overlapping_.resize(std::min(overlapping_.size(), last + 1));
    overlapping_joined_ = overlapping_.size();
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
    join_overlapping();
    channel->overlapping.assign(overlapping_.begin(), overlapping_.end());
    overlapping_ = {};
}

} // namespace quarl
