// The statements of a volume, as rows of the sources.
#pragma once

#include "archive/calibration.h"
#include "archive/merge.h"
#include "inventory/selection.h"

#include <array>
#include <deque>
#include <map>
#include <quarl/inventory.h>
#include <set>
#include <string>
#include <variant>
#include <vector>

namespace quarl::archive
{

/// Origins and arrivals, in volume order.
struct EventItems {
    void add(const Item &item);

    std::deque<std::variant<blk_071_t, blk_072_t>> all;
};

/// Each statement once: where a volume contradicts itself, the last one counts.
class StatementRows
{
public:
    explicit StatementRows(const ChannelSelection &selection) : selection_(selection) {}

    /// `names` are the full names of the channel epochs.
    void add(const Inventory &inventory, const std::vector<std::string> &names);
    void add(const Inventory &inventory, const EventItems &events);
    void take(VolumeRows *rows);

    [[nodiscard]] std::size_t count(Statement statement) const
    {
        return kept_[static_cast<std::size_t>(statement)].size();
    }
    [[nodiscard]] std::size_t stations() const { return stations_.size(); }
    [[nodiscard]] std::size_t channels() const { return channels_.size(); }

private:
    void add_station(const Inventory &inventory, const StationEpoch &epoch);
    void add_channel(const Inventory &inventory, const ChannelEpoch &epoch,
                     const std::string &name);
    std::string add_instrument(const Inventory &inventory, const ChannelEpoch &epoch,
                               const Calibration &calibration);
    void add_comment(const Inventory &inventory, const ChannelCode &code, const Comment &comment);
    std::string add_origin(const Inventory &inventory, const blk_071_t &origin);
    void add_arrival(const Inventory &inventory, const blk_072_t &arrival,
                     const std::string &place);
    std::string keep(Statement statement, std::string key, const RowText &row);
    RowText &cut(RowText &row, std::string_view text, Statement statement, std::string_view column);
    void tell_cuts(const std::string &subject);

    const ChannelSelection &selection_;
    StageDigests digests_;
    struct Kept {
        std::size_t number = 0; ///< in order of volumes
        std::string values;
    };
    std::array<std::map<std::string, Kept>, Statements> kept_; ///< by key
    std::size_t number_ = 0;
    std::set<ChannelCode> stations_;
    std::set<ChannelCode> channels_;
    std::vector<std::string> cuts_;
    std::set<std::string> told_;
};

} // namespace quarl::archive
