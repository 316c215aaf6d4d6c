#pragma once

#include <cstddef>
#include <cstdint>

namespace demonstration_loops
{

/// A small generator of our own (SplitMix64, Steele, Lea and Flood 2014): the
/// standard library's distributions differ between implementations, and a loop
/// has to come out the same everywhere.
class Random
{
public:
    explicit Random(std::uint64_t seed) : state_(seed * 0x9E3779B97F4A7C15ULL + 0x1234567ULL) {}

    /// The next 64 random bits.
    std::uint64_t bits()
    {
        state_ += 0x9E3779B97F4A7C15ULL;
        std::uint64_t z = state_;
        z = (z ^ (z >> 30U)) * 0xBF58476D1CE4E5B9ULL;
        z = (z ^ (z >> 27U)) * 0x94D049BB133111EBULL;
        return z ^ (z >> 31U);
    }

    /// Uniform in [0, 1).
    double unit() { return static_cast<double>(bits() >> 11U) * 0x1.0p-53; }

    /// Uniform in [low, high).
    double between(double low, double high) { return low + (high - low) * unit(); }

    /// Uniform in [-1, 1).
    double bipolar() { return between(-1.0, 1.0); }

    /// True with the given probability.
    bool chance(double probability) { return unit() < probability; }

    /// Uniform in 0 … count - 1; `count` is at least 1.
    std::size_t below(std::size_t count) { return static_cast<std::size_t>(bits() % count); }

private:
    std::uint64_t state_;
};

} // namespace demonstration_loops
