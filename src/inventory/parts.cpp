#include "inventory/parts.h"

#include <algorithm>
#include <utility>

namespace quarl
{

namespace
{

/// Those of a list's entries that stood in the volume; what is behind them was promised only.
std::vector<double> entries(const std::vector<double> &list, int held)
{
    return {list.begin(), list.begin() + held};
}

/// The same of errors; empty when all are 0, as mostly.
std::vector<double> errors(const std::vector<double> &list, int held)
{
    if (std::all_of(list.begin(), list.begin() + held, [](double error) { return error == 0.0; }))
        return {};
    return entries(list, held);
}

std::vector<std::complex<double>> roots(const std::vector<Complex_t> &list, int held)
{
    std::vector<std::complex<double>> all;
    all.reserve(held);
    for (int i = 0; i < held; ++i)
        all.emplace_back(list[i].real, list[i].imag);
    return all;
}

std::vector<std::complex<double>> root_errors(const std::vector<Complex_t> &list, int held)
{
    if (std::all_of(list.begin(), list.begin() + held,
                    [](const Complex_t &error) { return error.real == 0.0 && error.imag == 0.0; }))
        return {};
    return roots(list, held);
}

template <class Blk> ResponseList list_of(const Blk &blk, int held)
{
    ResponseList list;
    list.entries.reserve(held);
    for (int i = 0; i < held; ++i)
        list.entries.push_back({blk.frequency[i], blk.amplitude[i], blk.phase[i],
                                blk.amplitude_error[i], blk.phase_error[i]});
    return list;
}

template <class Blk> GenericResponse corners_of(const Blk &blk)
{
    GenericResponse shape;
    shape.corners.reserve(blk.num_corners);
    for (int i = 0; i < blk.num_corners; ++i)
        shape.corners.push_back({blk.corner_freq[i], blk.corner_slope[i]});
    return shape;
}

template <class Blk> PolesZeros roots_of(const Blk &blk, int zeros, int poles)
{
    return {.type = blk.func_type,
            .factor = blk.normal_factor,
            .frequency = blk.normal_freq,
            .zeros = roots(blk.zero, zeros),
            .poles = roots(blk.pole, poles),
            .zero_errors = root_errors(blk.zero_error, zeros),
            .pole_errors = root_errors(blk.pole_error, poles)};
}

template <class Blk> Decimation rates_of(const Blk &blk)
{
    return {.input_rate = blk.samprate,
            .factor = blk.dec_factor,
            .offset = blk.dec_offset,
            .delay = blk.delay,
            .correction = blk.correction};
}

template <class Blk> Part filter_of(const Blk &blk, FilterShape &&shape, FilterMaker *make)
{
    return (*make)(std::move(shape), blk.input_units, blk.output_units);
}

template <class Blk> Part named_filter(const Blk &blk, FilterShape &&shape, FilterMaker *make)
{
    return (*make)(std::move(shape), blk.input_units, blk.output_units, blk.response_name);
}

Polynomial polynomial_of(const blk_062_t &blk)
{
    return {.approximation = blk.polynomial_approximation_type,
            .frequency_unit = blk.valid_frequency_units,
            .lower_frequency = blk.lower_valid_frequency_bound,
            .upper_frequency = blk.upper_valid_frequency_bound,
            .lower_bound = blk.lower_bound_of_approximation,
            .upper_bound = blk.upper_bound_of_approximation,
            .maximum_error = blk.maximum_absolute_error,
            .coefficients = blk.coef,
            .coefficient_errors = errors(blk.coef_error, blk.num_coef)};
}

} // namespace

Part FilterMaker::operator()(FilterShape shape, int input, int output, const char *name)
{
    return kept_(Filter(std::move(shape), {input, unit_(input)}, {output, unit_(output)}, name));
}

std::optional<StagePart> stage_part(const Item &item, FilterMaker *make)
{
    if (const auto *gain = item.get<blk_058_t>())
        return StagePart{gain->stage_num, Gain{gain->gain, gain->freq}};
    if (const auto *decimation = item.get<blk_057_t>())
        return StagePart{decimation->stage_num, rates_of(*decimation)};
    const auto part = [&](const auto &blk, FilterShape shape) {
        return StagePart{blk.stage_num, filter_of(blk, std::move(shape), make)};
    };
    if (const auto *fir = item.get<blk_061_t>())
        return StagePart{
            fir->stage_num,
            named_filter(*fir, Fir{fir->symmetry, entries(fir->coef, fir->num_coef_held)}, make)};
    if (const auto *blk = item.get<blk_054_t>())
        return part(*blk,
                    Coefficients{blk->func_type, entries(blk->numer_coef, blk->num_numer_held),
                                 entries(blk->denom_coef, blk->num_denom_held),
                                 errors(blk->numer_error, blk->num_numer_held),
                                 errors(blk->denom_error, blk->num_denom_held)});
    if (const auto *blk = item.get<blk_053_t>())
        return part(*blk, roots_of(*blk, blk->num_zeros_held, blk->num_poles_held));
    if (const auto *blk = item.get<blk_055_t>())
        return part(*blk, list_of(*blk, blk->num_resp_held));
    if (const auto *blk = item.get<blk_056_t>())
        return part(*blk, corners_of(*blk));
    if (const auto *blk = item.get<blk_062_t>())
        return part(*blk, polynomial_of(*blk));
    return std::nullopt;
}

std::optional<Part> dictionary_part(const Item &item, FilterMaker *make)
{
    if (const auto *fir = item.get<blk_041_t>())
        return named_filter(*fir, Fir{fir->symmetry, fir->coef}, make);
    if (const auto *roots = item.get<blk_043_t>())
        return named_filter(*roots, roots_of(*roots, roots->num_zeros, roots->num_poles), make);
    if (const auto *blk = item.get<blk_044_t>())
        return named_filter(*blk,
                            Coefficients{blk->func_type, blk->numer_coef, blk->denom_coef,
                                         errors(blk->numer_error, blk->num_numer),
                                         errors(blk->denom_error, blk->num_denom)},
                            make);
    if (const auto *list = item.get<blk_045_t>())
        return named_filter(*list, list_of(*list, list->num_resp), make);
    if (const auto *corners = item.get<blk_046_t>())
        return named_filter(*corners, corners_of(*corners), make);
    if (const auto *decimation = item.get<blk_047_t>())
        return rates_of(*decimation);
    if (const auto *gain = item.get<blk_048_t>())
        return Gain{gain->gain, gain->freq};
    return std::nullopt;
}

} // namespace quarl
