#include "platform/utf8.h"

#include <array>
#include <cstdint>

namespace quarl
{

namespace
{

constexpr std::uint32_t First_Shown = 0xA1; ///< of two bytes: controls and a blank below
constexpr std::uint32_t Soft_Hyphen = 0xAD;

/// Bytes of the character that `lead` begins, and the bits of it that count; 0: none begins so.
struct Lead {
    std::size_t size;
    std::uint32_t bits;
};

Lead lead_of(unsigned char lead)
{
    if (lead < 0x80)
        return {1, lead};
    if (lead >= 0xC2 && lead < 0xE0)
        return {2, lead & 0x1FU};
    if (lead >= 0xE0 && lead < 0xF0)
        return {3, lead & 0x0FU};
    if (lead >= 0xF0 && lead < 0xF5)
        return {4, lead & 0x07U};
    return {0, 0};
}

/// A character that shows: no control, no separator, nothing that turns the direction of writing.
bool shows(std::uint32_t character)
{
    const bool control = character < 0x20 || (character >= 0x7F && character < First_Shown);
    const bool formats = (character >= 0x200B && character < 0x2010) ||
                         (character >= 0x2028 && character < 0x2030) ||
                         (character >= 0x2060 && character < 0x2070) || character == Soft_Hyphen;
    return !control && !formats && character != 0xFEFF;
}

} // namespace

Utf8Character utf8_character(std::string_view bytes)
{
    constexpr std::array<std::uint32_t, 5> Least = {0, 0, 0x80, 0x800, 0x10000};
    auto [size, character] = lead_of(static_cast<unsigned char>(bytes[0]));
    if (size == 0 || size > bytes.size())
        return {};
    for (std::size_t i = 1; i < size; ++i) {
        const auto byte = static_cast<unsigned char>(bytes[i]);
        if ((byte & 0xC0) != 0x80)
            return {};
        character = character << 6 | (byte & 0x3FU);
    }
    const bool surrogate = character >= 0xD800 && character < 0xE000;
    if (character < Least[size] || character >= 0x110000 || surrogate)
        return {};
    return {size, character};
}

std::size_t plain_character(std::string_view bytes)
{
    if (bytes.empty())
        return 0;
    const Utf8Character character = utf8_character(bytes);
    return character.size > 0 && shows(character.code) ? character.size : 0;
}

bool is_utf8(std::string_view bytes)
{
    while (!bytes.empty()) {
        const std::size_t size = utf8_character(bytes).size;
        if (size == 0)
            return false;
        bytes.remove_prefix(size);
    }
    return true;
}

bool is_plain_utf8(std::string_view bytes)
{
    while (!bytes.empty()) {
        const std::size_t size = plain_character(bytes);
        if (size == 0)
            return false;
        bytes.remove_prefix(size);
    }
    return true;
}

} // namespace quarl
