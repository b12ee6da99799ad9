#include "platform/base64.h"

#include <cstdint>

namespace quarl
{

char *put_base64(char *to, std::string_view bytes)
{
    constexpr char Digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    while (!bytes.empty()) {
        const std::string_view three = bytes.substr(0, 3);
        bytes.remove_prefix(three.size());
        std::uint32_t bits = 0;
        for (std::size_t i = 0; i < 3; ++i)
            bits = bits << 8 | (i < three.size() ? static_cast<unsigned char>(three[i]) : 0U);
        for (std::size_t i = 0; i < 4; ++i)
            *to++ = i <= three.size() ? Digits[bits >> (18 - 6 * i) & 63] : '=';
    }
    return to;
}

} // namespace quarl
