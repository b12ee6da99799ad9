#include "response/transfer.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <numbers>

namespace quarl
{

namespace
{

using Complexes = std::vector<std::complex<double>>;
using Frequencies = std::span<const double>;

constexpr double Two_Pi = 2 * std::numbers::pi;

std::vector<Scaled> scaled(const Complexes &numbers)
{
    std::vector<Scaled> values;
    values.reserve(numbers.size());
    for (const std::complex<double> number : numbers)
        values.push_back(balanced(number));
    return values;
}

/// Where in the plane of the poles and zeros a frequency lies.
std::complex<double> position(char type, double frequency, double interval)
{
    if (type == 'D')
        return std::polar(1.0, Two_Pi * frequency * interval);
    return {0.0, type == 'A' ? Two_Pi * frequency : frequency};
}

Scaled distances(std::complex<double> from, const Complexes &roots)
{
    Scaled product;
    for (const std::complex<double> root : roots)
        product = product * balanced(from - root);
    return product;
}

std::vector<Scaled> values(const PolesZeros &shape, double interval, Frequencies frequencies,
                           HalfTurns /*halves*/)
{
    std::vector<Scaled> all;
    all.reserve(frequencies.size());
    for (const double frequency : frequencies) {
        const std::complex<double> s = position(shape.type, frequency, interval);
        all.push_back(distances(s, shape.zeros) / distances(s, shape.poles));
    }
    return all;
}

std::vector<Scaled> values(const Coefficients &shape, double /*interval*/,
                           Frequencies /*frequencies*/, HalfTurns halves)
{
    if (shape.denominators.empty())
        return scaled(evaluate(taps_of(shape), halves));
    std::vector<Scaled> all = scaled(power_series(shape.numerators, halves));
    const std::vector<Scaled> below = scaled(power_series(shape.denominators, halves));
    std::ranges::transform(all, below, all.begin(), std::divides<>());
    return all;
}

std::vector<Scaled> values(const Fir &shape, double /*interval*/, Frequencies /*frequencies*/,
                           HalfTurns halves)
{
    return scaled(evaluate(taps_of(shape), halves));
}

std::complex<double> from_degrees(double amplitude, double degrees)
{
    const double phase = degrees * (Two_Pi / 360);
    return {amplitude * std::cos(phase), amplitude * std::sin(phase)};
}

constexpr double Not_A_Number = std::numeric_limits<double>::quiet_NaN();

/// Between two entries, at `frequency`. NaN where one has no logarithm.
std::complex<double> between(const ResponseList::Entry &a, const ResponseList::Entry &b,
                             double frequency)
{
    if (!(a.frequency > 0.0 && a.amplitude > 0.0 && b.amplitude > 0.0))
        return Not_A_Number;
    const double share = std::log(frequency / a.frequency) / std::log(b.frequency / a.frequency);
    const double amplitude =
        std::exp(std::lerp(std::log(a.amplitude), std::log(b.amplitude), share));
    return from_degrees(amplitude, a.phase + share * std::remainder(b.phase - a.phase, 360.0));
}

std::complex<double> look_up(const std::vector<ResponseList::Entry> &sorted, double frequency)
{
    const auto above =
        std::ranges::lower_bound(sorted, frequency, {}, &ResponseList::Entry::frequency);
    if (above != sorted.end() && above->frequency == frequency)
        return from_degrees(above->amplitude, above->phase);
    if (above == sorted.begin() || above == sorted.end())
        return Not_A_Number;
    return between(above[-1], *above, frequency);
}

std::vector<Scaled> values(const ResponseList &shape, double /*interval*/, Frequencies frequencies,
                           HalfTurns /*halves*/)
{
    std::vector<ResponseList::Entry> sorted = shape.entries;
    // A frequency that is no number would upset the order, and answers to none.
    std::erase_if(sorted, [](const auto &entry) { return std::isnan(entry.frequency); });
    std::ranges::stable_sort(sorted, {}, &ResponseList::Entry::frequency);
    std::vector<Scaled> all;
    all.reserve(frequencies.size());
    for (const double frequency : frequencies)
        all.push_back(balanced(look_up(sorted, frequency)));
    return all;
}

template <class Other>
std::vector<Scaled> values(const Other & /*shape*/, double /*interval*/, Frequencies frequencies,
                           HalfTurns /*halves*/)
{
    return std::vector<Scaled>(frequencies.size());
}

} // namespace

std::vector<std::complex<double>> half_turns(double interval, Frequencies frequencies)
{
    std::vector<std::complex<double>> halves;
    halves.reserve(frequencies.size());
    for (const double frequency : frequencies) {
        const double angle = std::numbers::pi * frequency * interval;
        halves.emplace_back(std::cos(angle), -std::sin(angle));
    }
    return halves;
}

std::vector<Scaled> transfer(const FilterShape &shape, double interval, Frequencies frequencies,
                             HalfTurns halves)
{
    return std::visit([&](const auto &held) { return values(held, interval, frequencies, halves); },
                      shape);
}

std::vector<Scaled> transfer(const FilterShape &shape, double interval, Frequencies frequencies)
{
    return transfer(shape, interval, frequencies, half_turns(interval, frequencies));
}

} // namespace quarl
