// The lists that several response types share.
#pragma once

#include "blockette/scan.h"

#include <string_view>
#include <vector>

namespace quarl
{

// Characters of their entries.
inline constexpr std::size_t Root = 48;
inline constexpr std::size_t Coefficient = 24;
inline constexpr std::size_t Point = 60;
inline constexpr std::size_t Corner = 24;
inline constexpr std::size_t Calibration = 25; ///< at least: its time may be an empty text

/// Poles and zeros alike: reads `count` of them, of which some are `there`. False when a bad field
/// stopped the list.
inline bool scan_roots(Cursor *in, int count, int there, std::vector<Complex_t> &root,
                       std::vector<Complex_t> &error, std::string_view what)
{
    return scan_list(in, {count, there, Root}, what, [&](int i) {
        scan_double(in, 12, &root[i].real);
        scan_double(in, 12, &root[i].imag);
        scan_double(in, 12, &error[i].real);
        scan_double(in, 12, &error[i].imag);
    });
}

/// Numerators and denominators alike.
inline bool scan_coefficients(Cursor *in, int count, int there, std::vector<double> &coef,
                              std::vector<double> &error, std::string_view what)
{
    return scan_list(in, {count, there, Coefficient}, what, [&](int i) {
        scan_double(in, 12, &coef[i]);
        scan_double(in, 12, &error[i]);
    });
}

} // namespace quarl
