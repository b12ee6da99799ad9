#include "support/plain_steim.h"

namespace
{

std::uint32_t word_at(std::string_view data, std::size_t at, bool little)
{
    std::uint32_t word = 0;
    for (std::size_t i = 0; i < 4; ++i)
        word = word << 8 | static_cast<unsigned char>(data[at + (little ? 3 - i : i)]);
    return word;
}

/// How many differences of how many bits a word holds; 0: none, -1: there is no such code.
struct Widths {
    int count;
    int bits;
};

Widths widths(int version, std::uint32_t code, std::uint32_t word)
{
    const std::uint32_t sub = word >> 30;
    if (code == 0)
        return {0, 0};
    if (code == 1)
        return {4, 8};
    if (version == 1)
        return code == 2 ? Widths{2, 16} : Widths{1, 32};
    if (code == 2)
        return sub == 0   ? Widths{-1, 0}
               : sub == 1 ? Widths{1, 30}
               : sub == 2 ? Widths{2, 15}
                          : Widths{3, 10};
    return sub == 3   ? Widths{-1, 0}
           : sub == 0 ? Widths{5, 6}
           : sub == 1 ? Widths{6, 5}
                      : Widths{7, 4};
}

std::int64_t difference(std::uint32_t word, int bits, int behind)
{
    const std::int64_t value =
        std::int64_t{word} >> bits * behind & ((std::int64_t{1} << bits) - 1);
    return value >> (bits - 1) != 0 ? value - (std::int64_t{1} << bits) : value;
}

} // namespace

std::vector<std::int32_t> plain_steim(int version, bool little, std::string_view data,
                                      std::size_t count)
{
    std::vector<std::int32_t> samples;
    for (std::size_t frame = 0; frame + 64 <= data.size(); frame += 64) {
        const std::uint32_t control = word_at(data, frame, little);
        for (unsigned i = frame == 0 ? 3 : 1; i < 16; ++i) {
            const std::uint32_t word = word_at(data, frame + 4 * std::size_t{i}, little);
            const Widths held = widths(version, control >> 2 * (15 - i) & 3, word);
            for (int n = 0; n < held.count && samples.size() < count; ++n) {
                const std::int64_t sample =
                    samples.empty()
                        ? word_at(data, 4, little)
                        : samples.back() + difference(word, held.bits, held.count - 1 - n);
                samples.push_back(static_cast<std::int32_t>(sample & 0xFFFFFFFF));
            }
            if (held.count < 0 || samples.size() == count)
                return samples;
        }
    }
    return samples;
}
