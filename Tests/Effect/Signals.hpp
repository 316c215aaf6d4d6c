#pragma once

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstddef>
#include <cstdint>
#include <numbers>
#include <random>
#include <vector>

/// Signals and measures that the effect's tests share.
namespace signals
{

constexpr double sampleRate = 48000;

inline std::vector<float> sine(double frequency, std::size_t frames, double amplitude = 0.5)
{
    std::vector<float> samples(frames);
    for (std::size_t n = 0; n < frames; ++n) {
        samples[n] = static_cast<float>(amplitude * std::sin(2 * std::numbers::pi * frequency /
                                                             sampleRate * static_cast<double>(n)));
    }
    return samples;
}

inline std::vector<float> noise(std::size_t frames, std::uint32_t seed, float amplitude = 0.5F)
{
    std::mt19937 generator(seed);
    std::uniform_real_distribution<float> distribution(-amplitude, amplitude);
    std::vector<float> samples(frames);
    std::generate(samples.begin(), samples.end(), [&] { return distribution(generator); });
    return samples;
}

/// The spectrum of `samples` at one frequency, unscaled.
inline std::complex<double> spectrumAt(const std::vector<float> &samples, double frequency)
{
    std::complex<double> sum = 0;
    for (std::size_t n = 0; n < samples.size(); ++n) {
        sum += static_cast<double>(samples[n]) *
               std::polar(1.0,
                          -2 * std::numbers::pi * frequency / sampleRate * static_cast<double>(n));
    }
    return sum;
}

inline double decibels(double ratio)
{
    return 20 * std::log10(ratio);
}

inline float largest(const std::vector<float> &samples)
{
    float most = 0;
    for (const float sample : samples) {
        most = std::max(most, std::abs(sample));
    }
    return most;
}

/// The largest |x(n+1) - 2 x(n) + x(n-1)|: a click stands out in it.
inline float largestBend(const std::vector<float> &samples)
{
    float most = 0;
    for (std::size_t n = 1; n + 1 < samples.size(); ++n) {
        most = std::max(most, std::abs(samples[n + 1] - 2 * samples[n] + samples[n - 1]));
    }
    return most;
}

inline bool allFinite(const std::vector<float> &samples)
{
    return std::all_of(samples.begin(), samples.end(), [](float s) { return std::isfinite(s); });
}

} // namespace signals
