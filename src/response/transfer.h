// Transfer functions of filters, not normalised.
#pragma once

#include "response/fir.h"
#include "response/scaled.h"
#include <quarl/stages.h>

#include <span>
#include <vector>

namespace quarl
{

/// e^(-i angle / 2) at each frequency (Hz), for samples `interval` seconds apart.
std::vector<std::complex<double>> half_turns(double interval, std::span<const double> frequencies);

/// The transfer function of `shape` at each frequency (Hz), for samples `interval` seconds apart
/// where the filter is digital; `halves` are the half turns of these. NaN where it has no value; 1
/// for types that are not evaluated, generic responses and polynomials.
std::vector<Scaled> transfer(const FilterShape &shape, double interval,
                             std::span<const double> frequencies, HalfTurns halves);
/// The same, with half turns of its own.
std::vector<Scaled> transfer(const FilterShape &shape, double interval,
                             std::span<const double> frequencies);

} // namespace quarl
