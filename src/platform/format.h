// printf-style formatting with the format read at compile time: the literal stays whole in the
// source, its conversions become direct calls, and arguments that do not fit it do not compile.
#pragma once

#include "platform/number.h"
#include "platform/out.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <concepts>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>

namespace quarl
{

/// A format as a template argument: print<"%5i\n">(...).
template <std::size_t N> struct Literal {
    std::array<char, N> text{};
    consteval Literal(const char (&from)[N]) // NOLINT(google-explicit-constructor)
    {
        std::copy(from, from + N, text.begin());
    }
    static constexpr std::size_t size = N - 1;
};

namespace format
{

/// One conversion of a format with the plain text in front of it. Kind '\0' ends the format.
struct Conversion {
    std::size_t text_at = 0;
    std::size_t text_size = 0;
    char kind = '\0';
    bool plus = false;
    bool left = false;
    bool zero = false;
    int width = 0;
    int precision = -1;
};

/// Reads one conversion of `text` from `*at` on: flags, width, precision, letter.
template <std::size_t N>
constexpr Conversion read_conversion(const std::array<char, N> &text, std::size_t *at)
{
    Conversion found;
    found.text_at = *at;
    while (*at < N - 1 && text[*at] != '%')
        ++*at;
    found.text_size = *at - found.text_at;
    if (*at == N - 1)
        return found;
    for (++*at; text[*at] == '+' || text[*at] == '-' || text[*at] == '0'; ++*at) {
        found.plus |= text[*at] == '+';
        found.left |= text[*at] == '-';
        found.zero |= text[*at] == '0';
    }
    for (; text[*at] >= '0' && text[*at] <= '9'; ++*at)
        found.width = found.width * 10 + (text[*at] - '0');
    if (text[*at] == '.')
        for (++*at, found.precision = 0; text[*at] >= '0' && text[*at] <= '9'; ++*at)
            found.precision = found.precision * 10 + (text[*at] - '0');
    while (text[*at] == 'l')
        ++*at;
    found.kind = text[(*at)++];
    return found;
}

/// The conversions of F, the last of kind '\0' with the text behind them.
template <Literal F> struct Parsed {
    static constexpr std::size_t count()
    {
        std::size_t at = 0;
        std::size_t n = 1;
        while (read_conversion(F.text, &at).kind != '\0')
            ++n;
        return n;
    }
    static constexpr auto read()
    {
        std::array<Conversion, count()> all;
        std::size_t at = 0;
        for (Conversion &one : all)
            one = read_conversion(F.text, &at);
        return all;
    }
    static constexpr auto conversions = read();

    /// Index of the argument that conversion `i` prints: "%%" prints none.
    static constexpr std::size_t argument(std::size_t i)
    {
        return static_cast<std::size_t>(
            std::count_if(conversions.begin(), conversions.begin() + i,
                          [](const Conversion &c) { return c.kind != '%'; }));
    }
};

/// Text of a fixed field: up to its terminator. Its whole array may be read.
template <std::size_t N> struct Field {
    const char *bytes;
    std::size_t length;
};

inline std::string_view argument(const std::string &text) { return text; }
inline std::string_view argument(std::string_view text) { return text; }
template <class T>
requires std::same_as<T, const char *> std::string_view argument(const T &text) { return text; }
template <std::size_t N> Field<N> argument(const char (&text)[N])
{
    const void *end = std::memchr(text, 0, N);
    return {text, end ? static_cast<std::size_t>(static_cast<const char *>(end) - text) : N};
}
template <class T>
requires std::is_arithmetic_v<T> T argument(T value) { return value; }

/// Characters that conversion C may write for an argument.
template <Conversion C> std::size_t room(std::string_view text)
{
    return std::max<std::size_t>(C.width, text.size());
}
template <Conversion C, std::size_t N> std::size_t room(Field<N>)
{
    return std::max<std::size_t>(C.width, N) + N;
}
template <Conversion C, class T>
requires std::is_arithmetic_v<T>
constexpr std::size_t room(T)
{
    return std::max<std::size_t>(C.width, std::floating_point<T> ? Real_Room : 24);
}

inline char *fill(char *to, char with, std::ptrdiff_t count)
{
    for (; count > 0; --count)
        *to++ = with;
    return to;
}

template <Conversion C> char *put(char *to, std::string_view text)
{
    static_assert(C.kind == 's');
    if constexpr (C.precision >= 0)
        text = text.substr(0, C.precision);
    const auto pad = C.width - static_cast<std::ptrdiff_t>(text.size());
    if constexpr (!C.left)
        to = fill(to, ' ', pad);
    to = std::copy(text.begin(), text.end(), to);
    return C.left ? fill(to, ' ', pad) : to;
}

/// A copy of constant size and a step of the real length: half the time of a copy of real length.
template <Conversion C, std::size_t N> char *put(char *to, Field<N> field)
{
    if constexpr (C.precision >= 0 || N > 64) {
        return put<C>(to, std::string_view(field.bytes, field.length));
    } else {
        static_assert(C.kind == 's');
        const auto pad = C.width - static_cast<std::ptrdiff_t>(field.length);
        if constexpr (!C.left)
            to = fill(to, ' ', pad);
        std::memcpy(to, field.bytes, N);
        to += field.length;
        return C.left ? fill(to, ' ', pad) : to;
    }
}

inline int decimal_digits(std::uint64_t value)
{
    int digits = 1;
    for (; value >= 10000; value /= 10000)
        digits += 4;
    return digits + (value >= 10) + (value >= 100) + (value >= 1000);
}

template <unsigned Base> char *put_digits(char *to, std::uint64_t value, int digits)
{
    for (char *at = to + digits; at != to; value /= Base)
        *--at = "0123456789abcdef"[value % Base];
    return to + digits;
}

inline int hexadecimal_digits(std::uint64_t value)
{
    int digits = 1;
    for (; value >= 16; value /= 16)
        ++digits;
    return digits;
}

/// The number of digits that a zero-padded conversion such as "%04i" always has, when the value
/// fits; 0 for other conversions.
constexpr int fixed_digits(Conversion c)
{
    return c.zero && !c.left && !c.plus && c.kind != 'x' && c.width <= 4 ? c.width : 0;
}

constexpr std::uint64_t power_of_ten(int exponent)
{
    return exponent == 0 ? 1 : 10 * power_of_ten(exponent - 1);
}

/// "00" to "99".
inline constexpr auto Digit_Pairs = [] {
    std::array<char, 200> pairs{};
    for (std::size_t i = 0; i < 100; ++i) {
        pairs[2 * i] = static_cast<char>('0' + i / 10);
        pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
    return pairs;
}();

inline void put_pair(char *to, std::size_t value) { std::memcpy(to, &Digit_Pairs[2 * value], 2); }

template <int Digits> char *put_fixed_digits(char *to, std::uint32_t value)
{
    int at = Digits;
    for (; at >= 2; value /= 100)
        put_pair(to + (at -= 2), value % 100);
    if (at == 1)
        *to = static_cast<char>('0' + value);
    return to + Digits;
}

template <Conversion C> char *put_integer(char *to, std::uint64_t magnitude, bool negative)
{
    constexpr bool hex = C.kind == 'x';
    if constexpr (constexpr int Digits = fixed_digits(C); Digits > 0)
        if (!negative && magnitude < power_of_ten(Digits))
            return put_fixed_digits<Digits>(to, static_cast<std::uint32_t>(magnitude));
    const int digits = hex ? hexadecimal_digits(magnitude) : decimal_digits(magnitude);
    const int pad = C.width - digits - (negative || C.plus);
    if constexpr (!C.zero && !C.left)
        to = fill(to, ' ', pad);
    if (negative || C.plus)
        *to++ = negative ? '-' : '+';
    if constexpr (C.zero && !C.left)
        to = fill(to, '0', pad);
    to = put_digits < hex ? 16 : 10 > (to, magnitude, digits);
    return C.left ? fill(to, ' ', pad) : to;
}

template <Conversion C, std::integral T> char *put(char *to, T value)
{
    if constexpr (C.kind == 'c') {
        static_assert(std::same_as<T, char> && C.width == 0);
        *to++ = value;
        return to;
    } else if constexpr (C.kind == 'x' || C.kind == 'u' || std::unsigned_integral<T>) {
        static_assert(C.kind == 'x' || C.kind == 'u' || C.kind == 'd' || C.kind == 'i');
        return put_integer<C>(to, static_cast<std::make_unsigned_t<T>>(value), false);
    } else {
        static_assert(C.kind == 'd' || C.kind == 'i');
        const std::int64_t wide = value;
        return put_integer<C>(
            to, wide < 0 ? ~static_cast<std::uint64_t>(wide) + 1 : static_cast<std::uint64_t>(wide),
            wide < 0);
    }
}

template <Conversion C> char *put_real(char *to, double value)
{
    constexpr int precision = C.precision < 0 ? 6 : C.precision;
    if constexpr (C.kind == 'f')
        return put_fixed(to, value, precision);
    else if constexpr (C.kind == 'g')
        return put_general(to, value, precision);
    else
        return put_scientific(to, value, precision, C.kind);
}

template <Conversion C, std::floating_point T> char *put(char *to, T value)
{
    static_assert(C.kind == 'f' || C.kind == 'g' || C.kind == 'e' || C.kind == 'E');
    static_assert(!C.left && !C.zero);
    char *start = to;
    if (C.plus && !std::signbit(value))
        *to++ = '+';
    char *end = put_real<C>(to, value);
    const std::ptrdiff_t pad = C.width - (end - start);
    if (pad <= 0)
        return end;
    std::memmove(start + pad, start, static_cast<std::size_t>(end - start));
    fill(start, ' ', pad);
    return end + pad;
}

template <Literal F, std::size_t I, class... Args> char *put_piece(char *to, const Args &...args)
{
    static constexpr Conversion C = Parsed<F>::conversions[I];
    std::memcpy(to, F.text.data() + C.text_at, C.text_size);
    to += C.text_size;
    if constexpr (C.kind == '%') {
        *to++ = '%';
        return to;
    } else if constexpr (C.kind != '\0') {
        constexpr std::size_t Which = Parsed<F>::argument(I);
        static_assert(Which < sizeof...(Args), "a conversion without an argument");
        return put<C>(to, std::get<Which>(std::tie(args...)));
    } else {
        static_assert(Parsed<F>::argument(I) == sizeof...(Args),
                      "an argument without a conversion");
        return to;
    }
}

template <Literal F, std::size_t I, class... Args> std::size_t piece_room(const Args &...args)
{
    static constexpr Conversion C = Parsed<F>::conversions[I];
    if constexpr (C.kind != '%' && C.kind != '\0')
        return room<C>(std::get<Parsed<F>::argument(I)>(std::tie(args...)));
    else
        return 1;
}

template <Literal F> using Indices = std::make_index_sequence<Parsed<F>::conversions.size()>;

template <Literal F, std::size_t... I, class... Args>
std::size_t whole_room(std::index_sequence<I...> /*pieces*/, const Args &...args)
{
    return F.size + (piece_room<F, I>(args...) + ...);
}

template <Literal F, std::size_t... I, class... Args>
char *put_whole(char *to, std::index_sequence<I...> /*pieces*/, const Args &...args)
{
    ((to = put_piece<F, I>(to, args...)), ...);
    return to;
}

/// Characters of the text when every value has the digits that its conversion fixes; none when some
/// conversion does not.
template <Literal F> constexpr std::size_t fixed_size()
{
    std::size_t size = 0;
    for (const Conversion &c : Parsed<F>::conversions) {
        if (c.kind != '\0' && fixed_digits(c) == 0)
            return 0;
        size += c.text_size + static_cast<std::size_t>(fixed_digits(c));
    }
    return size;
}

template <Literal F, std::size_t I, class... Args> bool piece_fits(const Args &...args)
{
    static constexpr Conversion C = Parsed<F>::conversions[I];
    if constexpr (C.kind == '\0')
        return true;
    else
        return static_cast<std::uint64_t>(std::get<I>(std::tie(args...))) <
               power_of_ten(fixed_digits(C));
}

/// True when all values have the digits that their conversions fix.
template <Literal F, std::size_t... I, class... Args>
bool fits(std::index_sequence<I...> /*pieces*/, const Args &...args)
{
    return (piece_fits<F, I>(args...) && ...);
}

template <Literal F, std::size_t I, class... Args>
char *put_fitting_piece(char *to, const Args &...args)
{
    static constexpr Conversion C = Parsed<F>::conversions[I];
    constexpr std::size_t Which = Parsed<F>::argument(I);
    std::memcpy(to, F.text.data() + C.text_at, C.text_size);
    to += C.text_size;
    if constexpr (Which < sizeof...(Args))
        to = put_fixed_digits<fixed_digits(C)>(
            to, static_cast<std::uint32_t>(std::get<Which>(std::tie(args...))));
    return to;
}

/// put_whole for values of which `fits` is true.
template <Literal F, std::size_t... I, class... Args>
char *put_fitting(char *to, std::index_sequence<I...> /*pieces*/, const Args &...args)
{
    ((to = put_fitting_piece<F, I>(to, args...)), ...);
    return to;
}

template <Literal F, class Scratch, class... Args>
void into_scratch(Scratch &scratch, const Args &...args)
{
    char *room = scratch.reserve(whole_room<F>(Indices<F>(), args...));
    scratch.commit(put_whole<F>(room, Indices<F>(), args...));
}

template <Literal F, class... Args> std::string to_string(const Args &...args)
{
    std::string text(whole_room<F>(Indices<F>(), args...), '\0');
    const char *end = put_whole<F>(text.data(), Indices<F>(), args...);
    text.resize(static_cast<std::size_t>(end - text.data()));
    return text;
}

template <Literal F, class... Args> void to_stream(Out &stream, const Args &...args)
{
    const std::size_t size = whole_room<F>(Indices<F>(), args...);
    if (size > Out::Capacity)
        stream.write(to_string<F>(args...));
    else
        stream.commit(put_whole<F>(stream.reserve(size), Indices<F>(), args...));
}

} // namespace format

/// Room for one text, used again for the next.
class Scratch
{
public:
    /// Room for `size` characters; what was there is lost.
    char *reserve(std::size_t size)
    {
        if (size > capacity_) {
            room_ = std::make_unique_for_overwrite<char[]>(size);
            capacity_ = size;
        }
        return room_.get();
    }
    void commit(const char *end) { size_ = static_cast<std::size_t>(end - room_.get()); }
    [[nodiscard]] std::string_view text() const { return {room_.get(), size_}; }

private:
    std::size_t capacity_ = 1024;
    std::size_t size_ = 0;
    std::unique_ptr<char[]> room_ = std::make_unique_for_overwrite<char[]>(capacity_);
};

/// The text that printf would write for format F, into `scratch`.
template <Literal F, class... Args> void format_to(Scratch &scratch, const Args &...args)
{
    format::into_scratch<F>(scratch, format::argument(args)...);
}

/// The text that printf would write for format F. Conversions: d i u x c s f e E g, flags + - 0,
/// width and precision; texts are char arrays (up to their terminator) and string views.
template <Literal F, class... Args> std::string formatted(const Args &...args)
{
    return format::to_string<F>(format::argument(args)...);
}

/// Writes to `stream` what fprintf would write for format F.
template <Literal F, class... Args> void print(Out &stream, const Args &...args)
{
    format::to_stream<F>(stream, format::argument(args)...);
}

/// The formatted numbers in `to`, cut to what fits and terminated.
template <Literal F, std::size_t N, class... Args> void put_text(char (&to)[N], const Args &...args)
{
    static_assert((std::integral<Args> && ...));
    constexpr std::size_t Fixed = format::fixed_size<F>();
    if constexpr (Fixed > 0 && Fixed < N)
        if (format::fits<F>(format::Indices<F>(), args...)) {
            *format::put_fitting<F>(to, format::Indices<F>(), args...) = '\0';
            return;
        }
    const std::string text = formatted<F>(args...);
    const std::size_t size = text.copy(to, N - 1);
    to[size] = '\0';
}

} // namespace quarl
