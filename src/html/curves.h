// The responses of a page: evaluated once where they are equal, and their filters told once.
#pragma once

#include "html/drawn.h"
#include "html/stage_filter.h"
#include "html/volume_read.h"
#include "platform/json_writer.h"

#include <cstddef>
#include <map>
#include <optional>
#include <quarl/response.h>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace quarl::html
{

/// The numbers of a grid as they stand in an array of JSON: made once, and written for each
/// response.
class GridText
{
public:
    explicit GridText(std::span<const double> frequencies);
    [[nodiscard]] std::string_view first(std::size_t count) const;

private:
    std::string text_;
    std::vector<std::size_t> ends_; ///< of each number
};

/// Writes responses one after the other, and remembers what they consist of.
class Curves
{
public:
    explicit Curves(const VolumeRead &volume);

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
        std::size_t size = 0;  ///< of the grid that the curve covers
        std::size_t first = 0; ///< of the points
        std::size_t count = 0;
    };
    /// A stage and the index of its filter.
    using ShownStage = std::pair<const Stage *, std::optional<std::size_t>>;
    struct ResponseHash {
        std::size_t operator()(const Response *response) const { return response->hash(); }
    };
    struct SameResponse {
        bool operator()(const Response *a, const Response *b) const { return *a == *b; }
    };

    void write_response(Json *json, std::size_t epoch);
    void write_new(Json *json, std::size_t epoch);
    void meet_filters(std::size_t epoch, const Evaluation &evaluation);
    std::size_t meet_filter(const Key &key, const StageCurve *curve, double gain);
    std::size_t meet_stage(const ShownStage &stage);
    void write_stage(Json *json, const ShownStage &shown) const;

    const VolumeRead &volume_;
    Evaluator evaluator_;
    GridText grid_; ///< of its frequencies
    std::unordered_map<const Response *, std::size_t, ResponseHash, SameResponse> first_;
    std::unordered_map<Key, std::size_t, KeyHash> filter_by_key_;
    std::vector<Shown> filters_;
    std::vector<DrawnPoint> points_; ///< of all filters
    std::map<ShownStage, std::size_t> stage_index_;
    std::vector<ShownStage> stages_;
    std::vector<std::size_t> first_of_; ///< by epoch: the one that has the same response
    std::vector<std::vector<std::size_t>> stages_of_;     ///< by epoch, of the first ones
    std::unordered_map<std::size_t, std::string> errors_; ///< by epoch
};

} // namespace quarl::html
