// The eight bytes with which every logical record begins.
#pragma once

#include <string_view>

namespace quarl
{

/// How the eight bytes look with which a logical record begins.
enum class HeaderLook {
    sound,
    fill,       ///< blanks, NULs and line feeds
    odd_number, ///< the sequence number is not all digits and blanks
    odd_type,   ///< the type is no letter of the standard
    none        ///< no header of a logical record
};
HeaderLook look_of(std::string_view header);

/// V, A, S or T: a record of control blockettes.
bool is_header_type(char type);

/// Blanks, NULs and line feeds only.
bool is_fill(std::string_view bytes);

} // namespace quarl
