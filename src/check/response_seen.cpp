#include "check/response_seen.h"

#include "check/rule.h"
#include "response/kind.h"

#include <algorithm>
#include <map>

namespace quarl
{

namespace
{

void add_part(StageSeen *stage, const Part &part)
{
    if (const auto *filter = std::get_if<FilterPtr>(&part))
        stage->filters.push_back(*filter);
    else if (const auto *decimation = std::get_if<Decimation>(&part))
        stage->decimation = *decimation;
    else if (const auto *gain = std::get_if<Gain>(&part))
        stage->gain = *gain;
}

bool has_filter(const StageSeen &stage) { return !stage.filters.empty(); }

} // namespace

bool StageSeen::is_digital() const
{
    return std::any_of(filters.begin(), filters.end(), [](const FilterPtr &filter) {
        return quarl::is_digital(kind_of(filter->shape()));
    });
}

ResponseSeen::ResponseSeen(const Inventory &inventory, const ChannelEpoch &described)
    : epoch(described), code(inventory.channel_of(described).code.channel()),
      channel(inventory.channel_of(described).code.text()),
      subject(subject_of(inventory, described))
{
    std::map<int, StageSeen> by_number;
    for (const StagePtr &stage : described.response.stages) {
        StageSeen &seen = stage->number == 0 ? whole : by_number[stage->number];
        seen.number = stage->number;
        for (const Part &part : stage->parts)
            add_part(&seen, part);
    }
    for (auto &[number, stage] : by_number)
        stages.push_back(std::move(stage));
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
