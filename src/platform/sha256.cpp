#include "platform/sha256.h"

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <unistd.h>

namespace quarl
{

namespace
{

/// The first 32 bits of the fractions of the cube roots of the first 64 primes.
constexpr std::array<std::uint32_t, 64> Round = {
    0x428a2f98, 0x71374491, 0xb5c0fbcf, 0xe9b5dba5, 0x3956c25b, 0x59f111f1, 0x923f82a4, 0xab1c5ed5,
    0xd807aa98, 0x12835b01, 0x243185be, 0x550c7dc3, 0x72be5d74, 0x80deb1fe, 0x9bdc06a7, 0xc19bf174,
    0xe49b69c1, 0xefbe4786, 0x0fc19dc6, 0x240ca1cc, 0x2de92c6f, 0x4a7484aa, 0x5cb0a9dc, 0x76f988da,
    0x983e5152, 0xa831c66d, 0xb00327c8, 0xbf597fc7, 0xc6e00bf3, 0xd5a79147, 0x06ca6351, 0x14292967,
    0x27b70a85, 0x2e1b2138, 0x4d2c6dfc, 0x53380d13, 0x650a7354, 0x766a0abb, 0x81c2c92e, 0x92722c85,
    0xa2bfe8a1, 0xa81a664b, 0xc24b8b70, 0xc76c51a3, 0xd192e819, 0xd6990624, 0xf40e3585, 0x106aa070,
    0x19a4c116, 0x1e376c08, 0x2748774c, 0x34b0bcb5, 0x391c0cb3, 0x4ed8aa4a, 0x5b9cca4f, 0x682e6ff3,
    0x748f82ee, 0x78a5636f, 0x84c87814, 0x8cc70208, 0x90befffa, 0xa4506ceb, 0xbef9a3f7, 0xc67178f2};

std::uint32_t word_at(const unsigned char *at)
{
    return std::uint32_t{at[0]} << 24 | std::uint32_t{at[1]} << 16 | std::uint32_t{at[2]} << 8 |
           std::uint32_t{at[3]};
}

} // namespace

void Sha256::take(const unsigned char *block)
{
    std::array<std::uint32_t, 64> w; // NOLINT(cppcoreguidelines-pro-type-member-init)
    for (std::size_t i = 0; i < 16; ++i)
        w[i] = word_at(block + 4 * i);
    for (std::size_t i = 16; i < w.size(); ++i) {
        const std::uint32_t a = w[i - 15];
        const std::uint32_t b = w[i - 2];
        w[i] = w[i - 16] + (std::rotr(a, 7) ^ std::rotr(a, 18) ^ a >> 3) + w[i - 7] +
               (std::rotr(b, 17) ^ std::rotr(b, 19) ^ b >> 10);
    }
    auto [a, b, c, d, e, f, g, h] = state_;
    for (std::size_t i = 0; i < w.size(); ++i) {
        const std::uint32_t one = h + (std::rotr(e, 6) ^ std::rotr(e, 11) ^ std::rotr(e, 25)) +
                                  ((e & f) ^ (~e & g)) + Round[i] + w[i];
        const std::uint32_t two =
            (std::rotr(a, 2) ^ std::rotr(a, 13) ^ std::rotr(a, 22)) + ((a & b) ^ (a & c) ^ (b & c));
        h = g;
        g = f;
        f = e;
        e = d + one;
        d = c;
        c = b;
        b = a;
        a = one + two;
    }
    const std::array<std::uint32_t, 8> more = {a, b, c, d, e, f, g, h};
    for (std::size_t i = 0; i < more.size(); ++i)
        state_[i] += more[i];
}

void Sha256::add(std::string_view bytes)
{
    std::size_t held = size_ % Block;
    size_ += bytes.size();
    if (held > 0) {
        const std::size_t size =
            bytes.copy(reinterpret_cast<char *>(&waiting_[held]), Block - held);
        bytes.remove_prefix(size);
        held += size;
        if (held < Block)
            return;
        take(waiting_.data());
    }
    for (; bytes.size() >= Block; bytes.remove_prefix(Block))
        take(reinterpret_cast<const unsigned char *>(bytes.data()));
    bytes.copy(reinterpret_cast<char *>(waiting_.data()), bytes.size());
}

std::string Sha256::digits()
{
    const std::uint64_t bits = size_ * 8;
    add(std::string_view("\x80", 1));
    while (size_ % Block != Block - sizeof bits)
        add(std::string_view("\0", 1));
    std::array<char, sizeof bits> length{};
    for (std::size_t i = 0; i < length.size(); ++i)
        length[i] = static_cast<char>(bits >> (56 - 8 * i) & 0xFF);
    add({length.data(), length.size()});
    std::string digits;
    for (const std::uint32_t word : state_)
        for (int shift = 28; shift >= 0; shift -= 4)
            digits += "0123456789abcdef"[word >> shift & 15];
    return digits;
}

std::string sha256(std::string_view text)
{
    Sha256 sum;
    sum.add(text);
    return sum.digits();
}

std::string sha256_of_file(const std::string &path)
{
    constexpr std::size_t Piece = 1 << 18;
    const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY);
    if (fd < 0)
        return {};
    const auto buffer = std::make_unique_for_overwrite<char[]>(Piece);
    Sha256 sum;
    ssize_t size = 0;
    while ((size = read(fd, buffer.get(), Piece)) > 0 || (size < 0 && errno == EINTR))
        if (size > 0)
            sum.add({buffer.get(), static_cast<std::size_t>(size)});
    const int error = errno;
    close(fd);
    errno = error;
    return size < 0 ? std::string() : sum.digits();
}

} // namespace quarl
