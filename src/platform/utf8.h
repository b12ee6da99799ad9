// Names that users give: UTF-8, as far as they are.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace quarl
{

struct Utf8Character {
    std::size_t size = 0;   ///< bytes; 0: none begins here
    std::uint32_t code = 0; ///< of Unicode, no surrogate
};

/// The character with which `bytes` begin, which are not empty.
Utf8Character utf8_character(std::string_view bytes);

/// Bytes of the UTF-8 character that `bytes` begin with; 0 when there is none, or one that does not
/// show.
std::size_t plain_character(std::string_view bytes);
/// Whether `bytes` are UTF-8.
bool is_utf8(std::string_view bytes);

/// Whether `bytes` are UTF-8 without control characters and others that do not show.
bool is_plain_utf8(std::string_view bytes);

} // namespace quarl
