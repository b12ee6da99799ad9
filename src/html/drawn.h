// Curves as they are drawn: with the points alone that straight lines between them need.
#pragma once

#include <cstddef>
#include <vector>

namespace quarl::html
{

/// A curve as it is drawn: logarithm of the amplitude and phase, one value per step of the grid.
struct Drawn {
    std::vector<double> height;
    std::vector<double> phase;
};

/// The points between which straight lines are close to the curve. A point that has no value is
/// one of them.
std::vector<std::size_t> corners(const Drawn &curve);

} // namespace quarl::html
