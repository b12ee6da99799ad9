// Transfer functions of filters, not normalised.
#pragma once

#include "response/scaled.h"
#include <quarl/stages.h>

#include <span>
#include <vector>

namespace quarl
{

/// The transfer function of `shape` at each frequency (Hz), for samples `interval` seconds apart
/// where the filter is digital. NaN where it has no value; 1 for types that are not evaluated,
/// generic responses and polynomials.
std::vector<Scaled> transfer(const FilterShape &shape, double interval,
                             std::span<const double> frequencies);

} // namespace quarl
