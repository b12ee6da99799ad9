// Packs samples as data records hold them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// Numbers of `size` bytes, the lowest ones of each value: two's complement, or the bits of a real.
std::string packed_words(const std::vector<std::uint64_t> &values, int size, bool little);
/// The same of integers, floats and doubles of their own size.
std::string packed(const std::vector<std::int32_t> &values, int size, bool little);
std::string packed(const std::vector<float> &values, bool little);
std::string packed(const std::vector<double> &values, bool little);

/// Frames of Steim's compressions.
struct SteimFrames {
    std::string bytes;       ///< 64 per frame
    std::size_t samples = 0; ///< of the values that were offered
};

struct SteimOptions {
    int version = 2;           ///< 1 or 2
    bool little = false;       ///< byte order
    std::size_t frames = 7;    ///< at most
    std::int32_t previous = 0; ///< the sample before the first
    bool fill = false;         ///< frames without samples up to `frames`
};

/// Packs values from the first on, as many as fit, each word as dense as the differences allow.
/// Throws std::range_error at a difference that has no code.
SteimFrames steim_frames(const std::vector<std::int32_t> &values, const SteimOptions &options);
