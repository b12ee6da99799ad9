// FIR filters: coefficients unfolded, divided by their sum, recognised as symmetric; evaluated.
#pragma once

#include <quarl/stages.h>

#include <complex>
#include <span>
#include <vector>

namespace quarl
{

/// The coefficients that are to be evaluated; those of the shape, which has to stay, or `divided`.
struct Taps {
    enum class Symmetry {
        None, ///< `coefficients` is all there is
        Odd,  ///< the first half and the middle
        Even  ///< the first half
    };
    Taps() = default;
    Taps(Symmetry kind, std::span<const double> given) : symmetry(kind), coefficients(given) {}
    Taps(Taps &&) = default;
    Taps &operator=(Taps &&) = default;
    Taps(const Taps &) = delete;
    Taps &operator=(const Taps &) = delete;
    ~Taps() = default;

    Symmetry symmetry = Symmetry::None;
    std::span<const double> coefficients;
    std::vector<double> divided;
    double divisor = 1.0; ///< the sum that the coefficients were divided by; 1: they were not
};

/// Of a shape of coefficients without denominators, or of a FIR filter.
Taps taps_of(const Coefficients &shape);
Taps taps_of(const Fir &shape);

/// Sum of the coefficients, both halves of symmetric ones.
double sum(const Taps &taps);

/// Points on the unit circle: e^(-i angle / 2) for each angle per sample. Filters of one rate share
/// them.
using HalfTurns = std::span<const std::complex<double>>;

/// The transfer function at e^(-i angle), for each angle per sample. That of a symmetric filter is
/// real: its delay of half its length is taken back. 1 without coefficients.
std::vector<std::complex<double>> evaluate(const Taps &taps, HalfTurns halves);

/// Sum of coefficient k times e^(-i k angle) for each angle, within 1e-15 times their number of the
/// sum of their magnitudes.
std::vector<std::complex<double>> power_series(std::span<const double> coefficients,
                                               HalfTurns halves);

} // namespace quarl
