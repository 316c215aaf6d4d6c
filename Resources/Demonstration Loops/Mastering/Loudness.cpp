#include "Resources/Demonstration Loops/Mastering/Loudness.hpp"

#include "Resources/Demonstration Loops/Audio/Filters.hpp"

#include <cmath>
#include <limits>

namespace demonstration_loops
{

namespace
{

// The two sections of the K weighting at 48 kHz, as BS.1770-4 tabulates them.
constexpr BiquadCoefficients head = {1.53512485958697, -2.69169618940638, 1.19839281085285,
                                     -1.69065929318241, 0.73248077421585};
constexpr BiquadCoefficients revisedLowCut = {1.0, -2.0, 1.0, -1.99004745483398, 0.99007225036621};

double loudnessOf(double power)
{
    return -0.691 + 10.0 * std::log10(power);
}

/// Mean of the blocks' powers that are louder than `gate` LUFS.
double gatedMean(const std::vector<double> &powers, double gate)
{
    double sum = 0.0;
    double count = 0.0;
    for (const double power : powers) {
        if (power > 0.0 && loudnessOf(power) > gate) {
            sum += power;
            count += 1.0;
        }
    }
    return count > 0.0 ? sum / count : 0.0;
}

} // namespace

double integratedLoudness(const StereoLoop &loop)
{
    StereoLoop weighted = loop;
    filterLoop(weighted, head);
    filterLoop(weighted, revisedLowCut);
    const std::size_t frames = loop.frames();
    const auto block = static_cast<std::size_t>(0.4 * sampleRate);
    const std::size_t hop = block / 4;
    std::vector<double> powers;
    for (std::size_t start = 0; start < frames; start += hop) {
        double sum = 0.0;
        for (std::size_t i = start; i < start + block; ++i) {
            const std::size_t k = i % frames;
            sum += weighted.left[k] * weighted.left[k] + weighted.right[k] * weighted.right[k];
        }
        powers.push_back(sum / static_cast<double>(block));
    }
    const double first = gatedMean(powers, -70.0);
    if (first <= 0.0)
        return -std::numeric_limits<double>::infinity();
    return loudnessOf(gatedMean(powers, loudnessOf(first) - 10.0));
}

} // namespace demonstration_loops
