// The dictionaries of a volume.
#pragma once

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
    /// Takes the entry that a dictionary blockette (030 to 034, 041 to 048) defines.
    void add(const Item &item);
    [[nodiscard]] const DictionaryEntry *find(Dictionary dictionary, int code) const;
    /// The name of a unit; "" when it is not defined.
    [[nodiscard]] std::string unit(int code) const;
    [[nodiscard]] const std::vector<Redefinition> &redefinitions() const { return redefinitions_; }

private:
    void define(Dictionary dictionary, int code, DictionaryEntry entry, bool same = true);
    void add_response(const Item &item);

    std::array<std::map<int, DictionaryEntry>, 7> entries_; ///< by dictionary
    std::set<std::pair<Dictionary, int>> redefined_;
    std::vector<Redefinition> redefinitions_;
};

} // namespace quarl
