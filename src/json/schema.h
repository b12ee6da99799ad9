// The shape of the lines, as JSON Schema.
#pragma once

#include <string>

namespace quarl::json
{

/// The schema (draft 2020-12) of every line that print_item writes, made from the same
/// descriptions: a definition for each blockette type with a record, for other blockettes, for data
/// records and for input files.
std::string schema();

} // namespace quarl::json
