#include "html/drawn.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <quarl/response.h>

namespace quarl::html
{

namespace
{

/// Follows a curve from a point on, and knows which straight lines pass all later ones closely.
class Fan
{
public:
    Fan(const std::vector<double> *values, std::size_t from, double tolerance)
        : values_(values), from_(from), tolerance_(tolerance)
    {
    }
    /// Whether the line to the point `at` passes those in between; called with each in turn.
    bool reaches(std::size_t at)
    {
        const auto steps = static_cast<double>(at - from_);
        const double rise = (*values_)[at] - (*values_)[from_];
        ended_ |= !std::isfinite(rise);
        const bool passes = !ended_ && rise >= lowest_ * steps && rise <= highest_ * steps;
        lowest_ = std::max(lowest_, (rise - tolerance_) / steps);
        highest_ = std::min(highest_, (rise + tolerance_) / steps);
        return passes;
    }

private:
    const std::vector<double> *values_;
    std::size_t from_;
    double tolerance_;
    bool ended_ = false; ///< by a point without a value
    double lowest_ = -std::numeric_limits<double>::infinity(); ///< per step
    double highest_ = std::numeric_limits<double>::infinity();
};

double amplitude_of(std::complex<double> value)
{
    const double square = std::norm(value);
    return std::isnormal(square) ? std::sqrt(square) : std::abs(value);
}

/// Most filters are symmetric and turn nothing.
double phase_of(std::complex<double> value)
{
    return value.imag() == 0.0 && value.real() >= 0.0 ? 0.0 : phase_degrees(value);
}

} // namespace

std::vector<DrawnPoint> drawn(std::span<const std::complex<double>> values, double gain)
{
    constexpr double Height = 0.005; // of the natural logarithm
    constexpr double Degrees = 0.5;
    std::vector<DrawnPoint> points;
    if (values.empty())
        return points;
    std::vector<double> heights;
    std::vector<double> phases;
    heights.reserve(values.size());
    phases.reserve(values.size());
    for (const std::complex<double> &value : values) {
        heights.push_back(std::log(amplitude_of(value)));
        phases.push_back(phase_of(gain < 0.0 ? -value : value));
    }
    const auto add = [&](std::size_t i) {
        const auto at = static_cast<std::int32_t>(i);
        if (points.empty() || points.back().at != at)
            points.push_back({at, static_cast<float>(amplitude_of(values[i]) / std::abs(gain)),
                              static_cast<float>(phases[i])});
    };
    Fan height(&heights, 0, Height);
    Fan phase(&phases, 0, Degrees);
    add(0);
    for (std::size_t i = 1; i < values.size(); ++i) {
        const bool rises = height.reaches(i);
        if (phase.reaches(i) && rises)
            continue;
        add(i - 1);
        height = Fan(&heights, i - 1, Height);
        phase = Fan(&phases, i - 1, Degrees);
        (void)height.reaches(i);
        (void)phase.reaches(i);
    }
    add(values.size() - 1);
    points.shrink_to_fit();
    return points;
}

} // namespace quarl::html
