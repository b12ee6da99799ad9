// Any bytes as text.
#pragma once

#include <string_view>

namespace quarl
{

/// Writes `bytes` in base64, filled with "=" at the end: four characters for each three, or rest of
/// three, bytes. Returns the end.
char *put_base64(char *to, std::string_view bytes);

} // namespace quarl
