// The filters of stages as a page tells of them.
#pragma once

#include <quarl/stages.h>

#include <cstddef>
#include <optional>

namespace quarl::html
{

/// The filter of a stage: one blockette's, or several that are joined. What is joined is not kept,
/// since references repeat a filter in a few bytes. Refers to the stage, which has to stay.
struct StageFilter {
    const Filter *first;  ///< or the only one
    const Filter *last;   ///< the same, unless several are joined
    const Stage *joined;  ///< that whose filters are joined; null: there is one filter
    std::size_t hash;     ///< of its contents
    std::size_t kind;     ///< index of its shape
    char type;            ///< the letter of its shape
    std::size_t size = 0; ///< its coefficients, poles and zeros, or entries

    bool operator==(const StageFilter &other) const; ///< contents count
};

/// That of a stage, also one that is passed over, or the first of several that cannot be joined;
/// `evaluated` is the one that was evaluated, or null.
std::optional<StageFilter> stage_filter(const Stage &stage, const FilterPtr &evaluated);

} // namespace quarl::html
