// Fields of which the volume does not hold a value.
#pragma once

#include <cstddef>
#include <quarl/fields.h>
#include <vector>

namespace quarl
{

/// The flawed fields of one item, by the places of their values in the record. Nearly always none.
class Flaws
{
public:
    void clear()
    {
        list_.clear();
        cut = bad = false;
    }
    void add(const void *value, Absence absence)
    {
        list_.push_back({value, absence});
        bad |= absence == Absence::unreadable;
    }
    /// What was just said of the field at `from` goes for the one at `to`, too.
    void repeat(const void *from, const void *to)
    {
        if (!list_.empty() && list_.back().value == from)
            list_.push_back({to, list_.back().absence});
    }
    [[nodiscard]] bool empty() const { return list_.empty(); }
    /// What is said of the field whose value stands at `value`; of several things the first.
    [[nodiscard]] Absence find(const void *value) const;
    /// Nothing is added any more: makes find quick.
    void sort();

    bool cut = false; ///< the item's bytes end before its fields do
    bool bad = false; ///< a field is unreadable

private:
    struct Flaw {
        const void *value;
        Absence absence;
    };
    std::vector<Flaw> list_;
};

} // namespace quarl
