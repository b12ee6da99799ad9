// Repeatable numbers: what is measured is the same on every machine and at every run.
#pragma once

#include <cmath>
#include <cstdint>

/// A splitmix64 generator.
class Random
{
public:
    explicit Random(std::uint64_t seed) : state_(seed) {}

    std::uint64_t next()
    {
        state_ += 0x9E3779B97F4A7C15;
        std::uint64_t z = state_;
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EB;
        return z ^ (z >> 31);
    }
    /// 0 to n - 1.
    int below(int n) { return static_cast<int>(next() % static_cast<std::uint64_t>(n)); }
    /// `low` to `high`, both included.
    int between(int low, int high) { return low + below(high - low + 1); }
    bool one_in(int n) { return below(n) == 0; }
    /// 0 (included) to 1.
    double unit() { return static_cast<double>(next() >> 11) * 0x1p-53; }
    double uniform(double low, double high) { return low + (high - low) * unit(); }
    /// A real of any sign whose decimal exponent lies between `low` and `high`.
    double real(double low, double high)
    {
        const double size = std::pow(10.0, uniform(low, high));
        return one_in(2) ? -size : size;
    }

private:
    std::uint64_t state_;
};
