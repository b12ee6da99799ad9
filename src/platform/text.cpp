#include "platform/text.h"

#include <algorithm>
#include <cstdint>
#include <limits>

namespace quarl
{

bool blank(std::string_view text) { return std::all_of(text.begin(), text.end(), is_space); }

std::string upper(std::string_view text)
{
    std::string all(text);
    for (char &c : all)
        c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    return all;
}

int leading_int(std::string_view text, std::size_t *used)
{
    constexpr std::int64_t Max = std::numeric_limits<std::int64_t>::max();
    constexpr std::int64_t Min = std::numeric_limits<std::int64_t>::min();
    std::size_t at = 0;
    while (at < text.size() && is_space(text[at]))
        ++at;
    const bool negative = at < text.size() && text[at] == '-';
    if (at < text.size() && (text[at] == '-' || text[at] == '+'))
        ++at;
    const std::size_t first = at;
    std::int64_t value = 0; // kept negative: its range is the larger one
    for (; at < text.size() && is_digit(text[at]); ++at) {
        const int digit = text[at] - '0';
        value = value < (Min + digit) / 10 ? Min : value * 10 - digit;
    }
    *used = at == first ? 0 : at;
    if (!negative)
        value = value == Min ? Max : -value;
    return static_cast<int>(value);
}

int to_int(std::string_view text)
{
    std::size_t used = 0;
    return leading_int(text, &used);
}

} // namespace quarl
