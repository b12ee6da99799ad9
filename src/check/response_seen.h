// The response of a channel epoch, as rules look at it.
#pragma once

#include <optional>
#include <quarl/inventory.h>
#include <quarl/response.h>
#include <string>
#include <string_view>
#include <vector>

namespace quarl
{

/// All that a response says of one stage, wherever it stands.
struct StageSeen {
    int number = 0;
    std::vector<FilterPtr> filters;
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

/// The response of a channel epoch that is to have one: no log or state of health.
struct ResponseSeen {
    ResponseSeen(const Inventory &inventory, const ChannelEpoch &described);

    const ChannelEpoch &epoch;
    std::string_view code;         ///< of the channel, three letters
    std::string channel;           ///< "IU_ANMO_00_BHZ"
    std::string subject;           ///< the same with the start of the epoch
    StageSeen whole;               ///< stage 0
    std::vector<StageSeen> stages; ///< from 1 on, in order of numbers

    [[nodiscard]] const StageSeen *first_filter() const;
    [[nodiscard]] const StageSeen *last_filter() const;
    [[nodiscard]] bool has_polynomial() const; ///< in a stage from 1 on
};

std::string upper(std::string_view text);

/// Kind of quantity that a seismometer takes; upper and lower case alike, any power of ten.
bool is_velocity(std::string_view unit);
bool is_acceleration(std::string_view unit);
bool is_counts(std::string_view unit);
/// Of the standard or the SI, prefixes included, or composed of such units.
bool is_known_unit(std::string_view unit);

} // namespace quarl
