#include "html/stage_filter.h"

#include "response/kind.h"

#include <algorithm>
#include <quarl/response.h>
#include <vector>

namespace quarl::html
{

namespace
{

/// The filter of a part; null when it is none.
const Filter *filter_of(const Part &part)
{
    const auto *filter = std::get_if<FilterPtr>(&part);
    return filter ? filter->get() : nullptr;
}

/// All of a stage but the generic responses.
std::vector<const Filter *> filters_of(const Stage &stage)
{
    std::vector<const Filter *> filters;
    for (const Part &part : stage.parts)
        if (const Filter *filter = filter_of(part);
            filter && !std::holds_alternative<GenericResponse>(filter->shape()))
            filters.push_back(filter);
    return filters;
}

bool is_equal(const Filter *a, const Filter *b) { return a == b || *a == *b; }

StageFilter one(const Filter &filter)
{
    const FilterShape &shape = filter.shape();
    return {&filter,       &filter, nullptr, filter.hash(), shape.index(), type_letter(shape),
            size_of(shape)};
}

} // namespace

bool StageFilter::operator==(const StageFilter &other) const
{
    if (hash != other.hash)
        return false;
    if (!joined || !other.joined)
        return joined == other.joined && is_equal(first, other.first);
    return joined == other.joined ||
           std::ranges::equal(filters_of(*joined), filters_of(*other.joined), is_equal);
}

std::optional<StageFilter> stage_filter(const Stage &stage, const FilterPtr &evaluated)
{
    constexpr std::size_t Odd = 0x9E3779B97F4A7C15;
    const FilterPtr whole = evaluated ? evaluated : joined_filter(stage).filter;
    if (!whole) {
        const auto first = std::ranges::find_if(stage.parts, filter_of);
        return first == stage.parts.end() ? std::nullopt : std::optional(one(*filter_of(*first)));
    }
    std::optional<StageFilter> found;
    for (const Filter *filter : filters_of(stage)) {
        if (!found) {
            found = one(*filter);
            continue;
        }
        found->last = filter;
        found->joined = &stage;
        found->hash = (found->hash ^ filter->hash()) * Odd;
    }
    if (found && found->joined) {
        found->kind = whole->shape().index();
        found->type = type_letter(whole->shape());
        found->size = size_of(whole->shape());
    }
    return found;
}

} // namespace quarl::html
