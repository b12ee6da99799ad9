#include "blockette/record_header.h"

#include "blockette/msd.h"
#include "platform/text.h"

#include <algorithm>
#include <cstddef>

namespace quarl
{

namespace
{

constexpr std::size_t Number = 6; ///< characters of a sequence number

bool is_digit_or_blank(char c) { return is_digit(c) || c == ' '; }

bool is_mark(char c) { return c == ' ' || c == '*' || c == '\0'; }

} // namespace

bool is_header_type(char type)
{
    return std::string_view("VAST").find(type) != std::string_view::npos;
}

bool is_fill(std::string_view bytes)
{
    return bytes.find_first_not_of(std::string_view(" \n\0", 3)) == std::string_view::npos;
}

HeaderLook look_of(std::string_view header)
{
    constexpr std::ptrdiff_t Most_Odd = 2;
    if (is_fill(header))
        return HeaderLook::fill;
    const auto *number_end = header.begin() + Number;
    const auto odd = std::count_if(header.begin(), number_end,
                                   [](char c) { return !is_digit_or_blank(c) && c != '\0'; });
    if (odd > Most_Odd || !is_mark(header[Number + 1]))
        return HeaderLook::none;
    const char type = header[Number];
    if ((type == ' ' || type == '\0') && odd == 0)
        return HeaderLook::sound; // padding, numbered
    if (!is_header_type(type) && !is_ok_msd_quality(type))
        return odd == 0 && std::any_of(header.begin(), number_end, is_digit) ? HeaderLook::odd_type
                                                                             : HeaderLook::none;
    return odd == 0 ? HeaderLook::sound : HeaderLook::odd_number;
}

} // namespace quarl
