// Volumes whose responses cost as much time or memory per byte as any can.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// A volume of dictionary entries of 700 coefficients and epochs of about `size` bytes that refer
/// to them, each in another order. Kinds: `joined`, 14 references, which make one of the longest
/// filters; `references`, a thousand, which are too many. "" for another kind.
std::string worst_responses(std::string_view kind, std::int64_t size);
