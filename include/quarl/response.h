// Evaluates the response of a channel epoch:
//
//     H(f) = product of the stages' gains * product of the stages' filters at f
//
// in counts per input unit of the first stage, with the units as the volume has them and the time
// convention e^(+i 2 pi f t). The gain of stage 0 never enters H, unless nothing else is stated.
//
// A filter is normalised: when the gain holds at the frequency of the channel's sensitivity (for
// poles and zeros their normalisation frequency as well), it counts as stated, A0 included; else
// its amplitude at the gain's frequency is made 1, and A0 is not looked at. Response lists are
// taken as stated. Between their frequencies the amplitude is linear in log-log, the phase, without
// jumps above 180 degrees, linear over the logarithm of the frequency.
//
// A symmetric FIR filter shifts nothing in time, whatever its decimation says. Any other has its
// own delay, less the correction that its decimation states. Blockettes of one FIR filter, or list,
// that continue each other in a stage are joined, up to 9999 coefficients or entries and in all
// 100,000 in a response. Coefficients that are given in full (type D, FIR
// symmetry A) are divided by their sum when that is off 1 by more than 0.02.
//
// A response that contradicts itself is refused: the reason is told and there are no values.
// Numbers that are no numbers, poles on the frequency axis and the like give NaN at the frequencies
// concerned. Nothing here throws, except for want of memory.
#pragma once

#include <quarl/stages.h>

#include <complex>
#include <cstddef>
#include <limits>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace quarl
{

struct EvaluationOptions {
    /// Take the estimated delay of decimations for FIR filters instead of the correction.
    bool use_estimated_delay = false;
    /// The output value at which a polynomial of degree 2 or more is taken as linear; without it
    /// such a polynomial is refused.
    std::optional<double> polynomial_at = std::nullopt;
};

/// One stage's factor of H: filter times gain. The product of all curves is H. The same filter,
/// interval, delay and normalisation give the same values, but for the gain.
struct StageCurve {
    int stage = 0;         ///< number of the stage
    FilterPtr filter;      ///< null: the stage is its gain alone
    double interval = 0.0; ///< between the samples that a digital filter takes in, seconds
    double delay = 0.0;    ///< by which the filter's output is taken back, seconds
    double gain = 1.0;     ///< as it enters H
    /// At which the filter's amplitude was made 1, Hz; without one it counts as stated.
    std::optional<double> norm_frequency;
    std::vector<std::complex<double>> values;
};

/// What came of an evaluation. With an error there are no values and no curves, and the figures
/// behind `sensitivity` are NaN; warnings may stand beside it.
struct Evaluation {
    /// H, one value per frequency. NaN where there is none: outside a response list, for one.
    std::vector<std::complex<double>> values;
    std::vector<StageCurve> stages;    ///< in volume order; from evaluate_stages alone
    std::string error;                 ///< why there are no values, or empty: "stage 2: no gain"
    std::vector<std::string> warnings; ///< what was passed over or put right, in words

    /// At which H is compared with the channel's sensitivity, Hz: the frequency of the gain of
    /// stage 0, or the last gain frequency that is not 0.
    double frequency = 0.0;
    /// The value of stage 0; NaN when there is none.
    double sensitivity = std::numeric_limits<double>::quiet_NaN();
    /// Product of the gains, each taken from its own frequency to `frequency`.
    double gain_product = std::numeric_limits<double>::quiet_NaN();
    /// |H(frequency)|.
    double amplitude = std::numeric_limits<double>::quiet_NaN();

    [[nodiscard]] bool refused() const { return !error.empty(); }
};

/// Evaluates responses at fixed frequencies. A filter that was evaluated, at the same input rate,
/// is not evaluated again: contents count, not pointers. Holds some 2 MB of such results at most,
/// and those of a thousand filters when there are no frequencies; joined filters count with them.
/// One object per thread.
class Evaluator
{
public:
    static constexpr std::size_t All = std::numeric_limits<std::size_t>::max();

    /// `frequencies` in Hz, in any order.
    explicit Evaluator(std::vector<double> frequencies, EvaluationOptions options = {});
    Evaluator(Evaluator &&) noexcept;
    Evaluator &operator=(Evaluator &&) noexcept;
    ~Evaluator();

    [[nodiscard]] const std::vector<double> &frequencies() const;

    /// H at the first `count` frequencies. With 0 the single figures are what is asked for.
    [[nodiscard]] Evaluation evaluate(const Response &response, std::size_t count = All);
    /// The same with a curve for each stage.
    [[nodiscard]] Evaluation evaluate_stages(const Response &response, std::size_t count = All);
    /// Filters evaluated since the object was made; those found again are not counted.
    [[nodiscard]] std::size_t filters_evaluated() const;

private:
    class Work;
    std::unique_ptr<Work> work_;
};

/// One evaluation without an Evaluator to keep.
[[nodiscard]] Evaluation evaluate(const Response &response, std::vector<double> frequencies,
                                  EvaluationOptions options = {});

/// 10^(k/20) Hz for whole k, from 0.001 Hz to below half the `sample_rate`, and not above 10 MHz;
/// empty when there is none. The grid of a lower rate is the beginning of that of a higher one, so
/// that one Evaluator serves all rates: evaluate(response, frequency_grid_size(rate)).
[[nodiscard]] std::vector<double> frequency_grid(double sample_rate);
[[nodiscard]] std::size_t frequency_grid_size(double sample_rate);

/// Phase in degrees, -180 to 180.
[[nodiscard]] double phase_degrees(std::complex<double> value);

/// The one filter of a stage. Blockettes that continue each other are joined, up to 9999
/// coefficients or entries; generic responses are passed over. Null when there is none; null with
/// an error when they cannot be joined.
struct JoinedFilter {
    FilterPtr filter;
    std::string error;
    bool is_made = false; ///< of several, and held by nobody else
};
[[nodiscard]] JoinedFilter joined_filter(const Stage &stage);

/// A0 times the amplitude of the poles and zeros at the normalisation frequency: 1 when A0 is
/// right. Those of type D need the stage's input rate. NaN for types that are not evaluated.
[[nodiscard]] double normalisation(const PolesZeros &shape, double input_rate = 0.0);

/// Sum of a filter's coefficients, a symmetric FIR filter's with its second half; of coefficients
/// with denominators the numerators' sum. NaN for other shapes.
[[nodiscard]] double coefficient_sum(const FilterShape &shape);

} // namespace quarl
