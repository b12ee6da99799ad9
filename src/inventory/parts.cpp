#include "inventory/parts.h"

#include <algorithm>

namespace quarl
{

namespace
{

std::vector<std::complex<double>> roots(const std::vector<Complex_t> &from)
{
    std::vector<std::complex<double>> all;
    all.reserve(from.size());
    for (const Complex_t &root : from)
        all.emplace_back(root.real, root.imag);
    return all;
}

} // namespace

PolesZeros shape_of(const blk_053_t &blk)
{
    return {.type = blk.func_type,
            .factor = blk.normal_factor,
            .frequency = blk.normal_freq,
            .zeros = roots(blk.zero),
            .poles = roots(blk.pole)};
}

Coefficients shape_of(const blk_054_t &blk)
{
    return {.type = blk.func_type, .numerators = blk.numer_coef, .denominators = blk.denom_coef};
}

ResponseList shape_of(const blk_055_t &blk)
{
    ResponseList list;
    const std::size_t count =
        std::min({blk.frequency.size(), blk.amplitude.size(), blk.phase.size()});
    list.entries.reserve(count);
    for (std::size_t i = 0; i < count; ++i)
        list.entries.push_back({blk.frequency[i], blk.amplitude[i], blk.phase[i]});
    return list;
}

Fir shape_of(const blk_061_t &blk) { return {.symmetry = blk.symmetry, .coefficients = blk.coef}; }

Polynomial shape_of(const blk_062_t &blk)
{
    return {.approximation = blk.polynomial_approximation_type,
            .frequency_unit = blk.valid_frequency_units,
            .lower_frequency = blk.lower_valid_frequency_bound,
            .upper_frequency = blk.upper_valid_frequency_bound,
            .lower_bound = blk.lower_bound_of_approximation,
            .upper_bound = blk.upper_bound_of_approximation,
            .maximum_error = blk.maximum_absolute_error,
            .coefficients = blk.coef};
}

Decimation decimation_of(const blk_057_t &blk)
{
    return {.input_rate = blk.samprate,
            .factor = blk.dec_factor,
            .offset = blk.dec_offset,
            .delay = blk.delay,
            .correction = blk.correction};
}

Gain gain_of(const blk_058_t &blk) { return {.value = blk.gain, .frequency = blk.freq}; }

} // namespace quarl
