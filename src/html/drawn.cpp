#include "html/drawn.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <quarl/response.h>

namespace quarl::html
{

namespace
{

constexpr std::int32_t Step = 2; ///< of the grid: ten points a decade are enough to the eye

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
    const double square = std::norm(value);
    const double amplitude = std::isnormal(square) ? std::sqrt(square) : std::abs(value);
    // Most filters are symmetric and turn nothing.
    const double phase = value.imag() != 0.0 || std::isnan(value.real()) ? phase_degrees(value)
                         : value.real() < 0.0                            ? 180.0
                                                                         : 0.0;
    return {
        {static_cast<std::int32_t>(at), static_cast<float>(amplitude), static_cast<float>(phase)},
        std::log(amplitude)};
}

std::vector<Sample> samples(std::span<const std::complex<double>> values, double gain)
{
    std::vector<Sample> all;
    all.reserve(values.size() / Step + 2);
    for (std::size_t at = 0; at < values.size(); at += Step)
        all.push_back(sample(values[at], at, gain));
    if (values.size() % Step == 0 && !values.empty())
        all.push_back(sample(values.back(), values.size() - 1, gain));
    return all;
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

std::vector<DrawnPoint> drawn(std::span<const std::complex<double>> values, double gain)
{
    std::vector<DrawnPoint> points;
    const std::vector<Sample> all = samples(values, gain);
    if (all.empty())
        return points;
    points.push_back(all.front().point);
    Lines lines(all.front());
    for (std::size_t i = 1; i < all.size(); ++i) {
        if (lines.reach(all[i]))
            continue;
        if (points.back().at != all[i - 1].point.at)
            points.push_back(all[i - 1].point);
        lines = Lines(all[i - 1]);
        (void)lines.reach(all[i]);
    }
    if (points.back().at != all.back().point.at)
        points.push_back(all.back().point);
    points.shrink_to_fit();
    return points;
}

} // namespace quarl::html
