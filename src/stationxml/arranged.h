// The blockettes of a response, arranged as stages of one filter, one decimation and one gain: what
// StationXML has room for, and evaluators want.
#pragma once

#include <optional>
#include <quarl/contents.h>
#include <quarl/inventory.h>
#include <quarl/stationxml.h>
#include <string>
#include <vector>

namespace quarl
{

/// A unit as it can be written: the name is not empty.
struct ShownUnit {
    std::string name;
    std::string description;
};

struct ArrangedStage {
    int number = 0;
    FilterPtr filter; ///< joined of all blockettes that continue each other; may be null
    ShownUnit input;  ///< of the filter
    ShownUnit output;
    std::optional<Decimation> decimation;
    Gain gain = {};
    bool has_gain = false; ///< stated; else `gain` is what stands for none
};

/// A part of a response that cannot be carried over.
struct NotArranged {
    CarryRemark::Severity severity; ///< error: without it the rest would be another response
    std::string text;
};

struct Arranged {
    std::optional<Gain> sensitivity; ///< of stage 0
    FilterPtr polynomial;            ///< of the channel as a whole
    ShownUnit input;                 ///< of the channel as a whole
    ShownUnit output;
    std::vector<ArrangedStage> stages; ///< in ascending order; none when they cannot be told as a
                                       ///< whole
    std::vector<NotArranged> left;
};

/// Arranges the response of an epoch of `inventory`.
Arranged arranged(const Inventory &inventory, const ChannelEpoch &epoch);

/// A polynomial of a stage, as one of the channel as a whole; null when there is no such.
FilterPtr whole_polynomial(const std::vector<ArrangedStage> &stages);

} // namespace quarl
