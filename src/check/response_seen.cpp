#include "check/response_seen.h"

#include "response/kind.h"

#include <algorithm>
#include <limits>

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
            seen->decimation = *decimation, ++seen->decimations;
        else if (const auto *gain = std::get_if<Gain>(&part))
            seen->gain = *gain, ++seen->gains;
    }
}

/// Notes of stages whether they come again behind a higher one, or behind stage 0.
void find_repeated(const Response &response, std::vector<StageSeen> *stages, StageSeen *whole)
{
    int highest = 0;
    bool past_whole = false;
    const auto numbered = [&](int number) {
        return std::lower_bound(
            stages->begin(), stages->end(), number,
            [](const StageSeen &stage, int wanted) { return stage.number < wanted; });
    };
    std::vector<bool> met(stages->size());
    for (const StagePtr &stage : response.stages) {
        if (stage->number == 0) {
            whole->comes_again |= past_whole;
            past_whole = true;
            continue;
        }
        const auto seen = numbered(stage->number);
        const auto index = static_cast<std::size_t>(seen - stages->begin());
        seen->comes_again |= met[index] && (past_whole || stage->number < highest);
        met[index] = true;
        highest = std::max(highest, stage->number);
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

std::string listed(const std::vector<int> &stages, std::size_t count)
{
    std::string text = count == 1 ? "stage " : "stages ";
    for (std::size_t i = 0; i < stages.size(); ++i)
        text += (i == 0 ? "" : i + 1 == count ? " and " : ", ") + std::to_string(stages[i]);
    return count > stages.size() ? text + " and " + std::to_string(count - stages.size()) + " more"
                                 : text;
}

bool is_repeated(const StageSeen &stage)
{
    return stage.comes_again || stage.decimations > 1 || stage.gains > 1 ||
           (stage.filters.size() > 1 && count_filters(stage) > 1);
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
            room->stages.emplace_back().number = stage->number;
        StageSeen &seen = stage->number == 0 ? whole : room->stages.back();
        const FilterPtr *end = room->filters.data() + room->filters.size();
        const FilterPtr *begin = seen.filters.empty() ? end : seen.filters.data();
        add_parts(*stage, &seen, &room->filters);
        seen.filters = {begin, room->filters.data() + room->filters.size()};
    }
    find_repeated(described.response, &room->stages, &whole);
    stages = room->stages;
}

void StageFaults::add(const StageSeen &stage, std::string fault)
{
    constexpr std::size_t Told = 3;
    if (fault.empty())
        return;
    const auto known = std::find_if(kinds_.begin(), kinds_.end(),
                                    [&](const Kind &kind) { return kind.fault == fault; });
    if (known == kinds_.end()) {
        if (kinds_.size() < Told)
            kinds_.push_back({std::move(fault), {stage.number}, 1});
        else
            ++more_;
        return;
    }
    ++known->count;
    if (known->stages.size() < Told)
        known->stages.push_back(stage.number);
}

std::string StageFaults::text() const
{
    std::string all;
    for (const Kind &kind : kinds_)
        all += (all.empty() ? "" : "; ") + listed(kind.stages, kind.count) + ": " + kind.fault;
    if (more_ > 0)
        all += "; and so " + std::to_string(more_) + " more stage" + (more_ == 1 ? "" : "s");
    return all;
}

FilterPtr one_filter(const StageSeen &stage)
{
    if (stage.filters.size() == 1)
        return stage.filters.front();
    return joined_filter({stage.number, {stage.filters.begin(), stage.filters.end()}}).filter;
}

std::size_t count_filters(const StageSeen &stage)
{
    std::size_t count = 0;
    const Filter *before = nullptr;
    for (const FilterPtr &filter : stage.filters) {
        const Kind kind = kind_of(filter->shape());
        const bool goes_on = before && can_be_continued(kind) && kind_of(before->shape()) == kind;
        count += goes_on ? 0 : 1;
        before = filter.get();
    }
    return count;
}

bool ResponseSeen::has_repeated() const
{
    return is_repeated(whole) || std::any_of(stages.begin(), stages.end(), is_repeated);
}

bool is_of_motion(std::string_view code)
{
    return code.size() == 3 && std::string_view("HLNGPJ").find(code[1]) != std::string_view::npos;
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
