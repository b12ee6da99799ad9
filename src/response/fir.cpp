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

/// A point on the unit circle for each lane.
template <std::size_t Lanes> struct Turn {
    std::array<double, Lanes> real{};
    std::array<double, Lanes> imag{};

    /// One after the other.
    [[nodiscard]] Turn then(const Turn &other) const
    {
        Turn both;
        for (std::size_t i = 0; i < Lanes; ++i) {
            both.real[i] = real[i] * other.real[i] - imag[i] * other.imag[i];
            both.imag[i] = real[i] * other.imag[i] + imag[i] * other.real[i];
        }
        return both;
    }
};

/// Horner's rule at e^(-i angle), from the `last` coefficient to the first, in as many lanes as
/// there is room for values, by groups of coefficients: a turn of the whole sum costs as much as
/// two coefficients of a group. A point on the unit circle keeps the rounding errors of earlier
/// turns as they are, so they only add up. Lanes without an angle are at 0.
template <std::size_t Lanes, class Coefficient>
void horner(Coefficient last, Coefficient end, HalfTurns halves, std::complex<double> *values)
{
    constexpr std::ptrdiff_t Group = 4;
    Turn<Lanes> once;
    for (std::size_t i = 0; i < halves.size(); ++i) {
        const double real = halves[i].real();
        const double imag = halves[i].imag();
        once.real[i] = (real - imag) * (real + imag);
        once.imag[i] = 2 * real * imag;
    }
    const Turn<Lanes> twice = once.then(once);
    const Turn<Lanes> thrice = twice.then(once);
    const Turn<Lanes> whole = twice.then(twice);
    std::array<double, Lanes> re{};
    std::array<double, Lanes> im{};
    const auto add = [&](double c3, double c2, double c1, double c0) {
        for (std::size_t i = 0; i < Lanes; ++i) {
            const double turned = re[i] * whole.real[i] - im[i] * whole.imag[i];
            im[i] = re[i] * whole.imag[i] + im[i] * whole.real[i] + c1 * once.imag[i] +
                    c2 * twice.imag[i] + c3 * thrice.imag[i];
            re[i] = turned + c0 + c1 * once.real[i] + c2 * twice.real[i] + c3 * thrice.real[i];
        }
    };
    if (const std::ptrdiff_t rest = (end - last) % Group; rest > 0) {
        add(0.0, rest > 2 ? last[rest - 3] : 0.0, rest > 1 ? last[rest - 2] : 0.0, last[rest - 1]);
        last += rest;
    }
    for (; last != end; last += Group)
        add(last[0], last[1], last[2], last[3]);
    for (std::size_t i = 0; i < halves.size(); ++i)
        values[i] = {re[i], im[i]};
}

/// The power series whose coefficients are those from the `last` one on.
template <class Coefficient>
std::vector<std::complex<double>> series(Coefficient last, Coefficient end, HalfTurns halves)
{
    std::vector<std::complex<double>> values(halves.size());
    if (halves.size() == 1)
        horner<1>(last, end, halves, values.data());
    else
        for (std::size_t at = 0; at < halves.size(); at += Most_Lanes)
            horner<Most_Lanes>(last, end,
                               halves.subspan(at, std::min(Most_Lanes, halves.size() - at)),
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
                                               HalfTurns halves)
{
    return series(coefficients.rbegin(), coefficients.rend(), halves);
}

std::vector<std::complex<double>> evaluate(const Taps &taps, HalfTurns halves)
{
    if (taps.coefficients.empty())
        return std::vector<std::complex<double>>(halves.size(), 1.0);
    if (taps.symmetry == Taps::Symmetry::None)
        return power_series(taps.coefficients, halves);
    // From the middle outwards: what is a half filter's value there, doubled, loses its imaginary
    // part to the other half.
    std::vector<std::complex<double>> values =
        series(taps.coefficients.begin(), taps.coefficients.end(), halves);
    for (std::size_t i = 0; i < halves.size(); ++i) {
        const std::complex<double> half = values[i];
        values[i] = taps.symmetry == Taps::Symmetry::Odd
                        ? 2 * half.real() - taps.coefficients.back()
                        : 2 * (half.real() * halves[i].real() - half.imag() * halves[i].imag());
    }
    return values;
}

} // namespace quarl
