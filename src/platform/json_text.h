// Texts of JSON.
#pragma once

#include <string>
#include <string_view>

namespace quarl
{

/// `text` in quotes, escaped; bytes that are not ASCII stand as the characters of Latin 1, so that
/// the result is UTF-8 whatever the volume holds.
std::string json_text(std::string_view text);

} // namespace quarl
