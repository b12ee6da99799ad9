// Steim's compressions undone in the plain way, to compare with.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

/// Samples of the frames in `data`: `count`, or as many as come before an impossible control code
/// or before the frames end. Codes of the words that hold no differences are not looked at.
std::vector<std::int32_t> plain_steim(int version, bool little, std::string_view data,
                                      std::size_t count);
