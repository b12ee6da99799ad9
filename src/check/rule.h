// A rule: its name, how bad it is to break it, its sentence, and the function that looks.
#pragma once

#include "check/damage.h"
#include "check/finding.h"
#include "check/series_ends.h"
#include "platform/format.h"

#include <array>
#include <complex>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <quarl/inventory.h>
#include <quarl/options.h>
#include <quarl/response.h>
#include <quarl/volume.h>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace quarl
{

struct ResponseSeen;
struct StagesSeen;

/// A code that an item refers to before its dictionary has it.
struct PendingUse {
    Dictionary dictionary = Dictionary::none;
    int code = 0;
    int type = 0; ///< blockette that uses it
    Subject subject;
    std::int64_t record = 0;
    std::int64_t count = 0;
};

/// What rules may look at.
struct Context {
    Inventory inventory;
    bool has_headers = false;       ///< a readable control blockette of 010 to 062 was met
    std::int64_t control_items = 0; ///< before the one at hand
    std::int64_t identifiers = 0;   ///< blockettes 005, 008, 010 before the one at hand
    int last_station_item = 0;      ///< 50 or 52, whatever came last; 0 before
    LogicalRecord before;           ///< the logical record before the current one
    bool has_before = false;
    std::vector<std::string> complaints; ///< of the reading about the item at hand
    /// Codes of the station or channel that the item at hand describes, or "".
    std::function<std::string()> describes;
    int number_in_record = 0; ///< of the item at hand among those of its type, from 1
    RecordOrder order;
    bool in_step = true;                           ///< a blockette was read behind the last damage
    std::set<const ChannelEpoch *> damaged;        ///< that lack some of their blockettes
    std::map<std::int64_t, std::int64_t> left_out; ///< how many, by record of the damage
    bool cut = false;                              ///< the input ends inside a record or blockette
    bool formats_differ = false; ///< the reading says so of the data record at hand
    bool numbers_lost = false;   ///< records have no number, or no type, that could be read
    bool headers_lost = false;   ///< stations or channels may be missing that the volume described
    std::vector<PendingUse> uses;
    std::map<int, const ChannelEpoch *> unit_users; ///< the first of each unit, in the end
    std::vector<SeriesSeen> series;                 ///< in the end
    Evaluator *evaluator = nullptr;
};

/// A record that is marked "*" where nothing goes on, or not where something does.
struct Marked {
    const LogicalRecord &record;
};

/// An input without any logical record of SEED.
struct NoRecords {
    bool is_empty = true;
    bool is_whole = true;        ///< what there is was read to its end
    std::array<char, 8> begin{}; ///< its first bytes
};

/// One data record.
struct DataSeen {
    const Item &item;
    const blk_dh_t &header;
    std::int64_t record;
    const DataChannel &channel;
    const ChannelEpoch *epoch;      ///< that describes it; null when there is none
    double rate;                    ///< samples per second, Blockette 100's where there is one
    std::optional<DataTimes> times; ///< those of Blockette 1001
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
    void operator()(std::int64_t record, Subject subject, std::string text) const
    {
        counted(record, std::move(subject), std::move(text), 0);
    }

    /// One that stands for `more` further ones as well.
    void counted(std::int64_t record, Subject subject, std::string text, std::int64_t more) const
    {
        counted(record, Told{std::move(subject), std::move(text)}, more);
    }
    void counted(std::int64_t record, Told told, std::int64_t more) const
    {
        const std::string group = text_of(told.subject, record) + '\n' + told.text;
        findings_->add(
            rule_, record, group, [&] { return std::move(told); }, more);
    }

private:
    Findings *findings_;
    std::size_t rule_;
};

/// A function that looks at one T.
template <class T> using Look = void (*)(const Context &, const T &, const Report &);

/// What a rule is asked about.
using Check = std::variant<std::monostate, Look<NoRecords>, Look<Marked>, Look<LogicalRecord>,
                           Look<PassedOver>, Look<Item>, Look<DataSeen>, Look<Station>,
                           Look<Channel>, Look<ChannelEpoch>, Look<StagesSeen>, Look<ResponseSeen>,
                           Look<DataChannel>, Look<Context>>;

struct Rule {
    std::string_view name;
    Severity severity;
    std::string_view sentence; ///< holds when ...
    std::string_view more;     ///< what further findings of a group are called: "records"
    Check check;
    Check other = {}; ///< a second thing to look at
    Check third = {};
};

/// Every rule, in the order in which they are listed: one table, in parts that stand behind the
/// functions that they name.
std::span<const Rule> record_rules();
std::span<const Rule> volume_rules();
std::span<const Rule> index_rules();
std::span<const Rule> header_rules();
std::span<const Rule> epoch_rules();
std::span<const Rule> stage_rules();
std::span<const Rule> gain_rules();
std::span<const Rule> data_rules();
std::span<const Rule> time_rules();
const std::vector<Rule> &all_rules();

/// "; 2 channel epochs are not judged": those that lack what was lost at a record.
std::string left_out(const Context &context, std::int64_t record);

/// "unit (034)"
std::string_view name_of(Dictionary dictionary);

/// The minute is one of those that a leap second may end.
bool may_have_leap_second(int year, int day_of_year, int hour, int minute);

/// What a finding says, with the number of further ones: "...; and 3 more records".
std::string text_of(const Finding &finding);
Severity severity_of(const Finding &finding);
/// Sixteen hexadecimal digits that stay when records move: of the rule, the subject and what
/// disagrees.
std::string fingerprint_of(const Finding &finding);

// How values are put in findings.
std::string shown(double value);   ///< as the volume has it: the shortest text
std::string rounded(double value); ///< of what was computed, to seven digits
std::string shown(std::complex<double> value);
std::string duration_text(double seconds); ///< "2.06 s", "1:30:00", "366 d 0:00:00"
std::string shown_time(double time);
std::string quoted(std::string_view text); ///< 'TEXT', control characters as \xHH

about::Epoch subject_of(const Inventory &inventory, const ChannelEpoch &epoch);
about::Station subject_of(const Inventory &inventory, const StationEpoch &epoch);

/// Kilometres between two positions in degrees, on a sphere of the Earth's size.
double distance(double latitude, double longitude, double other_latitude, double other_longitude);

/// Log and state-of-health channels: what they hold has no response.
bool is_log(const Inventory &inventory, const ChannelEpoch &epoch);

} // namespace quarl
