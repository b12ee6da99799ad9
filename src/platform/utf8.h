// Names that users give: UTF-8, as far as they are.
#pragma once

#include <string_view>

namespace quarl
{

/// Whether `bytes` are UTF-8 without control characters and others that do not show.
bool is_plain_utf8(std::string_view bytes);

} // namespace quarl
