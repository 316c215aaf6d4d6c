#pragma once

#include "Resources/Demonstration Loops/Audio/StereoLoop.hpp"

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstddef>
#include <numbers>
#include <vector>

/// Small measurements that several tests share.
namespace measuring
{

inline double decibels(double ratio)
{
    return 20.0 * std::log10(ratio + 1.0e-30);
}

inline double rms(const std::vector<double> &x, std::size_t from, std::size_t to)
{
    double sum = 0.0;
    for (std::size_t i = from; i < to; ++i)
        sum += x[i] * x[i];
    return std::sqrt(sum / static_cast<double>(to - from));
}

/// The signal's component at `frequency` in the Hann window of `size` from `start`.
inline std::complex<double> component(const std::vector<double> &x, std::size_t start,
                                      std::size_t size, double frequency)
{
    std::complex<double> sum = 0.0;
    const double turn = 2.0 * std::numbers::pi;
    for (std::size_t i = 0; i < size; ++i) {
        const double place = static_cast<double>(i);
        const double window = 0.5 - 0.5 * std::cos(turn * place / static_cast<double>(size));
        const double time = static_cast<double>(start + i) / demonstration_loops::sampleRate;
        sum += window * x[start + i] * std::polar(1.0, -turn * frequency * time);
    }
    return sum;
}

/// Cents by which the partial nearest to `expected` Hz is off, from how far its
/// phase drifts between two windows.
inline double centsOff(const std::vector<double> &x, std::size_t start, double expected)
{
    const std::size_t size = 8192;
    const std::size_t step = 2048;
    const auto first = component(x, start, size, expected);
    const auto second = component(x, start + step, size, expected);
    const double drift = std::arg(second / first) / (2.0 * std::numbers::pi);
    const double found =
        expected + drift * demonstration_loops::sampleRate / static_cast<double>(step);
    return 1200.0 * std::log2(found / expected);
}

inline demonstration_loops::StereoLoop rotated(demonstration_loops::StereoLoop loop,
                                               std::size_t frames)
{
    for (auto *channel : {&loop.left, &loop.right})
        std::rotate(channel->rbegin(), channel->rbegin() + static_cast<std::ptrdiff_t>(frames),
                    channel->rend());
    return loop;
}

/// The largest difference between two loops of one length.
inline double largestDifference(const demonstration_loops::StereoLoop &a,
                                const demonstration_loops::StereoLoop &b)
{
    double result = 0.0;
    for (std::size_t i = 0; i < a.frames(); ++i)
        result =
            std::max({result, std::abs(a.left[i] - b.left[i]), std::abs(a.right[i] - b.right[i])});
    return result;
}

} // namespace measuring
