#include "html/curves.h"

#include "platform/number.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <span>

namespace quarl::html
{

namespace
{

constexpr int Amplitude_Digits = 8;
constexpr int Phase_Decimals = 5;
constexpr int Frequency_Digits = 8;
// Of curves that are only drawn.
constexpr int Drawn_Digits = 4;
constexpr int Drawn_Decimals = 1;

double highest_rate(const Inventory &inventory)
{
    double highest = 0.0;
    for (const ChannelEpoch &epoch : inventory.channel_epochs())
        if (std::isfinite(epoch.sample_rate))
            highest = std::max(highest, epoch.sample_rate);
    return highest;
}

const Gain *gain_of(const Stage &stage)
{
    const Gain *last = nullptr;
    for (const Part &part : stage.parts)
        if (const auto *gain = std::get_if<Gain>(&part))
            last = gain;
    return last;
}

const Decimation *decimation_of(const Stage &stage)
{
    for (const Part &part : stage.parts)
        if (const auto *decimation = std::get_if<Decimation>(&part))
            return decimation;
    return nullptr;
}

std::string_view kind_name(std::size_t kind)
{
    static constexpr std::string_view Names[] = {"poles and zeros", "coefficients", "response list",
                                                 "generic",         "FIR",          "polynomial"};
    return Names[kind];
}

void write_roots(Json *json, const std::vector<std::complex<double>> &roots)
{
    json->open('[');
    for (const std::complex<double> &root : roots) {
        json->real(root.real());
        json->real(root.imag());
    }
    json->close(']');
}

void write_curve(Json *json, std::span<const std::complex<double>> values)
{
    json->key("amplitude").open('[');
    for (const std::complex<double> &value : values)
        json->real(amplitude_of(value), Amplitude_Digits);
    json->close(']');
    json->key("phase").open('[');
    for (const std::complex<double> &value : values)
        json->fixed(phase_degrees(value), Phase_Decimals);
    json->close(']');
}

void write_drawn(Json *json, std::span<const DrawnPoint> points)
{
    json->key("at").open('[');
    for (const DrawnPoint &point : points)
        json->whole(point.at);
    json->close(']');
    json->key("amplitude").open('[');
    for (const DrawnPoint &point : points)
        json->real(point.amplitude, Drawn_Digits);
    json->close(']');
    json->key("phase").open('[');
    for (const DrawnPoint &point : points)
        json->fixed(point.phase, Drawn_Decimals);
    json->close(']');
}

} // namespace

GridText::GridText(std::span<const double> frequencies)
{
    for (const double frequency : frequencies) {
        if (!text_.empty())
            text_ += ',';
        std::array<char, Real_Room> number{};
        text_.append(number.data(), put_general(number.data(), frequency, Frequency_Digits));
        ends_.push_back(text_.size());
    }
}

std::string_view GridText::first(std::size_t count) const
{
    return std::string_view(text_).substr(0, count == 0 ? 0 : ends_[count - 1]);
}

Curves::Curves(const VolumeRead &volume)
    : volume_(volume), evaluator_(frequency_grid(highest_rate(volume.inventory))),
      grid_(evaluator_.frequencies()), first_of_(volume.inventory.channel_epochs().size()),
      stages_of_(volume.inventory.channel_epochs().size())
{
}

void Curves::write_responses(Json *json)
{
    json->open('[');
    for (std::size_t i = 0; i < volume_.inventory.channel_epochs().size(); ++i)
        write_response(json, i);
    json->close(']');
}

void Curves::write_response(Json *json, std::size_t at)
{
    const ChannelEpoch &epoch = volume_.inventory.channel_epochs()[at];
    const ChannelCode &code = volume_.inventory.channel_of(epoch).code;
    json->open('{');
    json->key("network").text(code.network());
    json->key("station").text(code.station());
    json->key("location").text(code.location());
    json->key("channel").text(code.channel());
    json->key("start").text(volume_.records.channels[at].start_date);
    const auto [first, is_new] = first_.try_emplace(&epoch.response, at);
    first_of_[at] = first->second;
    if (is_new)
        write_new(json, at);
    else
        json->key("same").index(first->second);
    if (const auto error = errors_.find(first->second); error != errors_.end())
        json->key("error").text(error->second);
    json->close('}');
}

/// The values of a response that no earlier epoch has.
void Curves::write_new(Json *json, std::size_t at)
{
    const ChannelEpoch &epoch = volume_.inventory.channel_epochs()[at];
    const std::size_t count = frequency_grid_size(epoch.sample_rate);
    const Evaluation evaluation = evaluator_.evaluate_stages(epoch.response, count);
    meet_filters(at, evaluation);
    if (evaluation.refused()) {
        errors_[at] = evaluation.error;
    } else if (evaluation.values.empty()) {
        errors_[at] = "no frequency lies below half the sample rate";
    } else {
        json->key("frequency").numbers(grid_.first(evaluation.values.size()));
        write_curve(json, evaluation.values);
    }
}

std::size_t Curves::meet_filter(const Key &key, const StageCurve *curve, double gain)
{
    const auto [known, is_new] = filter_by_key_.try_emplace(key, filters_.size());
    if (is_new)
        filters_.push_back({known->first.filter});
    Shown &shown = filters_[known->second];
    if (curve && curve->values.size() > shown.size) {
        shown.size = curve->values.size();
        shown.first = points_.size();
        add_drawn(curve->values, gain, &points_);
        shown.count = points_.size() - shown.first;
    }
    return known->second;
}

void Curves::meet_filters(std::size_t at, const Evaluation &evaluation)
{
    const Response &response = volume_.inventory.channel_epochs()[at].response;
    auto curve = evaluation.stages.begin();
    for (const StagePtr &stage : response.stages) {
        const bool is_evaluated = curve != evaluation.stages.end() && curve->stage == stage->number;
        const StageCurve *values = is_evaluated ? &*curve++ : nullptr;
        if (stage->number == 0)
            continue;
        ShownStage shown(stage.get(), std::nullopt);
        if (const auto filter = stage_filter(*stage, values ? values->filter : nullptr)) {
            const Gain *stated = gain_of(*stage);
            const double gain = stated ? stated->value : 1.0;
            Key key{.filter = *filter};
            if (values)
                key = {*filter, values->interval, values->delay, values->gain / gain,
                       values->norm_frequency};
            shown.second = meet_filter(key, values, gain);
        }
        stages_of_[at].push_back(meet_stage(shown));
    }
}

std::size_t Curves::meet_stage(const ShownStage &stage)
{
    const auto [known, is_new] = stage_index_.try_emplace(stage, stages_.size());
    if (is_new)
        stages_.push_back(stage);
    return known->second;
}

void Curves::write_stage(Json *json, const ShownStage &shown) const
{
    const auto &[of, filter] = shown;
    const Stage &stage = *of;
    const Gain *gain = gain_of(stage);
    const Decimation *decimation = decimation_of(stage);
    json->open('{');
    json->key("stage").whole(stage.number);
    json->key("filter").index(filter);
    if (filter) {
        const StageFilter &shown_filter = filters_[*filter].filter;
        json->key("input_units").text(shown_filter.first->input().name);
        json->key("output_units").text(shown_filter.last->output().name);
        json->key("name").text(shown_filter.first->name());
    }
    if (gain) {
        json->key("gain").real(gain->value);
        json->key("gain_frequency").real(gain->frequency);
    }
    if (decimation) {
        json->key("input_rate").real(decimation->input_rate);
        json->key("factor").whole(decimation->factor);
        json->key("output_rate").real(decimation->input_rate / decimation->factor);
        json->key("delay").real(decimation->delay);
        json->key("correction").real(decimation->correction);
    }
    json->close('}');
}

void Curves::write_stages(Json *json) const
{
    json->open('[');
    for (const ShownStage &stage : stages_)
        write_stage(json, stage);
    json->close(']');
}

void Curves::write_filters(Json *json) const
{
    json->open('[');
    for (const Shown &shown : filters_) {
        const StageFilter &filter = shown.filter;
        json->open('{');
        json->key("kind").text(kind_name(filter.kind));
        json->key("type").text({&filter.type, 1});
        json->key("coefficients").index(filter.size);
        if (const auto *roots = std::get_if<PolesZeros>(&filter.first->shape())) {
            json->key("a0").real(roots->factor);
            json->key("frequency").real(roots->frequency);
            write_roots(&json->key("poles"), roots->poles);
            write_roots(&json->key("zeros"), roots->zeros);
        }
        if (shown.count > 0)
            write_drawn(json, std::span(points_).subspan(shown.first, shown.count));
        json->close('}');
    }
    json->close(']');
}

} // namespace quarl::html
