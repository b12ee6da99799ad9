#include "platform/number.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <optional>

namespace quarl
{

// A listing is full of numbers: 7 to 25 ns each here, 60 to 170 ns in the C library. Each fast path
// proves its result exact or hands the number to the library.

namespace
{

static_assert(std::numeric_limits<double>::is_iec559 && sizeof(double) == 8);

__extension__ using Wide = unsigned __int128;

constexpr int Fraction_Bits = 52;
constexpr int Exponent_Bias = 1023;
constexpr int Special_Exponent = 2047;                        // of infinities and NaNs
constexpr int Whole_Exponent = Exponent_Bias + Fraction_Bits; // from here on there is no fraction
constexpr std::uint64_t Hidden_Bit = std::uint64_t{1} << Fraction_Bits;
constexpr int Most_Digits = 16; // of the fast paths

consteval auto make_tens()
{
    std::array<std::uint64_t, 20> tens{1};
    for (std::size_t i = 1; i < tens.size(); ++i)
        tens[i] = tens[i - 1] * 10;
    return tens;
}

constexpr auto Tens = make_tens();

/// "000102...99": two digits are copied for one division.
consteval auto make_pairs()
{
    std::array<char, 200> pairs{};
    for (std::size_t i = 0; i < 100; ++i) {
        pairs[2 * i] = static_cast<char>('0' + i / 10);
        pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
    return pairs;
}

constexpr auto Pairs = make_pairs();

/// digits * 10^(exponent - number of digits + 1): the exponent is that of the first digit.
struct Decimal {
    std::uint64_t digits = 0;
    int exponent = 0;
};

/// mantissa * 2^exponent, the top bit of the mantissa set.
struct Binary {
    std::uint64_t mantissa = 0;
    int exponent = 0;
};

/// These scale any double to an integer of up to Most_Digits digits.
constexpr int First_Power = -324;
constexpr int Last_Power = 324 + Most_Digits;

/// The powers of ten, mantissas cut to 64 bits. They are stepped with 128 bits: what the steps lose
/// stays far below one unit of the cut mantissa, so a true mantissa is less than two units larger.
consteval auto make_powers()
{
    std::array<Binary, Last_Power - First_Power + 1> powers{};
    constexpr Wide Top = Wide{1} << 127;
    Wide mantissa = Top;
    int exponent = -63;
    for (int k = 0; k > First_Power; --k, --exponent)
        for (mantissa /= 5; mantissa < Top; mantissa *= 2)
            --exponent;
    for (Binary &power : powers) {
        power = {static_cast<std::uint64_t>(mantissa >> 64), exponent};
        exponent += 4;
        for (mantissa = mantissa / 8 * 5; mantissa < Top; mantissa *= 2)
            --exponent;
    }
    return powers;
}

constexpr auto Powers = make_powers();

constexpr const Binary &power_of_ten(int k) { return Powers[k - First_Power]; }

/// Sign, exponent and fraction of a double.
struct Parts {
    std::uint64_t fraction;
    int exponent;
    bool negative;
};

Parts take_apart(double value)
{
    const auto bits = std::bit_cast<std::uint64_t>(value);
    return {bits & (Hidden_Bit - 1), static_cast<int>(bits >> Fraction_Bits) & Special_Exponent,
            (bits >> 63) != 0};
}

/// `parts` without its sign; mantissa 0 for zero.
Binary normalised(const Parts &parts)
{
    constexpr int Room = 63 - Fraction_Bits;
    if (parts.exponent > 0)
        return {(parts.fraction | Hidden_Bit) << Room, parts.exponent - Exponent_Bias - 63};
    if (parts.fraction == 0)
        return {};
    const int up = std::countl_zero(parts.fraction);
    return {parts.fraction << up, 1 - Exponent_Bias - Fraction_Bits - up};
}

char *put_sign(char *to, bool negative)
{
    *to = '-';
    return to + negative;
}

void put_pair(char *to, std::uint32_t value)
{
    std::memcpy(to, Pairs.data() + std::size_t{2} * value, 2);
}

void put_8_digits(char *to, std::uint64_t value)
{
    const auto high = static_cast<std::uint32_t>(value / 10000);
    const auto low = static_cast<std::uint32_t>(value % 10000);
    put_pair(to, high / 100);
    put_pair(to + 2, high % 100);
    put_pair(to + 4, low / 100);
    put_pair(to + 6, low % 100);
}

/// Writes `value` as `count` digits, at most Most_Digits. The digits are moved to the left of 8 or
/// 16 and all of them are written: steps of fixed length beat a loop over `count`.
char *put_digits(char *to, std::uint64_t value, int count)
{
    if (count <= 8) {
        put_8_digits(to, value * Tens[8 - count]);
    } else {
        value *= Tens[Most_Digits - count];
        put_8_digits(to, value / Tens[8]);
        put_8_digits(to + 8, value % Tens[8]);
    }
    return to + count;
}

/// Writes `value`, below 10^Most_Digits, without leading zeros.
char *put_whole(char *to, std::uint64_t value)
{
    int count = 1;
    while (value >= Tens[count])
        ++count;
    return put_digits(to, value, count);
}

char *put_exponent(char *to, int exponent, char letter)
{
    *to++ = letter;
    *to++ = exponent < 0 ? '-' : '+';
    const auto size = static_cast<std::uint32_t>(std::abs(exponent));
    *to = static_cast<char>('0' + size / 100);
    to += size >= 100;
    put_pair(to, size % 100);
    return to + 2;
}

/// floor(log10(value)); a value next to a power of ten may count as that power or as just below.
int decimal_exponent(const Binary &value)
{
    // The products with log10(2) keep 0.0004 away from whole numbers; the scaled ones err by
    // 0.0001.
    constexpr int Scale_Bits = 22;
    constexpr int Log10_2 = static_cast<int>(0.30102999566398120 * (1 << Scale_Bits));
    const int low = ((value.exponent + 63) * Log10_2) >> Scale_Bits; // so value < 10^(low + 2)
    const Binary &next = power_of_ten(low + 1);
    const bool above = next.exponent != value.exponent ? next.exponent < value.exponent
                                                       : next.mantissa < value.mantissa;
    return low + above;
}

/// Rounds a finite number to `count` digits, 2 to Most_Digits: the product with a power of ten
/// holds them in its upper 64 bits, 9 or more bits of fraction behind. The true product is larger
/// by less than 4 units of the last bit. Nothing when a half lies within that: the way to round is
/// open then.
std::optional<Decimal> round_to_digits(const Parts &parts, int count)
{
    constexpr std::uint64_t Error = 4;
    if (count < 2 || count > Most_Digits || parts.exponent == Special_Exponent)
        return std::nullopt;
    const Binary value = normalised(parts);
    if (value.mantissa == 0)
        return Decimal();
    const int exponent = decimal_exponent(value);
    const Binary &power = power_of_ten(count - 1 - exponent);
    const auto product = static_cast<std::uint64_t>((Wide{value.mantissa} * power.mantissa) >> 64);
    const int fraction_bits = -(value.exponent + power.exponent + 64);
    const std::uint64_t half = std::uint64_t{1} << (fraction_bits - 1);
    const std::uint64_t fraction = product & (half * 2 - 1);
    if (fraction <= half && fraction + Error >= half)
        return std::nullopt;
    const std::uint64_t digits = (product >> fraction_bits) + (fraction > half);
    if (digits == Tens[count])
        return Decimal{Tens[count - 1], exponent + 1};
    return Decimal{digits, exponent};
}

char *put_by_library(char *to, double value, std::chars_format format, int precision)
{
    return std::to_chars(to, to + Real_Room, value, format, precision).ptr;
}

/// put_fixed of a number below 2^52 with 1 to Most_Digits decimals: whole part and fraction are
/// taken apart, the fraction is multiplied by 10^precision, and the remainder of that is exact.
char *put_fixed_exactly(char *to, const Parts &parts, int precision)
{
    constexpr int Far = 116; // shifted so far, any mantissa rounds to 0: also that of 0 itself
    const int shift = std::min(Whole_Exponent - parts.exponent, Far);
    const std::uint64_t mantissa = parts.fraction | Hidden_Bit;
    const Wide unit = Wide{1} << shift;
    const Wide scaled = (mantissa & (unit - 1)) * Tens[precision];
    const Wide rest = scaled & (unit - 1);
    std::uint64_t whole = shift <= Fraction_Bits ? mantissa >> shift : 0;
    auto decimals = static_cast<std::uint64_t>(scaled >> shift);
    decimals += rest > unit / 2 || (rest == unit / 2 && decimals % 2 == 1);
    if (decimals == Tens[precision]) {
        decimals = 0;
        ++whole;
    }
    to = put_whole(put_sign(to, parts.negative), whole);
    *to = '.';
    return put_digits(to + 1, decimals, precision);
}

/// Lays out `count` digits as "%e" does.
char *put_decimal(char *to, const Decimal &number, int count, char exponent_letter)
{
    char *end = put_digits(to + 1, number.digits, count);
    to[0] = to[1];
    to[1] = '.';
    return put_exponent(count > 1 ? end : to + 1, number.exponent, exponent_letter);
}

/// Lays out `count` digits as "%g" does: trailing zeros are dropped.
char *put_shortened(char *to, Decimal number, int count)
{
    const bool scientific = number.exponent < -4 || number.exponent >= count;
    for (; count > 1 && number.digits % 10 == 0; --count)
        number.digits /= 10;
    if (scientific)
        return put_decimal(to, number, count, 'e');
    if (number.exponent < 0) {
        std::fill_n(to, 5, '0');
        to[1] = '.';
        return put_digits(to + 1 - number.exponent, number.digits, count);
    }
    const int whole = number.exponent + 1;
    if (count <= whole)
        return put_digits(to, number.digits * Tens[whole - count], whole);
    char *end = put_digits(to + 1, number.digits, count);
    std::memmove(to, to + 1, static_cast<std::size_t>(whole));
    to[whole] = '.';
    return end;
}

} // namespace

char *put_fixed(char *to, double value, int precision)
{
    const Parts parts = take_apart(value);
    if (parts.exponent < Whole_Exponent && precision >= 1 && precision <= Most_Digits)
        return put_fixed_exactly(to, parts, precision);
    return put_by_library(to, value, std::chars_format::fixed, precision);
}

char *put_scientific(char *to, double value, int precision, char exponent_letter)
{
    const Parts parts = take_apart(value);
    if (const auto number = round_to_digits(parts, precision + 1))
        return put_decimal(put_sign(to, parts.negative), *number, precision + 1, exponent_letter);
    char *end = put_by_library(to, value, std::chars_format::scientific, precision);
    if (exponent_letter == 'E')
        std::transform(to, end, to,
                       [](char c) { return c < 'a' ? c : static_cast<char>(c - 'a' + 'A'); });
    return end;
}

char *put_general(char *to, double value, int precision)
{
    const Parts parts = take_apart(value);
    const int count = std::max(precision, 1);
    if (parts.exponent < Whole_Exponent && count <= Most_Digits) {
        const auto whole = static_cast<std::uint64_t>(std::abs(value));
        if (static_cast<double>(whole) == std::abs(value) && whole < Tens[count])
            return put_whole(put_sign(to, parts.negative), whole);
    }
    if (const auto number = round_to_digits(parts, count))
        return put_shortened(put_sign(to, parts.negative), *number, count);
    return put_by_library(to, value, std::chars_format::general, precision);
}

} // namespace quarl
