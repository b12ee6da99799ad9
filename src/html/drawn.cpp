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
    double phase;
};

/// `before` is the phase of the point in front of it, from which it turns by half a circle at most.
Sample sample(std::complex<double> value, double at, double gain, double before)
{
    value /= gain;
    const double amplitude = amplitude_of(value);
    // Most filters are symmetric and turn nothing.
    double phase = value.imag() != 0.0 || std::isnan(value.real()) ? phase_degrees(value)
                   : value.real() < 0.0                            ? 180.0
                                                                   : 0.0;
    if (std::isfinite(before) && std::isfinite(phase))
        phase = before + std::remainder(phase - before, 360.0);
    return {
        {at, static_cast<float>(amplitude), static_cast<float>(phase)}, std::log(amplitude), phase};
}

/// The two lines that are drawn from a point on.
class Lines
{
public:
    explicit Lines(const Sample &from)
        : at_(from.point.at), height_(from.height, Height), phase_(from.phase, Degrees)
    {
    }
    bool reach(const Sample &sample)
    {
        const double steps = sample.point.at - at_;
        const bool rises = height_.reaches(sample.height, steps);
        return phase_.reaches(sample.phase, steps) && rises;
    }

private:
    static constexpr double Height = 0.003; // of the natural logarithm
    static constexpr double Degrees = 0.25;
    double at_;
    Fan height_;
    Fan phase_;
};

} // namespace

void add_drawn(std::span<const double> places, std::span<const std::complex<double>> values,
               double gain, std::vector<DrawnPoint> *points)
{
    if (values.empty())
        return;
    Sample before = sample(values[0], places[0], gain, 0.0);
    points->push_back(before.point);
    Lines lines(before);
    for (std::size_t i = 1; i < values.size(); ++i) {
        const Sample next = sample(values[i], places[i], gain, before.phase);
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
