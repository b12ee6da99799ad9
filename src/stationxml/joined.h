// Filters of a stage that several blockettes tell, and filters that cannot be told further.
#pragma once

#include <quarl/stages.h>
#include <string>
#include <vector>

namespace quarl
{

/// The filters of a stage: coefficients, lists and FIR filters that follow on one of their kind
/// continue it.
std::vector<FilterPtr> joined(std::vector<FilterPtr> filters);

/// Why there is no word for a filter in StationXML; "" when there is one.
std::string fault_of(const Filter &filter);

} // namespace quarl
