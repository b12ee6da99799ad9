#include "html/curves.h"

#include <algorithm>
#include <cmath>
#include <span>

namespace quarl::html
{

namespace
{

constexpr int Amplitude_Digits = 8;
constexpr int Phase_Decimals = 5;
constexpr int Place_Digits = 8;
// Of curves that are only drawn.
constexpr int Drawn_Digits = 4;
constexpr int Drawn_Decimals = 1;

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

void write_curve(Json *json, const Sampled &sampled)
{
    const std::span<const std::complex<double>> values = sampled.evaluation.values;
    json->key("frequency").open('[');
    for (const double frequency : sampled.frequencies)
        json->real(frequency, Frequency_Digits);
    json->close(']');
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
        json->real(point.at, Place_Digits);
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

const Filter *filter_of(const Stage &stage)
{
    for (const Part &part : stage.parts)
        if (const auto *filter = std::get_if<FilterPtr>(&part))
            return filter->get();
    return nullptr;
}

/// What goes into a response, and what comes out: "COUNTS per M/S".
std::string unit_of(const Response &response)
{
    const Filter *first = nullptr;
    const Filter *last = nullptr;
    for (const StagePtr &stage : response.stages)
        if (const Filter *filter = stage->number == 0 ? nullptr : filter_of(*stage)) {
            first = first ? first : filter;
            last = filter;
        }
    if (!first || first->input().name.empty() || last->output().name.empty())
        return {};
    return last->output().name + " per " + first->input().name;
}

Figures figures(const Evaluation &evaluation, const Response &response)
{
    Figures figures;
    for (const StagePtr &stage : response.stages)
        if (const Gain *gain = stage->number == 0 ? gain_of(*stage) : nullptr) {
            figures.sensitivity = gain->value;
            figures.frequency = gain->frequency;
        }
    if (evaluation.frequency == figures.frequency)
        figures.amplitude = evaluation.amplitude;
    figures.unit = unit_of(response);
    return figures;
}

} // namespace

Curves::Curves(const VolumeRead &volume)
    : volume_(volume), first_of_(volume.inventory.channel_epochs().size()),
      stages_of_(volume.inventory.channel_epochs().size())
{
    const auto &epochs = volume.inventory.channel_epochs();
    const auto hash = [](const Response *response) { return response->hash(); };
    const auto same = [](const Response *a, const Response *b) { return *a == *b; };
    std::unordered_map<const Response *, std::size_t, decltype(hash), decltype(same)> first;
    Evaluator evaluator({});
    for (std::size_t i = 0; i < epochs.size(); ++i) {
        const auto [known, is_new] = first.try_emplace(&epochs[i].response, i);
        first_of_[i] = known->second;
        if (is_new)
            figures_.try_emplace(
                i, figures(evaluator.evaluate(epochs[i].response, 0), epochs[i].response));
    }
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
    if (first_of_[at] == at)
        write_new(json, at);
    else
        json->key("same").index(first_of_[at]);
    if (const auto error = errors_.find(first_of_[at]); error != errors_.end())
        json->key("error").text(error->second);
    json->close('}');
}

/// The values of a response that no earlier epoch has.
void Curves::write_new(Json *json, std::size_t at)
{
    const ChannelEpoch &epoch = volume_.inventory.channel_epochs()[at];
    Sampled sampled = sampler_.sample(epoch.response, epoch.sample_rate);
    const std::vector<Met> met = meet_stages(at, sampled);
    if (sampled.evaluation.refused()) {
        errors_[at] = sampled.evaluation.error;
    } else if (sampled.frequencies.empty()) {
        errors_[at] = "no frequency lies below half the sample rate";
    } else {
        std::vector<std::size_t> curves;
        for (const Met &stage : met)
            if (stage.curve)
                curves.push_back(*stage.curve);
        sampler_.refine(epoch.response, &sampled, curves);
        write_curve(json, sampled);
        keep_curves(met, sampled);
    }
    for (const Met &stage : met)
        stages_of_[at].push_back(meet_stage({stage.stage, stage.filter}));
}

/// Finds or remembers a stage's filter; its curve is to be kept when it goes beyond what is there.
void Curves::meet_filter(Met *met, const StageFilter &filter, const StageCurve *curve,
                         const Sampled &sampled)
{
    Key key{.filter = filter};
    if (curve)
        key = {filter, curve->interval, curve->delay, curve->gain / met->gain,
               curve->norm_frequency};
    const auto [known, is_new] = filter_by_key_.try_emplace(key, filters_.size());
    if (is_new)
        filters_.push_back({filter});
    met->filter = known->second;
    const Shown &shown = filters_[known->second];
    if (curve && !curve->values.empty() &&
        (shown.to < sampled.frequencies.back() ||
         (shown.to == sampled.frequencies.back() && shown.from > sampled.frequencies.front())))
        met->curve = curve - sampled.evaluation.stages.data();
}

std::vector<Curves::Met> Curves::meet_stages(std::size_t at, const Sampled &sampled)
{
    const Response &response = volume_.inventory.channel_epochs()[at].response;
    const std::vector<StageCurve> &curves = sampled.evaluation.stages;
    std::vector<Met> all;
    auto curve = curves.begin();
    for (const StagePtr &stage : response.stages) {
        const bool is_evaluated = curve != curves.end() && curve->stage == stage->number;
        const StageCurve *values = is_evaluated ? &*curve++ : nullptr;
        if (stage->number == 0)
            continue;
        const Gain *stated = gain_of(*stage);
        Met &met = all.emplace_back(Met{stage.get(), {}, {}, stated ? stated->value : 1.0});
        if (const auto filter = stage_filter(*stage, values ? values->filter : nullptr))
            meet_filter(&met, *filter, values, sampled);
    }
    return all;
}

void Curves::keep_curves(const std::vector<Met> &met, const Sampled &sampled)
{
    std::vector<double> places(sampled.frequencies.size());
    std::ranges::transform(sampled.frequencies, places.begin(), grid_place);
    for (const Met &stage : met) {
        if (!stage.curve)
            continue;
        Shown &shown = filters_[*stage.filter];
        shown.from = sampled.frequencies.front();
        shown.to = sampled.frequencies.back();
        shown.first = points_.size();
        add_drawn(places, sampled.evaluation.stages[*stage.curve].values, stage.gain, &points_);
        shown.count = points_.size() - shown.first;
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
