#include "compose/samples.h"

#include <algorithm>
#include <array>
#include <bit>
#include <span>
#include <stdexcept>

namespace
{

constexpr std::size_t Words = 16; ///< of a frame

void append(std::string *bytes, std::uint64_t value, int size, bool little)
{
    for (int i = 0; i < size; ++i)
        *bytes += static_cast<char>(value >> 8 * (little ? i : size - 1 - i) & 0xFF);
}

/// A word of `count` differences of `width` bits.
struct Group {
    std::size_t count;
    int width;
    std::uint32_t control; ///< its two bits in the control word
    std::uint32_t prefix;  ///< what stands above the differences
};

constexpr std::array<Group, 3> Steim_1 = {{{4, 8, 1, 0}, {2, 16, 2, 0}, {1, 32, 3, 0}}};
constexpr std::array<Group, 7> Steim_2 = {{{7, 4, 3, 0x80000000},
                                           {6, 5, 3, 0x40000000},
                                           {5, 6, 3, 0},
                                           {4, 8, 1, 0},
                                           {3, 10, 2, 0xC0000000},
                                           {2, 15, 2, 0x80000000},
                                           {1, 30, 2, 0x40000000}}};

bool fits(const Group &group, std::span<const std::int32_t> differences)
{
    if (differences.size() < group.count)
        return false;
    const std::int64_t limit = std::int64_t{1} << (group.width - 1);
    return std::all_of(differences.begin(), differences.begin() + group.count,
                       [&](std::int64_t d) { return d >= -limit && d < limit; });
}

std::uint32_t word_of(const Group &group, std::span<const std::int32_t> differences)
{
    const auto mask = static_cast<std::uint32_t>((std::uint64_t{1} << group.width) - 1);
    std::uint64_t word = 0;
    for (std::size_t i = 0; i < group.count; ++i)
        word = word << group.width | (static_cast<std::uint32_t>(differences[i]) & mask);
    return static_cast<std::uint32_t>(word) | group.prefix;
}

const Group &densest(std::span<const Group> groups, std::span<const std::int32_t> differences)
{
    for (const Group &group : groups)
        if (fits(group, differences))
            return group;
    throw std::range_error("a difference is too large for Steim-2");
}

/// x[i] - x[i - 1], modulo 2^32.
std::vector<std::int32_t> differences_of(const std::vector<std::int32_t> &values,
                                         std::int32_t previous)
{
    std::vector<std::int32_t> differences;
    for (const std::int32_t value : values) {
        differences.push_back(static_cast<std::int32_t>(static_cast<std::uint32_t>(value) -
                                                        static_cast<std::uint32_t>(previous)));
        previous = value;
    }
    return differences;
}

} // namespace

std::string packed_words(const std::vector<std::uint64_t> &values, int size, bool little)
{
    std::string bytes;
    for (const std::uint64_t value : values)
        append(&bytes, value, size, little);
    return bytes;
}

std::string packed(const std::vector<std::int32_t> &values, int size, bool little)
{
    return packed_words({values.begin(), values.end()}, size, little);
}

std::string packed(const std::vector<float> &values, bool little)
{
    std::string bytes;
    for (const float value : values)
        append(&bytes, std::bit_cast<std::uint32_t>(value), sizeof value, little);
    return bytes;
}

std::string packed(const std::vector<double> &values, bool little)
{
    std::string bytes;
    for (const double value : values)
        append(&bytes, std::bit_cast<std::uint64_t>(value), sizeof value, little);
    return bytes;
}

SteimFrames steim_frames(const std::vector<std::int32_t> &values, const SteimOptions &options)
{
    const auto groups = options.version == 1 ? std::span<const Group>(Steim_1) : Steim_2;
    const std::vector<std::int32_t> differences = differences_of(values, options.previous);
    std::span<const std::int32_t> rest = differences;
    std::vector<std::uint32_t> words;
    while (words.size() < options.frames * Words && (!rest.empty() || options.fill)) {
        const std::size_t frame = words.size();
        words.resize(frame + Words);
        const std::size_t first = frame == 0 ? 3 : 1; // behind the integration constants
        for (std::size_t i = first; i < Words && !rest.empty(); ++i) {
            const Group &group = densest(groups, rest);
            words[frame + i] = word_of(group, rest);
            words[frame] |= group.control << 2 * (Words - 1 - i);
            rest = rest.subspan(group.count);
        }
    }
    const std::size_t packed_samples = values.size() - rest.size();
    if (packed_samples > 0) {
        words[1] = static_cast<std::uint32_t>(values.front());
        words[2] = static_cast<std::uint32_t>(values[packed_samples - 1]);
    }
    return {packed_words({words.begin(), words.end()}, 4, options.little), packed_samples};
}
