#include "response/fir.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>

namespace quarl
{

namespace
{

/// Coefficients given in full: those whose sum is off 1 are divided by it, and mirrored ones are
/// halved.
Taps in_full(const std::vector<double> &all)
{
    constexpr double Tolerance = 0.02;
    Taps taps{.symmetry = Taps::Symmetry::None, .coefficients = all};
    if (all.empty())
        return taps;
    const double total = std::accumulate(all.begin(), all.end(), 0.0);
    if (std::abs(total - 1.0) > Tolerance) {
        taps.divisor = total;
        for (double &coefficient : taps.coefficients)
            coefficient /= total;
    }
    const std::size_t half = all.size() / 2;
    if (!std::equal(all.begin(), all.begin() + half, all.rbegin()))
        return taps;
    taps.symmetry = all.size() % 2 == 0 ? Taps::Symmetry::Even : Taps::Symmetry::Odd;
    taps.coefficients.resize(all.size() - half);
    return taps;
}

constexpr std::size_t Lanes = 8; ///< angles that are worked on side by side, in vector registers

using Block = std::array<double, Lanes>;

/// A point on the unit circle for each lane.
struct Turn {
    Block real{};
    Block imag{};

    /// e^(-i angle)
    static Turn by(const Block &angle)
    {
        Turn turn;
        for (std::size_t i = 0; i < Lanes; ++i) {
            turn.real[i] = std::cos(angle[i]);
            turn.imag[i] = -std::sin(angle[i]);
        }
        return turn;
    }
    /// One after the other.
    [[nodiscard]] Turn then(const Turn &other) const
    {
        Turn both;
        for (std::size_t i = 0; i < Lanes; ++i) {
            both.real[i] = real[i] * other.real[i] - imag[i] * other.imag[i];
            both.imag[i] = real[i] * other.imag[i] + imag[i] * other.real[i];
        }
        return both;
    }
};

/// Horner's rule at e^(-i angle) for all lanes, by groups of coefficients: a turn of the whole sum
/// costs as much as two coefficients of a group. A point on the unit circle keeps the rounding
/// errors of earlier turns as they are, so they only add up.
void horner(std::span<const double> coefficients, const Block &angle, Block *real, Block *imag)
{
    constexpr std::size_t Group = 4;
    const Turn once = Turn::by(angle);
    const Turn twice = once.then(once);
    const Turn thrice = twice.then(once);
    const Turn all = twice.then(twice);
    Block re{};
    Block im{};
    const auto add = [&](std::span<const double, Group> c) {
        for (std::size_t i = 0; i < Lanes; ++i) {
            const double turned = re[i] * all.real[i] - im[i] * all.imag[i];
            im[i] = re[i] * all.imag[i] + im[i] * all.real[i] + c[1] * once.imag[i] +
                    c[2] * twice.imag[i] + c[3] * thrice.imag[i];
            re[i] =
                turned + c[0] + c[1] * once.real[i] + c[2] * twice.real[i] + c[3] * thrice.real[i];
        }
    };
    const std::size_t whole = coefficients.size() / Group * Group;
    if (whole < coefficients.size()) {
        std::array<double, Group> last{};
        std::copy(coefficients.begin() + whole, coefficients.end(), last.begin());
        add(last);
    }
    for (std::size_t at = whole; at > 0; at -= Group)
        add(coefficients.subspan(at - Group).first<Group>());
    *real = re;
    *imag = im;
}

} // namespace

Taps taps_of(const Coefficients &shape) { return in_full(shape.numerators); }

Taps taps_of(const Fir &shape)
{
    if (shape.symmetry == 'B')
        return {.symmetry = Taps::Symmetry::Odd, .coefficients = shape.coefficients};
    if (shape.symmetry == 'C')
        return {.symmetry = Taps::Symmetry::Even, .coefficients = shape.coefficients};
    return in_full(shape.coefficients);
}

double sum(const Taps &taps)
{
    const std::vector<double> &all = taps.coefficients;
    const double total = std::accumulate(all.begin(), all.end(), 0.0);
    if (all.empty() || taps.symmetry == Taps::Symmetry::None)
        return total;
    return taps.symmetry == Taps::Symmetry::Odd ? 2 * total - all.back() : 2 * total;
}

std::vector<std::complex<double>> power_series(std::span<const double> coefficients,
                                               std::span<const double> angles)
{
    std::vector<std::complex<double>> values(angles.size());
    for (std::size_t at = 0; at < angles.size(); at += Lanes) {
        const std::size_t count = std::min(Lanes, angles.size() - at);
        Block angle{};
        std::copy_n(angles.begin() + at, count, angle.begin());
        Block real{};
        Block imag{};
        horner(coefficients, angle, &real, &imag);
        for (std::size_t i = 0; i < count; ++i)
            values[at + i] = {real[i], imag[i]};
    }
    return values;
}

std::vector<std::complex<double>> evaluate(const Taps &taps, std::span<const double> angles)
{
    if (taps.coefficients.empty())
        return std::vector<std::complex<double>>(angles.size(), 1.0);
    if (taps.symmetry == Taps::Symmetry::None)
        return power_series(taps.coefficients, angles);
    // From the middle outwards: what is a half filter's value there, doubled, loses its imaginary
    // part to the other half.
    const std::vector<double> outwards(taps.coefficients.rbegin(), taps.coefficients.rend());
    std::vector<std::complex<double>> values = power_series(outwards, angles);
    for (std::size_t i = 0; i < angles.size(); ++i) {
        const std::complex<double> half = values[i];
        values[i] = taps.symmetry == Taps::Symmetry::Odd
                        ? 2 * half.real() - outwards.front()
                        : 2 * (half.real() * std::cos(angles[i] / 2) +
                               half.imag() * std::sin(angles[i] / 2));
    }
    return values;
}

} // namespace quarl
