// What a page is made of: all that one reading of a volume has left.
#pragma once

#include "check/finding.h"
#include "html/envelope.h"

#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <quarl/inventory.h>
#include <quarl/item.h>
#include <quarl/records.h>
#include <string>
#include <string_view>
#include <tuple>
#include <unordered_map>
#include <utility>
#include <vector>

namespace quarl::html
{

/// The records that tables show field by field, in volume order.
struct Records {
    template <class T> using Kept = std::deque<T>;

    std::optional<blk_010_t> identifier;
    Kept<blk_050_t> stations; ///< one for each station epoch of the inventory
    Kept<blk_052_t> channels; ///< one for each channel epoch
    std::tuple<Kept<blk_030_t>, Kept<blk_031_t>, Kept<blk_032_t>, Kept<blk_033_t>, Kept<blk_034_t>,
               Kept<blk_041_t>, Kept<blk_043_t>, Kept<blk_044_t>, Kept<blk_045_t>, Kept<blk_046_t>,
               Kept<blk_047_t>, Kept<blk_048_t>>
        dictionaries;

    /// What data records say of a channel besides their times: each once, the first few.
    struct Look {
        std::vector<std::string> formats; ///< "Steim-2"
        std::string qualities;            ///< "D"
        std::vector<double> rates;        ///< Hz
    };
    std::map<ChannelCode, Look> looks; ///< by the code that the records have
    // Whether the blockettes give a position; blanks are none.
    std::vector<bool> station_placed;
    std::vector<bool> channel_placed;

    void add(const Item &item);

private:
    void look(const Item &item, const blk_dh_t &header);

    std::pair<const ChannelCode, Look> *last_look_ = nullptr;
};

/// The data of a channel, with those whose headers lack the network code.
struct ChannelData {
    std::int64_t records = 0;
    std::int64_t samples = 0;
    std::vector<DataSpan> spans;
    std::vector<DataOverlap> overlaps;
    Records::Look look;
    std::vector<ChannelCode> codes; ///< of the data records

    void add(const DataChannel &channel, const Records &kept);
    /// Spans and overlaps in order of time, when all were added.
    void put_in_order();
};

/// A channel of the page: those of the headers, in the inventory's order, then those that have
/// data alone.
struct PageChannel {
    ChannelCode code;
    const Channel *described = nullptr; ///< null: no header describes it
    ChannelData data;
};

/// What a finding is about, as far as the page shows it.
struct Target {
    std::optional<std::size_t> station;
    std::optional<std::size_t> channel;
    std::optional<std::size_t> epoch;
};

/// Finds the places of findings' subjects in the page.
class Targets
{
public:
    Targets(const Inventory &inventory, const std::vector<PageChannel> &channels);
    [[nodiscard]] Target find(const Subject &subject) const;

private:
    struct CodeHash {
        std::size_t operator()(const ChannelCode &code) const { return code.hash(); }
    };

    const Inventory &inventory_;
    const std::vector<PageChannel> &channels_;
    std::unordered_map<ChannelCode, std::size_t, CodeHash> stations_;
    std::unordered_map<ChannelCode, std::size_t, CodeHash> by_code_; ///< channels of the page
};

/// What the reading hands over.
struct VolumeRead {
    std::string name; ///< of the input, as it was given
    Inventory inventory;
    std::vector<Finding> findings;
    Records records;
    Envelopes envelopes;
    Statistics statistics;
    bool complete = false; ///< read to its end, which is where it should be
    bool cut = false;      ///< in the middle of something
    std::string program;   ///< "quarl-html 1.0.0"
};

/// Bytes of a logical record: as the volume states it, else as they were read; 0: not known.
std::int64_t record_length(const VolumeRead &volume);
/// Those that occurred, largest first.
std::vector<Statistics::Type> types_by_size(const Statistics &statistics);
/// "Station Identifier", "data records"; "" for a type that the catalogue lacks.
std::string_view name_of(const Statistics::Type &type);

/// The channels of a volume with their data.
std::vector<PageChannel> page_channels(const VolumeRead &volume);

/// Bytes of the input by what they were read as: their sum is that of the input.
struct Shares {
    std::int64_t parameters = 0;
    std::int64_t data = 0;
    std::int64_t waste = 0;
};
Shares shares_of(const Statistics &statistics);

/// Nothing of a volume was found in the input.
bool holds_nothing(const VolumeRead &volume);

} // namespace quarl::html
