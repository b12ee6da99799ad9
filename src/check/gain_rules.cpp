// Responses: gains, sensitivities, decimations and the filters' numbers.
#include "check/response_seen.h"
#include "check/rule.h"

#include "response/kind.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace quarl
{

namespace
{

std::string stage_text(const StageSeen &stage) { return "stage " + std::to_string(stage.number); }

std::string hertz(double value) { return shown(value) + " Hz"; }

bool agree(double a, double b, double part) { return std::abs(a - b) <= part * std::abs(b); }

/// A sensitivity that says something; rules about its value look no further without.
const Gain *sensitivity(const ResponseSeen &seen)
{
    return seen.whole.gain ? &*seen.whole.gain : nullptr;
}

void stage_gain(const Context & /*context*/, const ResponseSeen &seen, const Report &report)
{
    seen.tell_stages(report, [](const StageSeen &stage) -> std::string {
        if (stage.shape<Polynomial>() || (stage.gain && stage.gain->value != 0.0))
            return {};
        return stage.gain ? "a gain of 0 at " + hertz(stage.gain->frequency) : "no gain (058)";
    });
}

void sensitivity_missing(const Context & /*context*/, const ResponseSeen &seen,
                         const Report &report)
{
    if (!sensitivity(seen) && !seen.has_polynomial() && !seen.whole.shape<Polynomial>())
        seen.tell(report, [&] { return "has no sensitivity: no gain (058) of stage 0"; });
}

void sensitivity_value(const Context & /*context*/, const ResponseSeen &seen, const Report &report)
{
    const Gain *gain = sensitivity(seen);
    if (gain && !seen.has_polynomial() && !(gain->value > 0.0))
        seen.tell(report, [&] {
            return "its sensitivity is " + shown(gain->value) + ", expected is more than 0";
        });
}

/// Weather and health channels have a frequency that means nothing.
void sensitivity_frequency(const Context & /*context*/, const ResponseSeen &seen,
                           const Report &report)
{
    const Gain *gain = sensitivity(seen);
    const double rate = seen.epoch.sample_rate;
    if (gain && rate > 0.0 && gain->frequency > rate / 2 && is_of_motion(seen.code))
        seen.tell(report, [&] {
            return "its sensitivity is given at " + hertz(gain->frequency) +
                   ", half its sample rate is " + hertz(rate / 2);
        });
}

/// The product of the gains, and the same with A0 as it stands. False: there is none.
bool find_products(const ResponseSeen &seen, double *gains, double *with_factors)
{
    *gains = *with_factors = 1.0;
    for (const StageSeen &stage : seen.stages) {
        if (!stage.gain)
            return false; // is told by stage-gain
        *gains *= stage.gain->value;
        *with_factors *= stage.gain->value;
        const auto *roots = stage.shape<PolesZeros>();
        const double rate = stage.decimation ? stage.decimation->input_rate : 0.0;
        const double amplitude = roots ? normalisation(*roots, rate) : 1.0;
        if (std::isfinite(amplitude))
            *with_factors *= amplitude;
    }
    return true;
}

void sensitivity_product(const Context &context, const ResponseSeen &seen, const Report &report)
{
    constexpr double Part = 0.05;
    const Gain *whole = sensitivity(seen);
    if (!whole || whole->value == 0.0 || seen.stages.empty() || seen.has_polynomial())
        return;
    double gains = 0.0;
    double with_factors = 0.0;
    const double size = std::abs(whole->value);
    if (!find_products(seen, &gains, &with_factors) || agree(std::abs(gains), size, Part) ||
        agree(std::abs(with_factors), size, Part))
        return;
    const Evaluation evaluation = context.evaluator->evaluate(seen.epoch.response, 0);
    if (agree(evaluation.amplitude, size, Part))
        return;
    seen.tell(report, [&] {
        return "its sensitivity is " + shown(whole->value) + " at " + hertz(whole->frequency) +
               ", the product of its gains is " + rounded(gains) + ", with A0 as it stands " +
               rounded(with_factors) +
               (evaluation.refused() || !std::isfinite(evaluation.amplitude)
                    ? std::string(", and its response there cannot be evaluated")
                    : ", and its response there " + rounded(evaluation.amplitude));
    });
}

bool is_at_origin(const PolesZeros &shape)
{
    return std::any_of(shape.zeros.begin(), shape.zeros.end(),
                       [](const auto &zero) { return zero == 0.0; });
}

void zero_at_origin(const Context & /*context*/, const ResponseSeen &seen, const Report &report)
{
    const Gain *whole = sensitivity(seen);
    seen.tell_stages(report, [&](const StageSeen &stage) -> std::string {
        const auto *roots = stage.shape<PolesZeros>();
        if (!roots || roots->type == 'D' || !is_at_origin(*roots))
            return {};
        const bool own = stage.gain && stage.gain->frequency == 0.0;
        if (!own && !(whole && whole->frequency == 0.0))
            return {};
        return std::string("a zero at 0, but ") + (own ? "its gain" : "the sensitivity") +
               " is given at 0 Hz";
    });
}

void polynomial_missing(const Context & /*context*/, const ResponseSeen &seen, const Report &report)
{
    if (seen.has_polynomial() && !seen.whole.shape<Polynomial>())
        seen.tell(report, [&] {
            return "has a polynomial stage (062) and none for the channel as a whole, stage 0";
        });
}

const StageSeen *last_decimation(const ResponseSeen &seen)
{
    const auto found = std::find_if(seen.stages.rbegin(), seen.stages.rend(),
                                    [](const StageSeen &stage) { return bool(stage.decimation); });
    return found == seen.stages.rend() ? nullptr : &*found;
}

void decimation_missing(const Context & /*context*/, const ResponseSeen &seen, const Report &report)
{
    const auto digital = std::count_if(seen.stages.begin(), seen.stages.end(),
                                       [](const StageSeen &stage) { return stage.is_digital(); });
    if (digital > 0 && !last_decimation(seen))
        seen.tell(report, [&] {
            return "has " + std::to_string(digital) + " digital stages and no decimation (057)";
        });
}

bool is_sound(const Decimation &decimation)
{
    return decimation.input_rate > 0.0 && decimation.factor > 0;
}

void decimation_factor(const Context & /*context*/, const ResponseSeen &seen, const Report &report)
{
    seen.tell_stages(report, [](const StageSeen &stage) -> std::string {
        if (!stage.decimation || is_sound(*stage.decimation))
            return {};
        return "a decimation (057) from " + hertz(stage.decimation->input_rate) + " by " +
               std::to_string(stage.decimation->factor) + ", expected are numbers above 0";
    });
}

bool has_sound_decimations(const ResponseSeen &seen)
{
    return std::all_of(seen.stages.begin(), seen.stages.end(), [](const StageSeen &stage) {
        return !stage.decimation || is_sound(*stage.decimation);
    });
}

double output_rate(const Decimation &decimation)
{
    return decimation.input_rate / decimation.factor;
}

void decimation_rate(const Context & /*context*/, const ResponseSeen &seen, const Report &report)
{
    constexpr double Part = 0.01;
    const StageSeen *last = last_decimation(seen);
    if (!last || !has_sound_decimations(seen) ||
        agree(output_rate(*last->decimation), seen.epoch.sample_rate, Part))
        return;
    seen.tell_at(report, last->number, [&] {
        return stage_text(*last) + " decimates to " + rounded(output_rate(*last->decimation)) +
               " Hz, the channel's sample rate is " + hertz(seen.epoch.sample_rate);
    });
}

void decimation_chain(const Context & /*context*/, const ResponseSeen &seen, const Report &report)
{
    constexpr double Part = 0.001;
    if (!has_sound_decimations(seen))
        return;
    const StageSeen *before = nullptr;
    seen.tell_stages(report, [&](const StageSeen &stage) -> std::string {
        if (!stage.decimation)
            return {};
        const StageSeen *last = std::exchange(before, &stage);
        if (!last || agree(stage.decimation->input_rate, output_rate(*last->decimation), Part))
            return {};
        return "takes " + hertz(stage.decimation->input_rate) + ", " + stage_text(*last) +
               " gives " + rounded(output_rate(*last->decimation)) + " Hz";
    });
}

void normalization(const Context & /*context*/, const ResponseSeen &seen, const Report &report)
{
    constexpr double Part = 0.05;
    seen.tell_stages(report, [&](const StageSeen &stage) -> std::string {
        const auto *roots = stage.shape<PolesZeros>();
        if (!roots)
            return {};
        const double rate = stage.decimation ? stage.decimation->input_rate : 0.0;
        const double amplitude = normalisation(*roots, rate);
        if (!std::isfinite(amplitude) || std::abs(amplitude - 1.0) <= Part)
            return {};
        return "A0 of " + shown(roots->factor) + " gives an amplitude of " + rounded(amplitude) +
               " at " + hertz(roots->frequency) + ", expected is 1";
    });
}

/// A complex root without its conjugate, or null.
const std::complex<double> *lone_root(const std::vector<std::complex<double>> &roots)
{
    constexpr double Part = 1e-4;
    std::vector<bool> paired(roots.size());
    for (std::size_t i = 0; i < roots.size(); ++i) {
        if (paired[i] || roots[i].imag() == 0.0)
            continue;
        std::size_t j = i + 1;
        while (j < roots.size() &&
               (paired[j] || std::abs(roots[j] - std::conj(roots[i])) > Part * std::abs(roots[i])))
            ++j;
        if (j == roots.size())
            return &roots[i];
        paired[j] = true;
    }
    return nullptr;
}

void conjugates(const Context & /*context*/, const ResponseSeen &seen, const Report &report)
{
    seen.tell_stages(report, [](const StageSeen &stage) -> std::string {
        const auto *roots = stage.shape<PolesZeros>();
        const auto *zero = roots ? lone_root(roots->zeros) : nullptr;
        const auto *pole = roots ? lone_root(roots->poles) : nullptr;
        const auto *lone = pole ? pole : zero;
        if (!lone)
            return {};
        return std::string("a ") + (pole ? "pole" : "zero") + " at " + shown(*lone) +
               " and none at " + shown(std::conj(*lone));
    });
}

/// A pole with which the stage's output grows without end, or null.
const std::complex<double> *unstable_pole(const PolesZeros &roots)
{
    const auto found =
        std::find_if(roots.poles.begin(), roots.poles.end(), [&](const std::complex<double> &pole) {
            return roots.type == 'D' ? std::abs(pole) >= 1.0 : pole.real() > 0.0;
        });
    return found == roots.poles.end() ? nullptr : &*found;
}

void pole_unstable(const Context & /*context*/, const ResponseSeen &seen, const Report &report)
{
    seen.tell_stages(report, [](const StageSeen &stage) -> std::string {
        const auto *roots = stage.shape<PolesZeros>();
        if (!roots || std::string_view("ABD").find(roots->type) == std::string_view::npos)
            return {};
        const auto *pole = unstable_pole(*roots);
        if (!pole)
            return {};
        return "a pole at " + shown(*pole) +
               (roots->type == 'D' ? ", expected is an absolute value below 1"
                                   : ", expected is a real part of 0 or below");
    });
}

void fir_gain(const Context & /*context*/, const ResponseSeen &seen, const Report &report)
{
    constexpr double Part = 0.02;
    seen.tell_stages(report, [](const StageSeen &stage) -> std::string {
        const FilterPtr filter = one_filter(stage);
        if (!filter || !is_fir(kind_of(filter->shape())) || is_empty(filter->shape()))
            return {};
        const double sum = coefficient_sum(filter->shape());
        if (!(std::abs(sum - 1.0) > Part))
            return {};
        const bool half = kind_of(filter->shape()) == Kind::FullFir && agree(2 * sum, 1.0, Part);
        return "its FIR coefficients sum to " + rounded(sum) + ", expected is 1" +
               (half ? "; they may be the first half of a symmetric filter" : "");
    });
}

constexpr std::array Rules = {
    Rule{"stage-gain", Severity::error, "every stage from 1 on has a gain other than 0", "epochs",
         Look<ResponseSeen>(stage_gain)},
    Rule{"sensitivity-missing", Severity::error,
         "a response without a polynomial stage has a sensitivity (stage 0)", "epochs",
         Look<ResponseSeen>(sensitivity_missing)},
    Rule{"sensitivity-value", Severity::error, "a sensitivity is above 0", "epochs",
         Look<ResponseSeen>(sensitivity_value)},
    Rule{"sensitivity-frequency", Severity::warning,
         "the frequency of a sensitivity is at or below half the sample rate", "epochs",
         Look<ResponseSeen>(sensitivity_frequency)},
    Rule{"sensitivity-product", Severity::error,
         "a sensitivity is the product of the stage gains, as they stand or with A0, or the "
         "response at its frequency, to 5 %",
         "epochs", Look<ResponseSeen>(sensitivity_product)},
    Rule{"zero-at-origin", Severity::error,
         "with a zero at 0, neither the stage's gain nor the sensitivity is given at 0 Hz",
         "epochs", Look<ResponseSeen>(zero_at_origin)},
    Rule{"polynomial-missing", Severity::warning,
         "a response with a polynomial stage has one for the channel (stage 0)", "epochs",
         Look<ResponseSeen>(polynomial_missing)},
    Rule{"decimation-missing", Severity::warning, "a response with digital stages has a decimation",
         "epochs", Look<ResponseSeen>(decimation_missing)},
    Rule{"decimation-factor", Severity::error, "rate and factor of a decimation (057) are above 0",
         "epochs", Look<ResponseSeen>(decimation_factor)},
    Rule{"decimation-rate", Severity::error,
         "the last decimation gives the channel's sample rate, to 1 %", "epochs",
         Look<ResponseSeen>(decimation_rate)},
    Rule{"decimation-chain", Severity::error,
         "a decimation takes the rate that the one before gives, to 0.1 %", "epochs",
         Look<ResponseSeen>(decimation_chain)},
    Rule{"normalization", Severity::warning,
         "A0 makes the poles and zeros 1 at the normalisation frequency, to 5 %", "epochs",
         Look<ResponseSeen>(normalization)},
    Rule{"conjugates", Severity::warning, "complex poles and zeros come in conjugate pairs",
         "epochs", Look<ResponseSeen>(conjugates)},
    Rule{"pole-unstable", Severity::error,
         "poles of analogue stages lie in the left half plane or on its edge, those of digital "
         "ones inside the unit circle",
         "epochs", Look<ResponseSeen>(pole_unstable)},
    Rule{"fir-gain", Severity::warning,
         "the coefficients of a FIR filter, both halves, sum to 1, to 2 %", "epochs",
         Look<ResponseSeen>(fir_gain)},
};

} // namespace

std::span<const Rule> gain_rules() { return Rules; }

} // namespace quarl
