// The parts of channel epochs' responses while a volume is read.
#pragma once

#include "inventory/dictionaries.h"
#include "inventory/parts.h"

#include <deque>
#include <optional>
#include <quarl/contents.h>
#include <unordered_map>
#include <vector>

namespace quarl
{

/// Collects the parts of one channel epoch after the other and makes its response of them when it
/// ends. The dictionaries that they refer to are complete at the volume's end only: `finish` makes
/// those anew that refer to responses, or all when units were named later or in another way.
class ResponseParts
{
public:
    explicit ResponseParts(const Dictionaries &dictionaries) : dictionaries_(dictionaries) {}

    /// Takes what a blockette of the open epoch says of a stage, and returns the stage's number;
    /// nothing when it says nothing.
    std::optional<int> add(const Item &item);
    /// A stage of it is entry `key` of the response dictionary, says a blockette of this record.
    void refer(int stage, int key, std::int64_t record);
    /// Gives `epoch`, with this index, what was collected. The next one is open.
    void close(std::size_t index, ChannelEpoch *epoch);
    void finish(std::deque<ChannelEpoch> *epochs);

private:
    static constexpr int No_Key = -1;
    struct Raw {
        int stage = 0;
        int key = No_Key;
        Part part; ///< when it is no reference
        std::int64_t record = 0;
    };
    void resolve(const std::vector<Raw> &raw, ChannelEpoch *epoch);
    void resolve(const Raw &reference, ChannelEpoch *epoch);
    [[nodiscard]] Response renamed(const Response &response);
    Part named(const Part &part);

    const Dictionaries &dictionaries_;
    FilterMaker make_{[this](int code) { return dictionaries_.unit(code); }};
    ResponsePool pool_;
    ResponseBuilder builder_{pool_};
    std::vector<Raw> open_;
    bool refers_ = false;                                           ///< the open one
    std::vector<std::pair<std::size_t, std::vector<Raw>>> waiting_; ///< epochs that refer: index
    std::int64_t unit_changes_ = -1;                                ///< before the first part
    std::unordered_map<FilterPtr, FilterPtr> named_;
};

} // namespace quarl
