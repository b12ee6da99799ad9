// What a check finds: collected, told once where it is systematic, in order of records.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quarl
{

enum class Severity { error, warning, note };

std::string_view name_of(Severity severity);

/// What a finding is about and what it says.
struct Told {
    std::string subject; ///< "IU_ANMO_00_BHZ 2018,191", "blockette 052", "volume"
    std::string text;    ///< both values that disagree, with units, and what was expected
};

struct Finding {
    std::size_t rule = 0;    ///< index among the rules
    std::int64_t record = 0; ///< logical record, from 1; 0: the volume as a whole
    Told told;
    std::int64_t more = 0; ///< further ones of its kind that are not told
};

/// The findings of one volume. Those of a rule that belong to one group (a channel, a code) are
/// told once and counted.
class Findings
{
public:
    /// `make` gives what is told: it is called when this is the first of its group, in order of
    /// records. It stands for `more` further ones.
    template <class Make>
    void add(std::size_t rule, std::int64_t record, std::string_view group, Make &&make,
             std::int64_t more = 0)
    {
        Finding *known = find(rule, group);
        if (!known)
            keep(rule, group, {rule, record, std::forward<Make>(make)(), more});
        else if (record < known->record)
            *known = {rule, record, std::forward<Make>(make)(), known->more + more + 1};
        else
            known->more += more + 1;
    }

    /// All of them in order of records; there are none left.
    std::vector<Finding> take();

private:
    Finding *find(std::size_t rule, std::string_view group);
    void keep(std::size_t rule, std::string_view group, Finding finding);

    using Groups = std::map<std::string, std::size_t, std::less<>>;
    std::vector<Groups> groups_; ///< by rule: index of the finding
    std::vector<Finding> findings_;
};

} // namespace quarl
