// Real numbers read from text, bit for bit as the C library does it in the "C" locale. The locale
// of the program that uses the library counts for nothing here.
#pragma once

#include <cstddef>
#include <string_view>

namespace quarl
{

/// Reads the longest leading real number of `text` as strtod does (leading white space, sign,
/// decimal or hexadecimal digits, exponent, "inf", "infinity", "nan", "nan(...)"); `text` holds no
/// NUL.
/// `*used` is the number of characters converted, white space included; 0 when there is no number.
double read_real(std::string_view text, std::size_t *used);

/// Reads a leading real number of `text` as scanf's "%lf" does: as read_real, but "0x", "infi" and
/// the like, which begin a longer number than there is, are none, and nothing behind "nan" counts.
/// False when there is no number; `*value` is left as it is then.
bool scan_real(std::string_view text, double *value);

} // namespace quarl
