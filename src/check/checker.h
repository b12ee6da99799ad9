// Checks a volume while it is read: what rules find in its records, items and inventory.
#pragma once

#include "check/response_seen.h"
#include "check/uses.h"

#include <memory>
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
    template <class T> void look(const T &at) const;
    void add_data(const Item &item, const blk_dh_t &header);
    void add_control(const Item &item);
    void note_units(const ChannelEpoch &epoch);
    void look_at_epoch(const ChannelEpoch &epoch);
    void end_epoch();
    [[nodiscard]] std::string subject(const Item &item) const;

    Chosen chosen_;
    bool keeps_responses_;
    Findings findings_;
    Tables<LogicalRecord, Item, DataSeen, Station, Channel, ChannelEpoch, ResponseSeen, DataChannel,
           Context>
        asked_;
    std::unique_ptr<Context> context_;
    CodeUses uses_;
    std::int64_t uses_before_ = 0;               ///< in front of the open channel epoch
    bool refers_ = false;                        ///< the open one, to the response dictionary
    std::vector<const ChannelEpoch *> deferred_; ///< until all dictionaries are there
    ResponseRoom room_;
    Evaluator evaluator_{{}};
    SeriesEnds series_;
};

} // namespace quarl
