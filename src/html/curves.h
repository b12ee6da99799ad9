// The responses of a page: evaluated once where they are equal, and their filters told once.
#pragma once

#include "html/drawn.h"
#include "html/sampling.h"
#include "html/stage_filter.h"
#include "html/volume_read.h"
#include "platform/json_writer.h"

#include <cstddef>
#include <limits>
#include <map>
#include <optional>
#include <quarl/response.h>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace quarl::html
{

/// What is stated of a response at one frequency, and what comes out there.
struct Figures {
    double sensitivity = std::numeric_limits<double>::quiet_NaN(); ///< gain of stage 0
    double frequency = std::numeric_limits<double>::quiet_NaN();   ///< its, Hz
    double amplitude = std::numeric_limits<double>::quiet_NaN();   ///< as evaluated there
    std::string unit; ///< "COUNTS per M/S"; empty when the units are not known
};

/// Writes responses one after the other, and remembers what they consist of.
class Curves
{
public:
    explicit Curves(const VolumeRead &volume);

    [[nodiscard]] const Figures &figures_of(std::size_t epoch) const
    {
        return figures_.at(first_of_[epoch]);
    }

    /// The array "responses".
    void write_responses(Json *json);

    // Behind all responses:

    /// The stages of a channel epoch, from 1 on: indexes in the array "stages".
    [[nodiscard]] const std::vector<std::size_t> &stages_of(std::size_t epoch) const
    {
        return stages_of_[first_of_[epoch]];
    }
    void write_stages(Json *json) const;
    void write_filters(Json *json) const;

private:
    /// What decides a filter's curve in a page.
    struct Key {
        StageFilter filter;
        double interval = 0.0;
        double delay = 0.0;
        double scale = 1.0; ///< of the gain that entered H by the one that is stated
        std::optional<double> norm_frequency = std::nullopt;

        bool operator==(const Key &other) const = default;
    };
    struct KeyHash {
        std::size_t operator()(const Key &key) const { return key.filter.hash; }
    };
    /// A filter and its curve, as far as the longest response needs it.
    struct Shown {
        StageFilter filter;
        double from = 0.0; ///< Hz; the curve covers what lies between
        double to = 0.0;
        std::size_t first = 0; ///< of the points
        std::size_t count = 0;
    };
    /// A stage of the response at hand.
    struct Met {
        const Stage *stage;
        std::optional<std::size_t> filter;
        std::optional<std::size_t> curve; ///< of the evaluation, when it is to be kept
        double gain = 1.0;
    };
    /// A stage and the index of its filter.
    using ShownStage = std::pair<const Stage *, std::optional<std::size_t>>;
    void write_response(Json *json, std::size_t epoch);
    void write_new(Json *json, std::size_t epoch);
    std::vector<Met> meet_stages(std::size_t epoch, const Sampled &sampled);
    void meet_filter(Met *met, const StageFilter &filter, const StageCurve *curve,
                     const Sampled &sampled);
    void keep_curves(const std::vector<Met> &met, const Sampled &sampled);
    std::size_t meet_stage(const ShownStage &stage);
    void write_stage(Json *json, const ShownStage &shown) const;

    const VolumeRead &volume_;
    Sampler sampler_;
    std::unordered_map<Key, std::size_t, KeyHash> filter_by_key_;
    std::vector<Shown> filters_;
    std::vector<DrawnPoint> points_; ///< of all filters
    std::map<ShownStage, std::size_t> stage_index_;
    std::vector<ShownStage> stages_;
    std::vector<std::size_t> first_of_; ///< by epoch: the one that has the same response
    std::vector<std::vector<std::size_t>> stages_of_;     ///< by epoch, of the first ones
    std::unordered_map<std::size_t, std::string> errors_; ///< by epoch
    std::unordered_map<std::size_t, Figures> figures_;    ///< by epoch, of the first ones
};

} // namespace quarl::html
