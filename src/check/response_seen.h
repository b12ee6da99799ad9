// The response of a channel epoch, as rules look at it.
#pragma once

#include "check/rule.h"

#include <optional>
#include <quarl/inventory.h>
#include <quarl/response.h>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quarl
{

/// All that a response says of one stage, wherever it stands.
struct StageSeen {
    int number = 0;
    std::span<const FilterPtr> filters;
    std::optional<Decimation> decimation; ///< the last one
    std::optional<Gain> gain;             ///< the last one

    [[nodiscard]] bool is_digital() const;
    template <class Shape> [[nodiscard]] const Shape *shape() const
    {
        for (const FilterPtr &filter : filters)
            if (const auto *found = std::get_if<Shape>(&filter->shape()))
                return found;
        return nullptr;
    }
};

/// Where the parts of a response are put in order; room for one after the other.
struct ResponseRoom {
    std::vector<const Stage *> order;
    std::vector<FilterPtr> filters;
    std::vector<StageSeen> stages;
};

/// The response of a channel epoch that is to have one: no log or state of health. Lives as long as
/// its room is not used for another one.
struct ResponseSeen {
    ResponseSeen(const Inventory &described_in, const ChannelEpoch &described, ResponseRoom *room);

    const Inventory &inventory;
    const ChannelEpoch &epoch;
    std::string_view code;             ///< of the channel, three letters
    StageSeen whole;                   ///< stage 0
    std::span<const StageSeen> stages; ///< from 1 on, in order of numbers

    [[nodiscard]] const StageSeen *first_filter() const;
    [[nodiscard]] const StageSeen *last_filter() const;
    [[nodiscard]] bool has_polynomial() const; ///< in a stage from 1 on

    /// A finding about the epoch, one of those of its channel; `text` makes what is told.
    template <class Text> void tell(const Report &report, Text &&text) const
    {
        report(epoch.record, inventory.channel_of(epoch).code.text(), [&] {
            return Told{subject_of(inventory, epoch), std::forward<Text>(text)()};
        });
    }
};

/// Kind of quantity that a seismometer takes; upper and lower case alike, any power of ten.
bool is_velocity(std::string_view unit);
bool is_acceleration(std::string_view unit);
bool is_counts(std::string_view unit);
/// Of the standard or the SI, prefixes included, or composed of such units.
bool is_known_unit(std::string_view unit);

} // namespace quarl
