// The filter blockettes of a stage, joined.
#include "platform/format.h"
#include "response/kind.h"
#include <quarl/response.h>

#include <algorithm>

namespace quarl
{

namespace
{

/// Counts of coefficients, as of entries, have four digits.
constexpr std::size_t Longest = 9999;

void append(const Coefficients &from, std::vector<double> *to)
{
    to->insert(to->end(), from.numerators.begin(), from.numerators.end());
}

void append(const Fir &from, std::vector<double> *to)
{
    to->insert(to->end(), from.coefficients.begin(), from.coefficients.end());
}

void append(const ResponseList &from, std::vector<ResponseList::Entry> *to)
{
    to->insert(to->end(), from.entries.begin(), from.entries.end());
}

template <class From, class Entry> void append(const From & /*from*/, std::vector<Entry> * /*to*/)
{
}

template <class Entry> std::vector<Entry> entries_of(const std::vector<FilterPtr> &filters)
{
    std::vector<Entry> all;
    for (const FilterPtr &filter : filters)
        std::visit([&all](const auto &shape) { append(shape, &all); }, filter->shape());
    return all;
}

/// Of filters of one kind. FIR filters given in full are alike in both shapes that they have.
FilterPtr join(const std::vector<FilterPtr> &filters, Kind kind)
{
    FilterShape shape;
    if (kind == Kind::List)
        shape = ResponseList{entries_of<ResponseList::Entry>(filters)};
    else
        shape = Fir{kind == Kind::OddFir    ? 'B'
                    : kind == Kind::EvenFir ? 'C'
                                            : 'A',
                    entries_of<double>(filters)};
    const Filter &first = *filters.front();
    return std::make_shared<const Filter>(std::move(shape), first.input(), filters.back()->output(),
                                          first.name());
}

const FilterPtr *filter_of(const Part &part)
{
    const auto *filter = std::get_if<FilterPtr>(&part);
    return filter && !std::holds_alternative<GenericResponse>((*filter)->shape()) ? filter
                                                                                  : nullptr;
}

std::vector<FilterPtr> filters_of(const Stage &stage)
{
    std::vector<FilterPtr> filters;
    for (const Part &part : stage.parts)
        if (const FilterPtr *filter = filter_of(part))
            filters.push_back(*filter);
    return filters;
}

/// References may repeat a filter without end.
bool is_too_long(const std::vector<FilterPtr> &filters)
{
    std::size_t size = 0;
    for (const FilterPtr &filter : filters)
        size += size_of(filter->shape());
    return filters.size() > Longest || size > Longest;
}

} // namespace

JoinedFilter joined_filter(const Stage &stage)
{
    const auto first = std::ranges::find_if(stage.parts, filter_of);
    if (first == stage.parts.end())
        return {};
    if (std::none_of(first + 1, stage.parts.end(), filter_of)) // as nearly always
        return {*filter_of(*first), ""};
    const std::vector<FilterPtr> filters = filters_of(stage);
    const Kind kind = kind_of(filters.front()->shape());
    for (const FilterPtr &filter : filters)
        if (kind_of(filter->shape()) != kind)
            return {nullptr, formatted<"stage %d: filters of two kinds: %s, %s">(
                                 stage.number, name_of(kind), name_of(kind_of(filter->shape())))};
    if (!can_be_continued(kind))
        return {nullptr, formatted<"stage %d: %s more than once">(stage.number, name_of(kind))};
    if (is_too_long(filters))
        return {nullptr, formatted<"stage %d: %s of more than %lu %s">(
                             stage.number, name_of(kind), Longest,
                             kind == Kind::List ? "entries" : "coefficients")};
    return {join(filters, kind), "", true};
}

} // namespace quarl
