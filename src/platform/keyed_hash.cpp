#include "platform/keyed_hash.h"

#include <chrono>
#include <sys/random.h>

namespace quarl
{

namespace
{

/// For a system that hands out no random numbers: at least no two runs are alike.
std::uint64_t stirred(std::uint64_t *state)
{
    constexpr std::uint64_t Step = 0x9E3779B97F4A7C15;
    std::uint64_t word = *state += Step;
    word = (word ^ word >> 30) * 0xBF58476D1CE4E5B9;
    word = (word ^ word >> 27) * 0x94D049BB133111EB;
    return word ^ word >> 31;
}

} // namespace

HashKeys draw_hash_keys()
{
    std::array<std::uint64_t, 6> words{};
    if (getrandom(words.data(), sizeof words, GRND_NONBLOCK) != ssize_t{sizeof words}) {
        const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
        auto state = static_cast<std::uint64_t>(now) ^ reinterpret_cast<std::uintptr_t>(&words);
        std::generate(words.begin(), words.end(), [&] { return stirred(&state); });
    }
    return {{words[0], words[1], words[2], words[3], words[4]},
            1 + words[5] % (HashedContent::Prime - 1)};
}

} // namespace quarl
