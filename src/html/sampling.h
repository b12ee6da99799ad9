// The frequencies that show a response: a grid that suits sensor and sample rate, with points in
// between where a curve bends, so that lines follow it.
#pragma once

#include <deque>
#include <functional>
#include <quarl/response.h>
#include <utility>
#include <vector>

namespace quarl::html
{

/// As many significant digits of frequencies are written, and evaluated.
constexpr int Frequency_Digits = 8;

/// 10^(k/20) Hz from 0.001 Hz, or as much below as the slowest pole asks for, to half the sample
/// rate, itself one of them, with more in the last octave. Empty when there is nothing below that.
std::vector<double> base_frequencies(const Response &response, double sample_rate);

/// Where a frequency lies on the grid: i stands for 10^((i-60)/20) Hz.
double grid_place(double frequency);

/// A response at frequencies in rising order.
struct Sampled {
    std::vector<double> frequencies;
    Evaluation evaluation;
};

/// Evaluates responses; what a few evaluations have in common is evaluated once.
class Sampler
{
public:
    /// On the grid.
    Sampled sample(const Response &response, double sample_rate);
    /// Adds points between which lines of the amplitude's logarithm and of the phase follow the
    /// whole, and the stages' curves of these indexes.
    void refine(const Response &response, Sampled *sampled, const std::vector<std::size_t> &stages);

private:
    Evaluation evaluate(const Response &response, const std::vector<double> &frequencies);

    std::deque<std::pair<std::vector<double>, Evaluator>> evaluators_; ///< by frequencies
};

} // namespace quarl::html
