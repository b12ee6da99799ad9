#include "blockette/flaws.h"

#include <algorithm>
#include <functional>

namespace quarl
{

namespace
{

constexpr auto Earlier = [](const auto &a, const auto &b) {
    return std::less<>()(a.value, b.value);
};

} // namespace

void Flaws::sort() { std::stable_sort(list_.begin(), list_.end(), Earlier); }

Absence Flaws::find(const void *value) const
{
    const auto found = std::lower_bound(list_.begin(), list_.end(), Flaw{value, {}}, Earlier);
    return found != list_.end() && found->value == value ? found->absence : Absence::none;
}

} // namespace quarl
