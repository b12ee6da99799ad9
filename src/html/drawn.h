// Curves as they are drawn: with the points alone that straight lines between them need.
#pragma once

#include <cmath>
#include <complex>
#include <span>
#include <vector>

namespace quarl::html
{

/// Faster than std::abs for numbers of usual size.
inline double amplitude_of(std::complex<double> value)
{
    const double square = std::norm(value);
    return std::isnormal(square) ? std::sqrt(square) : std::abs(value);
}

/// A point of a curve, and where on the grid of frequencies it lies.
struct DrawnPoint {
    double at;
    float amplitude;
    float phase; ///< degrees; goes on beyond 180 where the curve does
};

/// Adds the points of a curve, given by its values times `gain` at these places, between which
/// straight lines (of the amplitude's logarithm and the phase) are close to it. A point without a
/// value is one of them.
void add_drawn(std::span<const double> places, std::span<const std::complex<double>> values,
               double gain, std::vector<DrawnPoint> *points);

} // namespace quarl::html
