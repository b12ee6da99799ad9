// SHA-256 (FIPS 180-4): tells contents apart for good.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace quarl
{

/// The digest of all that was added, in order.
class Sha256
{
public:
    void add(std::string_view bytes);
    /// 64 hexadecimal digits. Nothing may be added afterwards.
    [[nodiscard]] std::string digits();

private:
    static constexpr std::size_t Block = 64;

    void take(const unsigned char *block);

    std::array<std::uint32_t, 8> state_ = {0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a,
                                           0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19};
    std::array<unsigned char, Block> waiting_{};
    std::uint64_t size_ = 0; ///< bytes added
};

/// The digest of a text.
std::string sha256(std::string_view text);

/// The digest of a file as it is stored; "" with errno set when it cannot be read.
std::string sha256_of_file(const std::string &path);

} // namespace quarl
