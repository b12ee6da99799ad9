#include "response/fir.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>

namespace quarl
{

namespace
{

/// Coefficients given in full: those whose sum is off 1 are divided by it, and mirrored ones are
/// halved.
Taps in_full(const std::vector<double> &all)
{
    constexpr double Tolerance = 0.02;
    Taps taps(Taps::Symmetry::None, all);
    if (all.empty())
        return taps;
    const double total = std::accumulate(all.begin(), all.end(), 0.0);
    if (std::abs(total - 1.0) > Tolerance) {
        taps.divisor = total;
        taps.divided = all;
        for (double &coefficient : taps.divided)
            coefficient /= total;
        taps.coefficients = taps.divided;
    }
    const std::size_t half = all.size() / 2;
    if (!std::equal(all.begin(), all.begin() + half, all.rbegin()))
        return taps;
    taps.symmetry = all.size() % 2 == 0 ? Taps::Symmetry::Even : Taps::Symmetry::Odd;
    taps.coefficients = taps.coefficients.first(all.size() - half);
    return taps;
}

constexpr std::size_t Most_Lanes = 8; ///< angles worked on side by side, in vector registers

/// Horner's rule at e^(-i angle), from the `last` coefficient to the first, in as many lanes as
/// there is room for values. A point on the unit circle keeps the rounding errors of earlier turns
/// as they are, so they only add up. Lanes without an angle are at 0.
template <std::size_t Lanes, class Coefficient>
void horner(Coefficient last, Coefficient end, std::span<const double> angles,
            std::complex<double> *values)
{
    std::array<double, Lanes> cosine{};
    std::array<double, Lanes> sine{};
    for (std::size_t i = 0; i < angles.size(); ++i) {
        cosine[i] = std::cos(angles[i]);
        sine[i] = -std::sin(angles[i]);
    }
    std::array<double, Lanes> re{};
    std::array<double, Lanes> im{};
    for (auto coefficient = last; coefficient != end; ++coefficient) {
        for (std::size_t i = 0; i < Lanes; ++i) {
            const double turned = re[i] * cosine[i] - im[i] * sine[i] + *coefficient;
            im[i] = re[i] * sine[i] + im[i] * cosine[i];
            re[i] = turned;
        }
    }
    for (std::size_t i = 0; i < angles.size(); ++i)
        values[i] = {re[i], im[i]};
}

/// The power series whose coefficients are those from the `last` one on.
template <class Coefficient>
std::vector<std::complex<double>> series(Coefficient last, Coefficient end,
                                         std::span<const double> angles)
{
    std::vector<std::complex<double>> values(angles.size());
    if (angles.size() == 1)
        horner<1>(last, end, angles, values.data());
    else
        for (std::size_t at = 0; at < angles.size(); at += Most_Lanes)
            horner<Most_Lanes>(last, end,
                               angles.subspan(at, std::min(Most_Lanes, angles.size() - at)),
                               &values[at]);
    return values;
}

} // namespace

Taps taps_of(const Coefficients &shape) { return in_full(shape.numerators); }

Taps taps_of(const Fir &shape)
{
    if (shape.symmetry == 'B')
        return {Taps::Symmetry::Odd, shape.coefficients};
    if (shape.symmetry == 'C')
        return {Taps::Symmetry::Even, shape.coefficients};
    return in_full(shape.coefficients);
}

double sum(const Taps &taps)
{
    const std::span<const double> all = taps.coefficients;
    const double total = std::accumulate(all.begin(), all.end(), 0.0);
    if (all.empty() || taps.symmetry == Taps::Symmetry::None)
        return total;
    return taps.symmetry == Taps::Symmetry::Odd ? 2 * total - all.back() : 2 * total;
}

std::vector<std::complex<double>> power_series(std::span<const double> coefficients,
                                               std::span<const double> angles)
{
    return series(coefficients.rbegin(), coefficients.rend(), angles);
}

std::vector<std::complex<double>> evaluate(const Taps &taps, std::span<const double> angles)
{
    if (taps.coefficients.empty())
        return std::vector<std::complex<double>>(angles.size(), 1.0);
    if (taps.symmetry == Taps::Symmetry::None)
        return power_series(taps.coefficients, angles);
    // From the middle outwards: what is a half filter's value there, doubled, loses its imaginary
    // part to the other half.
    std::vector<std::complex<double>> values =
        series(taps.coefficients.begin(), taps.coefficients.end(), angles);
    for (std::size_t i = 0; i < angles.size(); ++i) {
        const std::complex<double> half = values[i];
        values[i] = taps.symmetry == Taps::Symmetry::Odd
                        ? 2 * half.real() - taps.coefficients.back()
                        : 2 * (half.real() * std::cos(angles[i] / 2) +
                               half.imag() * std::sin(angles[i] / 2));
    }
    return values;
}

} // namespace quarl
