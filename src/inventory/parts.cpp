#include "inventory/parts.h"

#include <algorithm>
#include <utility>

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

template <class Blk> ResponseList list_of(const Blk &blk)
{
    ResponseList list;
    const std::size_t count =
        std::min({blk.frequency.size(), blk.amplitude.size(), blk.phase.size()});
    list.entries.reserve(count);
    for (std::size_t i = 0; i < count; ++i)
        list.entries.push_back({blk.frequency[i], blk.amplitude[i], blk.phase[i]});
    return list;
}

template <class Blk> GenericResponse corners_of(const Blk &blk)
{
    GenericResponse shape;
    const std::size_t count = std::min(blk.corner_freq.size(), blk.corner_slope.size());
    shape.corners.reserve(count);
    for (std::size_t i = 0; i < count; ++i)
        shape.corners.push_back({blk.corner_freq[i], blk.corner_slope[i]});
    return shape;
}

template <class Blk> PolesZeros roots_of(const Blk &blk)
{
    return {.type = blk.func_type,
            .factor = blk.normal_factor,
            .frequency = blk.normal_freq,
            .zeros = roots(blk.zero),
            .poles = roots(blk.pole)};
}

template <class Blk> Decimation rates_of(const Blk &blk)
{
    return {.input_rate = blk.samprate,
            .factor = blk.dec_factor,
            .offset = blk.dec_offset,
            .delay = blk.delay,
            .correction = blk.correction};
}

/// A filter's coefficients end where its blockette ends, whatever its count says.
void keep_held(std::vector<double> *coefficients, std::size_t before, std::size_t size, int length)
{
    const auto whole = static_cast<std::size_t>(std::max(length, 0));
    const std::size_t held = whole > before ? (whole - before) / size : 0;
    if (held < coefficients->size())
        coefficients->resize(held);
}

template <class Blk> Part filter_of(const Blk &blk, FilterShape &&shape, FilterMaker *make)
{
    return (*make)(std::move(shape), blk.input_units, blk.output_units);
}

template <class Blk> Part named_filter(const Blk &blk, FilterShape &&shape, FilterMaker *make)
{
    return (*make)(std::move(shape), blk.input_units, blk.output_units, blk.response_name);
}

StagePart part_of(const blk_054_t &blk, FilterMaker *make)
{
    constexpr std::size_t Before = 20;
    Coefficients shape = shape_of(blk);
    keep_held(&shape.numerators, Before, 24, blk.length);
    return {blk.stage_num, filter_of(blk, std::move(shape), make)};
}

StagePart part_of(const blk_061_t &blk, FilterMaker *make)
{
    const std::size_t before = 21 + std::string_view(blk.response_name).size();
    Fir shape = shape_of(blk);
    keep_held(&shape.coefficients, before, 14, blk.length);
    return {blk.stage_num, named_filter(blk, std::move(shape), make)};
}

} // namespace

PolesZeros shape_of(const blk_053_t &blk) { return roots_of(blk); }

Coefficients shape_of(const blk_054_t &blk)
{
    return {.type = blk.func_type, .numerators = blk.numer_coef, .denominators = blk.denom_coef};
}

ResponseList shape_of(const blk_055_t &blk) { return list_of(blk); }

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

Decimation decimation_of(const blk_057_t &blk) { return rates_of(blk); }

Gain gain_of(const blk_058_t &blk) { return {.value = blk.gain, .frequency = blk.freq}; }

Part FilterMaker::operator()(FilterShape shape, int input, int output, const char *name)
{
    return kept_(Filter(std::move(shape), {input, unit_(input)}, {output, unit_(output)}, name));
}

std::optional<StagePart> stage_part(const Item &item, FilterMaker *make)
{
    if (const auto *gain = item.get<blk_058_t>())
        return StagePart{gain->stage_num, gain_of(*gain)};
    if (const auto *decimation = item.get<blk_057_t>())
        return StagePart{decimation->stage_num, decimation_of(*decimation)};
    if (const auto *fir = item.get<blk_061_t>())
        return part_of(*fir, make);
    if (const auto *coefficients = item.get<blk_054_t>())
        return part_of(*coefficients, make);
    if (const auto *roots = item.get<blk_053_t>())
        return StagePart{roots->stage_num, filter_of(*roots, shape_of(*roots), make)};
    if (const auto *list = item.get<blk_055_t>())
        return StagePart{list->stage_num, filter_of(*list, shape_of(*list), make)};
    if (const auto *corners = item.get<blk_056_t>())
        return StagePart{corners->stage_num, filter_of(*corners, corners_of(*corners), make)};
    if (const auto *polynomial = item.get<blk_062_t>())
        return StagePart{polynomial->stage_num,
                         filter_of(*polynomial, shape_of(*polynomial), make)};
    return std::nullopt;
}

std::optional<Part> dictionary_part(const Item &item, FilterMaker *make)
{
    if (const auto *fir = item.get<blk_041_t>())
        return named_filter(*fir, Fir{fir->symmetry, fir->coef}, make);
    if (const auto *roots = item.get<blk_043_t>())
        return named_filter(*roots, roots_of(*roots), make);
    if (const auto *blk = item.get<blk_044_t>())
        return named_filter(*blk, Coefficients{blk->func_type, blk->numer_coef, blk->denom_coef},
                            make);
    if (const auto *list = item.get<blk_045_t>())
        return named_filter(*list, list_of(*list), make);
    if (const auto *corners = item.get<blk_046_t>())
        return named_filter(*corners, corners_of(*corners), make);
    if (const auto *decimation = item.get<blk_047_t>())
        return rates_of(*decimation);
    if (const auto *gain = item.get<blk_048_t>())
        return Gain{gain->gain, gain->freq};
    return std::nullopt;
}

} // namespace quarl
