// A rule: its name, how bad it is to break it, its sentence, and the function that looks.
#pragma once

#include "check/finding.h"
#include "check/series_ends.h"
#include "platform/format.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <quarl/inventory.h>
#include <quarl/response.h>
#include <quarl/volume.h>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace quarl
{

struct ResponseSeen;

/// A code that an item refers to before its dictionary has it.
struct PendingUse {
    Dictionary dictionary = Dictionary::none;
    int code = 0;
    int type = 0; ///< blockette that uses it
    std::string subject;
    std::int64_t record = 0;
    std::int64_t count = 0;
};

/// What rules may look at.
struct Context {
    Inventory inventory;
    bool has_headers = false;       ///< a control blockette or header record was met
    std::int64_t control_items = 0; ///< before the one at hand
    std::int64_t identifiers = 0;   ///< blockettes 005, 008, 010 before the one at hand
    int last_station_item = 0;      ///< 50 or 52, whatever came last; 0 before
    LogicalRecord before;           ///< the logical record before the current one
    bool has_before = false;
    std::vector<std::string> complaints; ///< of the reading about the item at hand
    bool formats_differ = false;         ///< the reading says so of the data record at hand
    std::vector<PendingUse> uses;
    std::map<int, const ChannelEpoch *> unit_users; ///< the first of each unit, in the end
    std::vector<SeriesSeen> series;                 ///< in the end
    Evaluator *evaluator = nullptr;
};

/// One data record.
struct DataSeen {
    const blk_dh_t &header;
    std::int64_t record;
    const DataChannel &channel;
    const ChannelEpoch *epoch; ///< that describes it; null when there is none
};

/// Where a rule says what it found.
class Report
{
public:
    Report(Findings *findings, std::size_t rule) : findings_(findings), rule_(rule) {}

    /// A finding at a logical record; `make` gives what is told, for the first of each `group`.
    template <class Make>
    void operator()(std::int64_t record, std::string_view group, Make &&make) const
    {
        findings_->add(rule_, record, group, std::forward<Make>(make));
    }
    /// One that is a group of its own.
    void operator()(std::int64_t record, std::string subject, std::string text) const
    {
        const std::string group = subject + '\n' + text;
        (*this)(record, group, [&] { return Told{std::move(subject), std::move(text)}; });
    }

    /// One that stands for `more` further ones as well.
    void counted(std::int64_t record, std::string subject, std::string text,
                 std::int64_t more) const
    {
        const std::string group = subject + '\n' + text;
        const auto make = [&] { return Told{std::move(subject), std::move(text)}; };
        findings_->add(rule_, record, group, make, more);
    }

private:
    Findings *findings_;
    std::size_t rule_;
};

/// A function that looks at one T.
template <class T> using Look = void (*)(const Context &, const T &, const Report &);

/// What a rule is asked about.
using Check = std::variant<std::monostate, Look<LogicalRecord>, Look<Item>, Look<DataSeen>,
                           Look<Station>, Look<Channel>, Look<ChannelEpoch>, Look<ResponseSeen>,
                           Look<DataChannel>, Look<Context>>;

struct Rule {
    std::string_view name;
    Severity severity;
    std::string_view sentence; ///< holds when ...
    std::string_view more;     ///< what further findings of a group are called: "records"
    Check check;
    Check other = {}; ///< a second thing to look at
};

/// Every rule, in the order in which they are listed: one table, in parts that stand behind the
/// functions that they name.
std::span<const Rule> volume_rules();
std::span<const Rule> index_rules();
std::span<const Rule> header_rules();
std::span<const Rule> epoch_rules();
std::span<const Rule> stage_rules();
std::span<const Rule> gain_rules();
std::span<const Rule> data_rules();
const std::vector<Rule> &all_rules();

/// What a finding says, with the number of further ones: "...; and 3 more records".
std::string text_of(const Finding &finding);

// How values are put in findings.
std::string shown(double value); ///< the shortest text of up to nine digits
std::string shown_time(double time);
std::string quoted(std::string_view text); ///< 'TEXT', control characters as \xHH
/// "IU_ANMO_00_BHZ 2018,191", or without a start the code alone.
std::string subject_of(const Inventory &inventory, const ChannelEpoch &epoch);

/// Kilometres between two positions in degrees, on a sphere of the Earth's size.
double distance(double latitude, double longitude, double other_latitude, double other_longitude);

/// Log and state-of-health channels: what they hold has no response.
bool is_log(const Inventory &inventory, const ChannelEpoch &epoch);

} // namespace quarl
