#include "html/drawn.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <quarl/response.h>

namespace quarl::html
{

namespace
{

constexpr std::size_t Step = 2; ///< of the grid: ten points a decade are enough to the eye

/// Follows a curve from a point on, and knows which straight lines pass all later ones closely.
class Fan
{
public:
    Fan(double from, double tolerance) : from_(from), tolerance_(tolerance) {}

    /// Whether the line to `value`, so many steps on, passes those in between; called with each.
    bool reaches(double value, double steps)
    {
        const double rise = value - from_;
        ended_ |= !std::isfinite(rise);
        const bool passes = !ended_ && rise >= lowest_ * steps && rise <= highest_ * steps;
        const double per_step = 1 / steps;
        lowest_ = std::max(lowest_, (rise - tolerance_) * per_step);
        highest_ = std::min(highest_, (rise + tolerance_) * per_step);
        return passes;
    }

private:
    double from_;
    double tolerance_;
    bool ended_ = false;                                       ///< by a point without a value
    double lowest_ = -std::numeric_limits<double>::infinity(); ///< per step
    double highest_ = std::numeric_limits<double>::infinity();
};

/// A point, with the height at which it is drawn.
struct Sample {
    DrawnPoint point;
    double height;
};

Sample sample(std::complex<double> value, std::size_t at, double gain)
{
    value /= gain;
    const double amplitude = amplitude_of(value);
    // Most filters are symmetric and turn nothing.
    const double phase = value.imag() != 0.0 || std::isnan(value.real()) ? phase_degrees(value)
                         : value.real() < 0.0                            ? 180.0
                                                                         : 0.0;
    return {
        {static_cast<std::int32_t>(at), static_cast<float>(amplitude), static_cast<float>(phase)},
        std::log(amplitude)};
}

/// The two lines that are drawn from a point on.
class Lines
{
public:
    explicit Lines(const Sample &from)
        : at_(from.point.at), height_(from.height, Height), phase_(from.point.phase, Degrees)
    {
    }
    bool reach(const Sample &sample)
    {
        const double steps = sample.point.at - at_;
        const bool rises = height_.reaches(sample.height, steps);
        return phase_.reaches(sample.point.phase, steps) && rises;
    }

private:
    static constexpr double Height = 0.005; // of the natural logarithm
    static constexpr double Degrees = 0.5;
    std::int32_t at_;
    Fan height_;
    Fan phase_;
};

} // namespace

void add_drawn(std::span<const std::complex<double>> values, double gain,
               std::vector<DrawnPoint> *points)
{
    if (values.empty())
        return;
    Sample before = sample(values[0], 0, gain);
    points->push_back(before.point);
    Lines lines(before);
    for (std::size_t at = 0; at + 1 < values.size();) {
        at = std::min(at + Step, values.size() - 1);
        const Sample next = sample(values[at], at, gain);
        if (!lines.reach(next)) {
            if (points->back().at != before.point.at)
                points->push_back(before.point);
            lines = Lines(before);
            (void)lines.reach(next);
        }
        before = next;
    }
    if (points->back().at != before.point.at)
        points->push_back(before.point);
}

} // namespace quarl::html
