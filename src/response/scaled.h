// Complex numbers whose exponent cannot overflow.
#pragma once

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdint>

namespace quarl
{

/// `value` times 2 to the power `exponent`. Thirty poles at 1e8 rad/s, or hundreds of stages, stay
/// exact as long as the whole product is a double.
struct Scaled {
    std::complex<double> value{1.0, 0.0};
    std::int64_t exponent = 0;

    [[nodiscard]] std::complex<double> number() const
    {
        if (exponent == 0)
            return value;
        constexpr std::int64_t Beyond = 5000; // more than the range of a double, both ways
        const int by = static_cast<int>(std::clamp(exponent, -Beyond, Beyond));
        return {std::ldexp(value.real(), by), std::ldexp(value.imag(), by)};
    }
    [[nodiscard]] Scaled magnitude() const
    {
        return {{std::hypot(value.real(), value.imag()), 0.0}, exponent};
    }
    [[nodiscard]] bool is_zero() const { return value.real() == 0.0 && value.imag() == 0.0; }
};

/// The same number with its larger part between 2^-300 and 2^300, so that a product of two fits a
/// double; 0, infinity and NaN stay as they are.
inline Scaled balanced(std::complex<double> value, std::int64_t exponent = 0)
{
    const double size = std::max(std::abs(value.real()), std::abs(value.imag()));
    if (size > 0x1p-300 && size < 0x1p300)
        return {value, exponent};
    if (size == 0.0 || !std::isfinite(value.real()) || !std::isfinite(value.imag()))
        return {value, exponent};
    const int by = std::ilogb(size);
    return {{std::scalbn(value.real(), -by), std::scalbn(value.imag(), -by)}, exponent + by};
}

inline Scaled operator*(const Scaled &a, const Scaled &b)
{
    const double real = a.value.real() * b.value.real() - a.value.imag() * b.value.imag();
    const double imag = a.value.real() * b.value.imag() + a.value.imag() * b.value.real();
    return balanced({real, imag}, a.exponent + b.exponent);
}

/// NaN when `b` is 0.
inline Scaled operator/(const Scaled &a, const Scaled &b)
{
    const double square = b.value.real() * b.value.real() + b.value.imag() * b.value.imag();
    const double real = a.value.real() * b.value.real() + a.value.imag() * b.value.imag();
    const double imag = a.value.imag() * b.value.real() - a.value.real() * b.value.imag();
    return balanced({real / square, imag / square}, a.exponent - b.exponent);
}

} // namespace quarl
