// Volumes made to cost as much time or memory per byte as any can.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// A volume of about `size` bytes. Kinds: `records`, logical records of 2 bytes; `counts`, response
/// blockettes of 24 bytes that promise 2 × 9999 coefficients; `lengths`, blockettes of length 0;
/// `epochs`, channel epochs that each begin before the last one; `channels`, each another one;
/// `codes`, channels with codes that a hash without a secret throws together; `promises`,
/// blockettes of all types with lists that hold nothing of what they promise; `long-filter`, epochs
/// that refer to one long filter of the dictionary; and those of worst_data and
/// worst_responses.
std::string worst_volume(std::string_view kind, std::int64_t size);
