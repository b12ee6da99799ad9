#include "platform/read_number.h"

#include "platform/text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <clocale>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <system_error>

namespace quarl
{

// Headers are full of numbers: 7 to 25 ns each here, 60 to 170 ns in the C library. The fast path
// proves its result exact or hands the number on.

namespace
{

/// Powers of ten that are doubles without rounding: 5^22 is the last power of five below 2^53.
constexpr std::array Exact_Tens{1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
constexpr std::uint64_t Exact_Digits = std::uint64_t{1} << 53; // and all whole numbers below

/// A number as its text gives it: digits * 10^exponent.
struct Spelled {
    std::uint64_t digits = 0;
    std::int64_t exponent = 0;
};

/// Leaves out what does not fit into 64 bits: such a number is too large for combine_exactly.
const char *read_digits(const char *at, const char *end, Spelled *number)
{
    constexpr std::uint64_t Most = 1'000'000'000'000'000'000;
    for (; at != end && is_digit(*at); ++at)
        if (number->digits < Most)
            number->digits = number->digits * 10 + static_cast<std::uint64_t>(*at - '0');
    return at;
}

/// Reads "e", sign and digits; stays at `at` when digits are missing.
const char *read_exponent(const char *at, const char *end, Spelled *number)
{
    if (at == end || (*at != 'e' && *at != 'E'))
        return at;
    const char *first = at + 1;
    const bool negative = first != end && *first == '-';
    first += negative || (first != end && *first == '+');
    const char *next = first;
    std::int64_t size = 0;
    for (; next != end && is_digit(*next); ++next)
        size = std::min<std::int64_t>(size, 1'000'000'000'000) * 10 + (*next - '0');
    number->exponent += negative ? -size : size;
    return next == first ? at : next;
}

/// digits * 10^exponent when both are doubles without rounding: one operation, rounded once.
bool combine_exactly(const Spelled &number, double *value)
{
    constexpr int Most = static_cast<int>(Exact_Tens.size()) - 1;
    if (number.digits > Exact_Digits || number.exponent < -Most || number.exponent > Most)
        return number.digits == 0;
    const auto digits = static_cast<double>(static_cast<std::int64_t>(number.digits));
    *value = number.exponent < 0 ? digits / Exact_Tens[-number.exponent]
                                 : digits * Exact_Tens[number.exponent];
    return true;
}

/// The "C" locale, which every process has: it cannot fail and is never released.
locale_t c_locale()
{
    static const locale_t Made = newlocale(LC_ALL_MASK, "C", locale_t());
    return Made;
}

/// For hexadecimal digits, infinities, NaNs, overflow and blank texts. strtod needs a terminator.
double read_by_library(std::string_view text, std::size_t *used)
{
    const std::string copy(text);
    char *end = nullptr;
    const double value = strtod_l(copy.c_str(), &end, c_locale());
    *used = static_cast<std::size_t>(end - copy.c_str());
    return value;
}

} // namespace

double read_real(std::string_view text, std::size_t *used)
{
    const char *at = text.data();
    const char *end = at + text.size();
    while (at != end && is_space(*at))
        ++at;
    const bool negative = at != end && *at == '-';
    if (at != end && (*at == '-' || *at == '+'))
        ++at;
    Spelled number;
    const char *first = at;
    at = read_digits(at, end, &number);
    auto count = at - first;
    const bool hexadecimal = at != end && (*at | 0x20) == 'x';
    if (at != end && *at == '.') {
        const char *decimals = at + 1;
        at = read_digits(decimals, end, &number);
        number.exponent = decimals - at;
        count += at - decimals;
    }
    if (count == 0 || hexadecimal)
        return read_by_library(text, used);
    at = read_exponent(at, end, &number);
    double value = 0;
    if (!combine_exactly(number, &value) && std::from_chars(first, at, value).ec != std::errc())
        return read_by_library(text, used);
    *used = static_cast<std::size_t>(at - text.data());
    return negative ? -value : value;
}

bool scan_real(std::string_view text, double *value)
{
    std::size_t used = 0;
    double found = read_real(text, &used);
    if (used == 0)
        return false;
    std::size_t at = 0;
    while (is_space(text[at]) || text[at] == '-' || text[at] == '+')
        ++at;
    const std::string_view number = text.substr(at, used - at);
    const std::string_view rest = text.substr(used);
    const auto small = [](std::string_view from, std::size_t i) {
        return i < from.size() ? from[i] | 0x20 : '\0';
    };
    if (small(number, 0) == 'i' && number.size() == 3 && small(rest, 0) == 'i')
        return false;
    if (number == "0" && small(rest, 0) == 'x' && !rest.substr(1).starts_with('.'))
        return false;
    if (small(number, 0) == 'n')
        found = read_real(text.substr(0, at + 3), &used);
    *value = found;
    return true;
}

} // namespace quarl
