// Hashes that depend on numbers drawn at random for each run. Codes and coefficients come from
// volumes, and whoever makes one must not be able to choose those that fall into one place of a
// table: that would cost the square of their number. What is printed never depends on a hash.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace quarl
{

struct HashKeys {
    std::array<std::uint64_t, 5> of_parts; ///< any
    std::uint64_t of_contents;             ///< 1 to HashedContent::Prime - 1
};

/// Numbers that nobody can foresee.
HashKeys draw_hash_keys();

/// Those of this run.
inline const HashKeys &hash_keys()
{
    static const HashKeys keys = draw_hash_keys();
    return keys;
}

/// Of 16 bytes, in 32 bits: two that differ have the same with a probability of 2^-32. The sum of
/// products sees to that; what follows takes codes apart that differ by equal steps.
inline std::size_t keyed_hash(const std::array<std::uint64_t, 2> &words)
{
    constexpr std::uint64_t Low = 0xFFFFFFFF;
    const auto &key = hash_keys().of_parts;
    std::uint64_t hash = (key[0] + (key[1] + (words[0] & Low)) * (key[2] + (words[0] >> 32)) +
                          (key[3] + (words[1] & Low)) * (key[4] + (words[1] >> 32))) >>
                         32;
    hash = (hash ^ hash >> 16) * 0x85EBCA6B & Low;
    return hash ^ hash >> 13;
}

/// A hash of any number of words and texts, in order: a polynomial with them as coefficients, taken
/// at a secret place in the field of a prime. Two contents of n words that differ have the same
/// value with a probability of n / 2^60, and no other number of words or length of text adds to it.
class HashedContent
{
public:
    static constexpr std::uint64_t Prime = (std::uint64_t{1} << 61) - 1;

    void add(std::uint64_t word)
    {
        step(word & 0xFFFFFFFF);
        step(word >> 32);
    }
    void add(std::string_view text)
    {
        add(std::uint64_t{text.size()});
        for (; !text.empty(); text.remove_prefix(std::min(text.size(), sizeof(std::uint64_t)))) {
            std::uint64_t word = 0;
            std::memcpy(&word, text.data(), std::min(text.size(), sizeof word));
            add(word);
        }
    }
    /// In 64 bits of which each depends on all.
    [[nodiscard]] std::size_t value() const
    {
        constexpr std::uint64_t Odd = 0x9E3779B97F4A7C15;
        const std::uint64_t mixed = (value_ ^ value_ >> 29) * Odd;
        return mixed ^ mixed >> 32;
    }

private:
    __extension__ using Wide = unsigned __int128;

    /// `part` has 32 bits.
    void step(std::uint64_t part)
    {
        const Wide product = Wide{value_ + part} * key_;
        const std::uint64_t folded =
            static_cast<std::uint64_t>(product & Prime) + static_cast<std::uint64_t>(product >> 61);
        value_ = (folded & Prime) + (folded >> 61);
        value_ = value_ >= Prime ? value_ - Prime : value_;
    }

    std::uint64_t key_ = hash_keys().of_contents;
    std::uint64_t value_ = 1; ///< so that leading zeros count
};

} // namespace quarl
