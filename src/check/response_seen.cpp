#include "check/response_seen.h"

#include "response/kind.h"

#include <algorithm>

namespace quarl
{

namespace
{

bool has_filter(const StageSeen &stage) { return !stage.filters.empty(); }

/// What a stage holds beside its filters, which go to `filters`.
void add_parts(const Stage &stage, StageSeen *seen, std::vector<FilterPtr> *filters)
{
    for (const Part &part : stage.parts) {
        if (const auto *filter = std::get_if<FilterPtr>(&part))
            filters->push_back(*filter);
        else if (const auto *decimation = std::get_if<Decimation>(&part))
            seen->decimation = *decimation;
        else if (const auto *gain = std::get_if<Gain>(&part))
            seen->gain = *gain;
    }
}

/// The stages in order of numbers.
void put_in_order(const Response &response, std::vector<const Stage *> *order)
{
    const auto lower = [](const Stage *a, const Stage *b) { return a->number < b->number; };
    order->clear();
    for (const StagePtr &stage : response.stages)
        order->push_back(stage.get());
    if (!std::is_sorted(order->begin(), order->end(), lower))
        std::stable_sort(order->begin(), order->end(), lower);
}

std::size_t count_filters(const std::vector<const Stage *> &stages)
{
    std::size_t count = 0;
    for (const Stage *stage : stages)
        count += stage->parts.size();
    return count;
}

} // namespace

bool StageSeen::is_digital() const
{
    return std::any_of(filters.begin(), filters.end(), [](const FilterPtr &filter) {
        return quarl::is_digital(kind_of(filter->shape()));
    });
}

ResponseSeen::ResponseSeen(const Inventory &described_in, const ChannelEpoch &described,
                           ResponseRoom *room)
    : inventory(described_in), epoch(described),
      code(inventory.channel_of(described).code.channel())
{
    put_in_order(described.response, &room->order);
    room->stages.clear();
    room->filters.clear();
    room->filters.reserve(count_filters(room->order)); // spans of it are handed out
    for (const Stage *stage : room->order) {
        const bool is_new = room->stages.empty() || room->stages.back().number != stage->number;
        if (stage->number != 0 && is_new)
            room->stages.push_back({stage->number, {}, {}, {}});
        StageSeen &seen = stage->number == 0 ? whole : room->stages.back();
        const FilterPtr *end = room->filters.data() + room->filters.size();
        const FilterPtr *begin = seen.filters.empty() ? end : seen.filters.data();
        add_parts(*stage, &seen, &room->filters);
        seen.filters = {begin, room->filters.data() + room->filters.size()};
    }
    stages = room->stages;
}

const StageSeen *ResponseSeen::first_filter() const
{
    const auto found = std::find_if(stages.begin(), stages.end(), has_filter);
    return found == stages.end() ? nullptr : &*found;
}

const StageSeen *ResponseSeen::last_filter() const
{
    const auto found = std::find_if(stages.rbegin(), stages.rend(), has_filter);
    return found == stages.rend() ? nullptr : &*found;
}

bool ResponseSeen::has_polynomial() const
{
    return std::any_of(stages.begin(), stages.end(),
                       [](const StageSeen &stage) { return stage.shape<Polynomial>() != nullptr; });
}

} // namespace quarl
