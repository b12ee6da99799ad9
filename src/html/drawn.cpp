#include "html/drawn.h"

#include <algorithm>
#include <limits>

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
        const bool passes = rise >= lowest_ * steps && rise <= highest_ * steps;
        lowest_ = std::max(lowest_, (rise - tolerance_) / steps);
        highest_ = std::min(highest_, (rise + tolerance_) / steps);
        return passes;
    }

private:
    const std::vector<double> *values_;
    std::size_t from_;
    double tolerance_;
    double lowest_ = -std::numeric_limits<double>::infinity(); ///< per step
    double highest_ = std::numeric_limits<double>::infinity();
};

} // namespace

std::vector<std::size_t> corners(const Drawn &curve)
{
    constexpr double Height = 0.005; // of the natural logarithm
    constexpr double Degrees = 0.5;
    std::vector<std::size_t> at = {0};
    Fan height(&curve.height, 0, Height);
    Fan phase(&curve.phase, 0, Degrees);
    for (std::size_t i = 1; i < curve.height.size(); ++i) {
        const bool rises = height.reaches(i);
        if (phase.reaches(i) && rises)
            continue;
        if (at.back() != i - 1)
            at.push_back(i - 1);
        height = Fan(&curve.height, i - 1, Height);
        phase = Fan(&curve.phase, i - 1, Degrees);
        (void)height.reaches(i);
        (void)phase.reaches(i);
    }
    if (at.back() + 1 != curve.height.size())
        at.push_back(curve.height.size() - 1);
    return at;
}

} // namespace quarl::html
