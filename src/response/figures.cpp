// Single numbers of responses, and the grid of their curves.
#include "response/fir.h"
#include "response/kind.h"
#include "response/transfer.h"
#include <quarl/response.h>

#include <cmath>
#include <numbers>

namespace quarl
{

namespace
{

constexpr double Not_A_Number = std::numeric_limits<double>::quiet_NaN();

double total(const Coefficients &shape) { return sum({Taps::Symmetry::None, shape.numerators}); }

double total(const Fir &shape)
{
    switch (kind_of(shape)) {
    case Kind::OddFir:
    case Kind::EvenFir:
        return sum(taps_of(shape));
    default:
        return sum({Taps::Symmetry::None, shape.coefficients});
    }
}

template <class Other> double total(const Other & /*shape*/) { return Not_A_Number; }

double grid_frequency(int k) { return std::pow(10.0, k / 20.0); }

constexpr int Grid_Begin = -60; ///< 0.001 Hz
constexpr int Grid_End = 140;   ///< 10 MHz

} // namespace

std::size_t frequency_grid_size(double sample_rate)
{
    int k = Grid_Begin;
    while (k <= Grid_End && grid_frequency(k) < sample_rate / 2)
        ++k;
    return k - Grid_Begin;
}

std::vector<double> frequency_grid(double sample_rate)
{
    std::vector<double> grid(frequency_grid_size(sample_rate));
    for (std::size_t i = 0; i < grid.size(); ++i)
        grid[i] = grid_frequency(static_cast<int>(i) + Grid_Begin);
    return grid;
}

double phase_degrees(std::complex<double> value)
{
    return std::arg(value) * (180 / std::numbers::pi);
}

double normalisation(const PolesZeros &shape, double input_rate)
{
    if (kind_of(shape) == Kind::Unexpected)
        return Not_A_Number;
    const double interval = input_rate == 0.0 ? 0.0 : 1 / input_rate;
    const Scaled value = transfer(shape, interval, std::span(&shape.frequency, 1)).front();
    return (value.magnitude() * balanced(shape.factor)).number().real();
}

double coefficient_sum(const FilterShape &shape)
{
    return std::visit([](const auto &held) { return total(held); }, shape);
}

} // namespace quarl
