// What a check finds: collected, told once where it is systematic, in order of records.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <quarl/contents.h>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace quarl
{

enum class Severity { error, warning, note };

std::string_view name_of(Severity severity);

/// What a finding may be about. Indexes are those of the inventory.
namespace about
{

struct Volume {
};
/// The logical record at which it is found.
struct Record {
};
/// Of a station, or without one. `number` tells which of its type in the logical record it is, from
/// 1; 0 when it is the only one.
struct Blockette {
    int type = 0;
    int number = 0;
    std::string of = {}; ///< codes of the channel or station that it describes
};
struct Station {
    ChannelCode code;
    double time = Always; ///< start of an epoch
};
struct Channel {
    ChannelCode code;
    std::string time = {}; ///< of data, as text; empty: the channel as a whole
};
struct Epoch {
    ChannelCode code;
    double start = Always;
    std::size_t index = 0; ///< among the channel epochs
    int stage = 0;         ///< the first one concerned; 0: none
};
struct Unit {
    int code = 0;
};

} // namespace about

using Subject = std::variant<about::Volume, about::Record, about::Blockette, about::Station,
                             about::Channel, about::Epoch, about::Unit>;

/// "IU_ANMO_00_BHZ 2018,191", "blockette 052", "volume", "record 7".
std::string text_of(const Subject &subject, std::int64_t record);

/// What a finding is about and what it says.
struct Told {
    Subject subject;
    std::string text; ///< both values that disagree, with units, and what was expected
    /// Findings of a rule with the same kind at several channels of a station are told as one;
    /// empty: those with the same text.
    std::string kind = {};
    /// Another one than the rule's.
    std::optional<Severity> severity = {};
    /// Stands behind the number of further ones: ", the largest of 3 s".
    std::string rest = {};
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

    /// All of them in order of records, those of several channels of a station joined; there are
    /// none left.
    std::vector<Finding> take();

private:
    Finding *find(std::size_t rule, std::string_view group);
    void keep(std::size_t rule, std::string_view group, Finding finding);

    using Groups = std::map<std::string, std::size_t, std::less<>>;
    std::vector<Groups> groups_; ///< by rule: index of the finding
    std::vector<Finding> findings_;
};

} // namespace quarl
