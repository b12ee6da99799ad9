// The dictionaries of a volume.
#pragma once

#include "inventory/parts.h"

#include <array>
#include <map>
#include <quarl/contents.h>
#include <quarl/item.h>
#include <set>
#include <vector>

namespace quarl
{

class Dictionaries
{
public:
    Dictionaries() = default;
    Dictionaries(const Dictionaries &) = delete;
    Dictionaries &operator=(const Dictionaries &) = delete;

    /// Takes the entry that a dictionary blockette (030 to 034, 041 to 048) defines.
    void add(const Item &item);
    /// Joins what filters have of blockettes, when some of them did not come.
    void finish();
    [[nodiscard]] const DictionaryEntry *find(Dictionary dictionary, int code) const;
    /// The name of a unit; "" when it is not defined.
    [[nodiscard]] std::string unit(int code) const;
    /// How often the names of units have changed, by a definition or another one.
    [[nodiscard]] std::int64_t unit_changes() const { return unit_changes_; }
    [[nodiscard]] const std::vector<Redefinition> &redefinitions() const { return redefinitions_; }

private:
    void define(Dictionary dictionary, int code, DictionaryEntry entry, bool same = true);
    void add_response(const Item &item);
    void continue_with(DictionaryEntry *entry, DictionaryEntry next);

    std::array<std::map<int, DictionaryEntry>, 7> entries_; ///< by dictionary
    std::set<std::pair<Dictionary, int>> redefined_;
    std::vector<Redefinition> redefinitions_;
    std::int64_t unit_changes_ = 0;
    FilterMaker make_{[this](int code) { return unit(code); }};
};

} // namespace quarl
