#include "platform/format.h"
#include "response/kind.h"
#include "response/plan.h"
#include "response/transfer.h"
#include <quarl/response.h>

#include <algorithm>
#include <functional>
#include <numbers>
#include <unordered_map>
#include <utility>

namespace quarl
{

namespace
{

constexpr double Not_A_Number = std::numeric_limits<double>::quiet_NaN();

/// What decides the values of a filter: its shape, not its units or name.
struct Key {
    FilterPtr filter;
    double interval;

    bool operator==(const Key &other) const
    {
        return interval == other.interval &&
               (filter == other.filter || (filter->shape_hash() == other.filter->shape_hash() &&
                                           filter->shape() == other.filter->shape()));
    }
};

struct KeyHash {
    std::size_t operator()(const Key &key) const
    {
        return key.filter->shape_hash() ^ std::hash<double>()(key.interval);
    }
};

/// Values of a filter that were evaluated.
struct Known {
    std::vector<Scaled> curve;                     ///< at the first frequencies of the grid
    std::vector<std::pair<double, Scaled>> points; ///< at a few others
};

/// A term of H, ready to be multiplied.
struct Factor {
    Term term;
    Scaled constant; ///< gain and normalisation
};

Scaled number(double value) { return balanced(value); }

} // namespace

class Evaluator::Work
{
public:
    Work(std::vector<double> frequencies, EvaluationOptions options)
        : frequencies_(std::move(frequencies)), options_(options)
    {
    }

    Evaluation evaluate(const Response &response, std::size_t count, bool by_stage);
    [[nodiscard]] const std::vector<double> &frequencies() const { return frequencies_; }
    [[nodiscard]] std::size_t evaluated() const { return evaluated_; }

private:
    Known &known(const Term &term);
    static Scaled at(Known *known, const Term &term, double frequency);
    HalfTurns halves(double interval);
    std::span<const Scaled> curve(const Term &term, std::size_t count);
    std::vector<Factor> normalise(Plan plan, Evaluation *result);
    static Scaled normaliser(Known *known, const Term &term, double frequency, Evaluation *result,
                             Scaled *moved);
    void values_of(const Factor &factor, std::vector<Scaled> *values);

    std::vector<double> frequencies_;
    EvaluationOptions options_;
    std::unordered_map<Key, Known, KeyHash> known_;
    std::unordered_map<double, std::vector<std::complex<double>>> halves_; ///< by interval
    std::size_t held_ = 0; ///< values in known_, and some for each entry
    std::size_t evaluated_ = 0;
};

/// The entry of a term's filter; references to others do not outlive the call.
Known &Evaluator::Work::known(const Term &term)
{
    constexpr std::size_t Entry = 50;
    const std::size_t most_held = frequencies_.empty() ? 1000 * Entry : 60'000;
    const Key key{term.filter, term.interval};
    if (const auto found = known_.find(key); found != known_.end())
        return found->second;
    if (held_ > most_held) {
        known_.clear();
        held_ = 0;
    }
    held_ += Entry + (term.is_made ? size_of(term.filter->shape()) : 0);
    ++evaluated_;
    return known_[key];
}

/// The value of the term's filter, whose entry is `known`, at one frequency.
Scaled Evaluator::Work::at(Known *known, const Term &term, double frequency)
{
    constexpr std::size_t Most_Points = 16;
    auto &points = known->points;
    for (const auto &[where, value] : points)
        if (where == frequency)
            return value;
    if (points.size() == Most_Points)
        points.clear();
    const Scaled value =
        transfer(term.filter->shape(), term.interval, std::span(&frequency, 1)).front();
    points.emplace_back(frequency, value);
    return value;
}

/// The half turns of all frequencies.
HalfTurns Evaluator::Work::halves(double interval)
{
    constexpr std::size_t Most_Intervals = 100;
    const auto known = halves_.find(interval);
    if (known != halves_.end())
        return known->second;
    if (halves_.size() == Most_Intervals)
        halves_.clear();
    return halves_[interval] = half_turns(interval, frequencies_);
}

std::span<const Scaled> Evaluator::Work::curve(const Term &term, std::size_t count)
{
    std::vector<Scaled> &curve = known(term).curve;
    if (curve.size() < count) {
        const auto missing =
            std::span<const double>(frequencies_).subspan(curve.size(), count - curve.size());
        std::vector<Scaled> values = transfer(term.filter->shape(), term.interval, missing,
                                              halves(term.interval).subspan(curve.size()));
        held_ += values.size();
        if (curve.empty())
            curve = std::move(values);
        else
            curve.insert(curve.end(), values.begin(), values.end());
    }
    return std::span(curve).first(count);
}

/// What a filter is multiplied by. `moved` becomes the ratio of its amplitudes at `frequency` and
/// at its gain's frequency.
Scaled Evaluator::Work::normaliser(Known *known, const Term &term, double frequency,
                                   Evaluation *result, Scaled *moved)
{
    const auto *roots = std::get_if<PolesZeros>(&term.filter->shape());
    if (term.as_stated)
        return roots ? number(roots->factor) : Scaled{};
    const Scaled here = at(known, term, term.gain_frequency).magnitude();
    const Scaled there = at(known, term, frequency).magnitude();
    *moved = there / here;
    if (!here.is_zero() && !there.is_zero())
        return Scaled{} / here;
    const std::string reason = formatted<"stage %d: the filter puts out nothing at %g Hz, where it "
                                         "would be normalised">(
        term.stage, here.is_zero() ? term.gain_frequency : frequency);
    if (kind_of(term.filter->shape()) != Kind::AnalogRoots)
        result->warnings.push_back(reason);
    else if (result->error.empty())
        result->error = reason;
    return number(Not_A_Number);
}

/// The factors of H, and the figures.
std::vector<Factor> Evaluator::Work::normalise(Plan plan, Evaluation *result)
{
    std::vector<Factor> factors;
    Scaled gains;
    Scaled amplitude;
    for (Term &term : plan.terms) {
        Scaled moved;
        Scaled constant = number(term.gain);
        if (term.filter) {
            Known &filter = known(term);
            constant = normaliser(&filter, term, plan.frequency, result, &moved) * constant;
            amplitude = amplitude * at(&filter, term, plan.frequency);
        }
        gains = gains * number(term.stated_gain) * moved;
        amplitude = amplitude * constant;
        factors.push_back({std::move(term), constant});
    }
    if (result->refused())
        return {};
    result->gain_product = gains.number().real();
    result->amplitude = amplitude.magnitude().number().real();
    return factors;
}

void warn_of_sensitivity(const Plan &plan, Evaluation *result)
{
    constexpr double Tolerance = 0.05;
    const double stated = plan.sensitivity.value_or(0.0);
    if (stated == 0.0 || !(std::abs(result->gain_product - stated) >= Tolerance * std::abs(stated)))
        return;
    result->warnings.push_back(
        formatted<"the gains' product %g is off the sensitivity %g of stage 0">(
            result->gain_product, stated));
}

/// The factor's values at the first frequencies.
void Evaluator::Work::values_of(const Factor &factor, std::vector<Scaled> *values)
{
    const Term &term = factor.term;
    if (!term.filter) {
        std::ranges::fill(*values, factor.constant);
        return;
    }
    std::ranges::transform(curve(term, values->size()), values->begin(),
                           [&](const Scaled &value) { return factor.constant * value; });
    if (term.delay == 0.0)
        return;
    for (std::size_t i = 0; i < values->size(); ++i) {
        const double angle = 2 * std::numbers::pi * frequencies_[i] * term.delay;
        (*values)[i] = (*values)[i] * Scaled{{std::cos(angle), std::sin(angle)}, 0};
    }
}

std::vector<std::complex<double>> numbers(const std::vector<Scaled> &scaled)
{
    std::vector<std::complex<double>> values;
    values.reserve(scaled.size());
    for (const Scaled &value : scaled)
        values.push_back(value.number());
    return values;
}

StageCurve curve_of(const Term &term, std::vector<std::complex<double>> values)
{
    StageCurve curve{term.stage, term.filter, term.interval, term.delay, term.gain, {}, {}};
    if (!term.as_stated)
        curve.norm_frequency = term.gain_frequency;
    curve.values = std::move(values);
    return curve;
}

Evaluation Evaluator::Work::evaluate(const Response &response, std::size_t count, bool by_stage)
{
    count = std::min(count, frequencies_.size());
    Plan plan = make_plan(response, options_);
    Evaluation result;
    result.error = plan.error;
    result.warnings = plan.warnings;
    result.frequency = plan.frequency;
    result.sensitivity = plan.sensitivity.value_or(Not_A_Number);
    if (result.refused())
        return result;
    const std::vector<Factor> factors = normalise(plan, &result);
    if (result.refused())
        return result;
    warn_of_sensitivity(plan, &result);
    std::vector<Scaled> product(count);
    std::vector<Scaled> alone(count);
    for (const Factor &factor : factors) {
        values_of(factor, &alone);
        std::ranges::transform(product, alone, product.begin(), std::multiplies<>());
        if (by_stage)
            result.stages.push_back(curve_of(factor.term, numbers(alone)));
    }
    result.values = numbers(product);
    return result;
}

Evaluator::Evaluator(std::vector<double> frequencies, EvaluationOptions options)
    : work_(std::make_unique<Work>(std::move(frequencies), options))
{
}

Evaluator::Evaluator(Evaluator &&) noexcept = default;
Evaluator &Evaluator::operator=(Evaluator &&) noexcept = default;
Evaluator::~Evaluator() = default;

const std::vector<double> &Evaluator::frequencies() const { return work_->frequencies(); }

Evaluation Evaluator::evaluate(const Response &response, std::size_t count)
{
    return work_->evaluate(response, count, false);
}

Evaluation Evaluator::evaluate_stages(const Response &response, std::size_t count)
{
    return work_->evaluate(response, count, true);
}

std::size_t Evaluator::filters_evaluated() const { return work_->evaluated(); }

Evaluation evaluate(const Response &response, std::vector<double> frequencies,
                    EvaluationOptions options)
{
    return Evaluator(std::move(frequencies), options).evaluate(response);
}

} // namespace quarl
