#include "Resources/Demonstration Loops/Mastering/Cabinet.hpp"

#include "Effect/RotaryCabinet.hpp"
#include "Resources/Demonstration Loops/Audio/Filters.hpp"
#include "Resources/Demonstration Loops/Mastering/SlidingMaximum.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>

namespace demonstration_loops
{

namespace
{

constexpr double crossover = effect::RotaryCabinet::crossoverFrequency;
constexpr double hornGain = 1.7;
constexpr double drumGain = 1.2;
constexpr auto shift = static_cast<std::size_t>(0.0005 * sampleRate);

StereoLoop mono(const StereoLoop &loop)
{
    StereoLoop result(loop.frames());
    for (std::size_t i = 0; i < loop.frames(); ++i)
        result.left[i] = result.right[i] = 0.5 * (loop.left[i] + loop.right[i]);
    return result;
}

/// The largest magnitude within `shift` of each frame, of one of two channels alike.
std::vector<double> levelAround(StereoLoop loop, const BiquadCoefficients &half)
{
    filterLoop(loop, half);
    filterLoop(loop, half);
    for (double &sample : loop.left)
        sample = std::abs(sample);
    std::vector<double> level = largestAhead(loop.left, 2 * shift);
    std::rotate(level.begin(), level.end() - shift, level.end());
    return level;
}

} // namespace

std::vector<double> levelThroughCabinet(const StereoLoop &loop)
{
    const StereoLoop sum = mono(loop);
    const double butterworth = std::numbers::sqrt2 / 2;
    std::vector<double> level =
        levelAround(sum, BiquadCoefficients::lowPass(crossover, butterworth));
    const std::vector<double> treble =
        levelAround(sum, BiquadCoefficients::highPass(crossover, butterworth));
    for (std::size_t i = 0; i < level.size(); ++i)
        level[i] = drumGain * level[i] + hornGain * treble[i];
    return level;
}

} // namespace demonstration_loops
