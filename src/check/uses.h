// Codes that are used before their dictionary has them.
#pragma once

#include "check/rule.h"

#include <functional>
#include <map>
#include <string>
#include <tuple>

namespace quarl
{

class CodeUses
{
public:
    using MakeSubject = std::function<Subject()>;

    /// Looks at the codes in an item that was added to the inventory. `subject` names it.
    void see(const Item &item, const Inventory &inventory, const MakeSubject &subject);
    /// Uses so far whose codes were not defined.
    [[nodiscard]] std::int64_t count() const { return count_; }
    /// Uses whose codes were not defined yet: one for each code and blockette type that uses it.
    [[nodiscard]] std::vector<PendingUse> take() const;

private:
    void use(const Item &item, Dictionary dictionary, int code, const Inventory &inventory,
             const MakeSubject &subject);

    std::map<std::tuple<Dictionary, int, int>, PendingUse> pending_;
    std::int64_t count_ = 0;
};

} // namespace quarl
