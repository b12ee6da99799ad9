#include "html/sampling.h"

#include "html/drawn.h"
#include "response/kind.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <span>

namespace quarl::html
{

namespace
{

constexpr int Per_Decade = 20;
constexpr int Last_Octave = 24; ///< steps up to the end, of which the upper half counts
constexpr int Grid_Zero = 60;   ///< place of 1 Hz
constexpr int Lowest = -6;      ///< powers of ten, Hz
constexpr int Usual_Lowest = -3;
constexpr double Highest = 1e7; ///< Hz
constexpr double Below_Corner =
    5; ///< the curve begins so far below the slowest pole, at a power of ten
constexpr std::size_t Most_Evaluators = 8;

// A line from the point before to the one behind may miss a point by so much. Those between
// neighbours miss a quarter of it.
constexpr double Height = 0.004; ///< of the natural logarithm
constexpr double Degrees = 0.4;
// What is that small beside the curve's top is looked at less closely.
constexpr double Small = 1e-5;
constexpr double Small_Height = 0.3;

constexpr int Rounds = 10; ///< halves a step of the grid at most as often
constexpr std::size_t Most_Points = 1000;
/// Points times coefficients that are evaluated in between.
constexpr std::size_t Most_Work = 1'500'000;

/// As a page writes it: near a zero of a filter, what is cut from a frequency changes the curve.
double written(double frequency)
{
    const int decimals = Frequency_Digits - 1 - static_cast<int>(std::floor(std::log10(frequency)));
    const double scale = std::pow(10.0, std::abs(decimals)); // exact
    return decimals < 0 ? std::round(frequency / scale) * scale
                        : std::round(frequency * scale) / scale;
}

/// Of the slowest analog pole that is not 0, Hz; 0 without one.
double slowest_pole(const Response &response)
{
    double slowest = 0.0;
    for (const StagePtr &stage : response.stages)
        for (const Part &part : stage->parts) {
            const auto *filter = std::get_if<FilterPtr>(&part);
            const auto *roots = filter ? std::get_if<PolesZeros>(&(*filter)->shape()) : nullptr;
            const char type = roots ? type_letter((*filter)->shape()) : ' ';
            if (type != 'A' && type != 'B')
                continue;
            for (const std::complex<double> &pole : roots->poles) {
                const double size = std::abs(pole) / (type == 'A' ? 2 * std::numbers::pi : 1.0);
                if (size > 0.0 && (slowest == 0.0 || size < slowest))
                    slowest = size;
            }
        }
    return slowest;
}

int lowest_decade(const Response &response, double highest)
{
    double low = std::pow(10.0, Usual_Lowest);
    if (const double corner = slowest_pole(response); corner > 0.0)
        low = std::min(low, corner / Below_Corner);
    low = std::min(low, highest / 10); // of a rate below all others
    const double decade = std::floor(std::log10(low) + 1e-9);
    return static_cast<int>(std::clamp<double>(decade, Lowest, Usual_Lowest));
}

/// A curve as it is drawn over the logarithm of the frequency.
struct Drawn {
    std::vector<double> height; ///< natural logarithm
    std::vector<double> phase;
    double small = 0.0; ///< height below which it is looked at less closely

    explicit Drawn(std::span<const std::complex<double>> values)
    {
        double top = -std::numeric_limits<double>::infinity();
        height.reserve(values.size());
        phase.reserve(values.size());
        for (const std::complex<double> &value : values) {
            height.push_back(std::log(amplitude_of(value)));
            phase.push_back(phase_degrees(value));
            if (std::isfinite(height.back()))
                top = std::max(top, height.back());
        }
        small = top + std::log(Small);
    }

    [[nodiscard]] double turn(std::size_t from, std::size_t to) const
    {
        return std::remainder(phase[to] - phase[from], 360.0);
    }

    /// Whether lines beside this point are not close enough.
    [[nodiscard]] bool bends(std::size_t at, double share) const
    {
        const double a = height[at - 1];
        const double b = height[at];
        const double c = height[at + 1];
        if (std::isnan(a + b + c))
            return false;
        const double floor = small - 1; // also of a zero
        const double before = std::max(a, floor);
        const double line = before + share * (std::max(c, floor) - before);
        const double miss = std::abs(std::max(b, floor) - line);
        if (std::max({a, b, c}) < small)
            return miss > Small_Height;
        const double to_here = turn(at - 1, at);
        const double on = turn(at, at + 1);
        return miss > Height || std::abs(to_here - share * (to_here + on)) > Degrees ||
               std::abs(to_here) > 90 || std::abs(on) > 90;
    }
};

/// Which of the steps from point to point have to be halved.
std::vector<bool> bent_steps(const std::vector<double> &frequencies,
                             const std::vector<Drawn> &curves)
{
    std::vector<double> place(frequencies.size());
    std::ranges::transform(frequencies, place.begin(), grid_place);
    std::vector<bool> bent(frequencies.size(), false);
    for (std::size_t at = 1; at + 1 < place.size(); ++at) {
        const double share = (place[at] - place[at - 1]) / (place[at + 1] - place[at - 1]);
        if (std::ranges::any_of(curves, [&](const Drawn &curve) { return curve.bends(at, share); }))
            bent[at - 1] = bent[at] = true;
    }
    return bent;
}

/// The frequencies in the middle of these steps, but of those that were halved often enough.
std::vector<double> middles(const std::vector<double> &frequencies, const std::vector<bool> &steps)
{
    static const double Least = std::pow(10.0, 1.5 / Per_Decade / (1 << Rounds));
    std::vector<double> found;
    for (std::size_t i = 0; i + 1 < frequencies.size(); ++i)
        if (steps[i] && frequencies[i + 1] > frequencies[i] * Least)
            found.push_back(written(std::sqrt(frequencies[i] * frequencies[i + 1])));
    return found;
}

/// Puts the values of `added` behind each of the steps.
template <class T>
void weave(std::vector<T> *all, const std::vector<T> &added, const std::vector<std::size_t> &behind)
{
    std::vector<T> woven;
    woven.reserve(all->size() + added.size());
    std::size_t next = 0;
    for (std::size_t i = 0; i < all->size(); ++i) {
        woven.push_back((*all)[i]);
        if (next < behind.size() && behind[next] == i)
            woven.push_back(added[next++]);
    }
    *all = std::move(woven);
}

void weave(Sampled *into, const std::vector<double> &frequencies, const Evaluation &more)
{
    std::vector<std::size_t> behind;
    behind.reserve(frequencies.size());
    for (const double f : frequencies)
        behind.push_back(static_cast<std::size_t>(std::ranges::upper_bound(into->frequencies, f) -
                                                  into->frequencies.begin() - 1));
    weave(&into->frequencies, frequencies, behind);
    weave(&into->evaluation.values, more.values, behind);
    for (std::size_t i = 0; i < more.stages.size(); ++i)
        weave(&into->evaluation.stages[i].values, more.stages[i].values, behind);
}

std::size_t coefficients_of(const Evaluation &evaluation)
{
    std::size_t sum = 1;
    for (const StageCurve &stage : evaluation.stages)
        sum += stage.filter ? size_of(stage.filter->shape()) : 1;
    return sum;
}

} // namespace

double grid_place(double frequency)
{
    const double place = Per_Decade * std::log10(frequency) + Grid_Zero;
    const double whole = std::round(place);
    return std::abs(place - whole) < 1e-5 ? whole : place;
}

std::vector<double> base_frequencies(const Response &response, double sample_rate)
{
    const double nyquist = sample_rate / 2;
    if (!(nyquist > std::pow(10.0, Lowest)))
        return {};
    const double end = written(std::min(nyquist, Highest));
    std::vector<double> grid;
    for (int k = Per_Decade * lowest_decade(response, end);; ++k) {
        const double frequency = written(std::pow(10.0, static_cast<double>(k) / Per_Decade));
        if (frequency >= end * (1 - 1e-9))
            break;
        grid.push_back(frequency);
    }
    // The last octave is where filters have their ripples and edges.
    for (int k = Last_Octave / 2 + 1; k < Last_Octave; ++k) {
        const double frequency = written(end * k / Last_Octave);
        const auto above = std::ranges::lower_bound(grid, frequency);
        if ((above == grid.end() || *above > frequency * 1.01) &&
            (above == grid.begin() || above[-1] < frequency * 0.99))
            grid.insert(above, frequency);
    }
    grid.push_back(end);
    return grid;
}

Evaluation Sampler::evaluate(const Response &response, const std::vector<double> &frequencies)
{
    const auto known = std::ranges::find(
        evaluators_, frequencies, [](const auto &e) -> const auto & { return e.first; });
    if (known != evaluators_.end())
        return known->second.evaluate_stages(response);
    if (evaluators_.size() >= Most_Evaluators)
        evaluators_.pop_front();
    evaluators_.emplace_back(frequencies, Evaluator(frequencies));
    return evaluators_.back().second.evaluate_stages(response);
}

Sampled Sampler::sample(const Response &response, double sample_rate)
{
    Sampled sampled;
    sampled.frequencies = base_frequencies(response, sample_rate);
    sampled.evaluation = evaluate(response, sampled.frequencies);
    return sampled;
}

void Sampler::refine(const Response &response, Sampled *sampled,
                     const std::vector<std::size_t> &stages)
{
    const std::size_t coefficients = coefficients_of(sampled->evaluation);
    std::size_t work = 0;
    for (int round = 0; round < Rounds && sampled->frequencies.size() > 2; ++round) {
        std::vector<Drawn> curves;
        curves.emplace_back(sampled->evaluation.values);
        for (const std::size_t stage : stages)
            curves.emplace_back(sampled->evaluation.stages[stage].values);
        const auto between =
            middles(sampled->frequencies, bent_steps(sampled->frequencies, curves));
        work += between.size() * coefficients;
        if (between.empty() || work > Most_Work ||
            sampled->frequencies.size() + between.size() > Most_Points)
            return;
        weave(sampled, between, evaluate(response, between));
    }
}

} // namespace quarl::html
