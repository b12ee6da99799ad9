// What the keys mean, in words.
#pragma once

#include <string_view>

namespace quarl::json
{

/// The meaning of a key in all objects that have it; "" for one that nobody has described.
std::string_view description_of(std::string_view key);

/// The field of the fixed header of a data record from which a key comes; 0: of none.
int header_field_of(std::string_view key);

} // namespace quarl::json
