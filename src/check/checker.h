// Checks a volume while it is read: what rules find in its records, items and inventory.
#pragma once

#include "blockette/record_header.h"
#include "check/response_seen.h"
#include "check/uses.h"

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <tuple>
#include <vector>

namespace quarl
{

/// Which rules are asked, by their index.
using Chosen = std::vector<bool>;

/// One volume. Hears what its reading tells, in this order: messages and logical records, then the
/// item that they came with.
class Checker
{
public:
    /// With `keeps_responses` the inventory has all of them in the end.
    explicit Checker(const Chosen &chosen, bool keeps_responses = false);

    void hear(const Message &message);
    void enter(const LogicalRecord &record);
    void pass_over(const PassedOver &passed);
    void add(const Item &item);
    /// What was found; the checker is ready for another volume. `inventory` gets that of this one,
    /// finished.
    std::vector<Finding> take(Inventory *inventory = nullptr);

private:
    template <class T> struct Asked {
        Look<T> look;
        Report report;
    };
    template <class... T> using Tables = std::tuple<std::vector<Asked<T>>...>;

    void begin();
    void ask(const Check &check, std::size_t rule);
    template <class T> void add(Look<T> function, std::size_t rule);
    template <class T> void look(const T &at) const
    {
        for (const Asked<T> &asked : std::get<std::vector<Asked<T>>>(asked_))
            asked.look(*context_, at, asked.report);
    }
    void add_data(const Item &item, const blk_dh_t &header);
    void add_control(const Item &item);
    void note_units(const ChannelEpoch &epoch);
    void look_at_epoch(const ChannelEpoch &epoch);
    void end_epoch();
    [[nodiscard]] Subject subject(const Item &item) const;
    void lose(std::int64_t record, int number, bool breaks);
    void tell_pending();
    bool is_copy(const Item &item);
    void note_mark(const LogicalRecord &record);
    void break_epoch(std::int64_t record);
    void place(const Item &item);
    void note_item(const Item &item);

    Chosen chosen_;
    bool keeps_responses_;
    Findings findings_;
    Tables<NoRecords, Marked, LogicalRecord, PassedOver, Item, DataSeen, Station, Channel,
           ChannelEpoch, StagesSeen, ResponseSeen, DataChannel, Context>
        asked_;
    std::unique_ptr<Context> context_;
    CodeUses uses_;
    std::int64_t uses_before_ = 0; ///< in front of the open channel epoch
    bool refers_ = false;          ///< the open one, to the response dictionary
    bool is_open_ = false;         ///< there is one
    bool is_broken_ = false;       ///< the open one lacks some of its blockettes
    Attachment attachment_;
    std::optional<LogicalRecord> marked_; ///< as its first item will tell, wrongly
    std::optional<PassedOver> broken_;    ///< in a blank record: is told unless that one is
    std::int64_t copy_ = 0;               ///< record that has the number of the one before
    std::set<std::pair<std::size_t, std::size_t>> read_; ///< hashes of the items of the last record
    std::set<std::pair<std::size_t, std::size_t>> read_before_; ///< of the one before
    bool any_record_ = false;
    HeaderLook last_look_ = HeaderLook::sound; ///< of the record that was entered last
    NoRecords input_;
    std::int64_t placed_in_ = 0;                 ///< record of the items that are numbered
    std::map<int, int> types_placed_;            ///< by type, how many there were of them
    std::vector<const ChannelEpoch *> deferred_; ///< until all dictionaries are there
    ResponseRoom room_;
    Evaluator evaluator_{{}};
    SeriesEnds series_;
};

} // namespace quarl
