#include "Resources/Demonstration Loops/Mastering/Dynamics.hpp"

#include "Resources/Demonstration Loops/Mastering/SlidingMaximum.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

namespace demonstration_loops
{

namespace
{

void applyGain(StereoLoop &loop, const std::vector<double> &gain)
{
    for (std::size_t i = 0; i < loop.frames(); ++i) {
        loop.left[i] *= gain[i];
        loop.right[i] *= gain[i];
    }
}

/// The mean of each frame and the `behind` frames before it, round the loop.
std::vector<double> meanBehind(const std::vector<double> &values, std::size_t behind)
{
    const std::size_t frames = values.size();
    std::vector<double> result(frames);
    double sum = 0.0;
    for (std::size_t i = 0; i < behind; ++i)
        sum += values[(2 * frames - behind + i) % frames];
    for (std::size_t i = 0; i < frames; ++i) {
        sum += values[i];
        result[i] = sum / static_cast<double>(behind + 1);
        sum -= values[(i + 2 * frames - behind) % frames];
    }
    return result;
}

} // namespace

void compress(StereoLoop &loop, double threshold, double ratio)
{
    const double kneeDb = 6.0;
    const double window = 1.0 - std::exp(-1.0 / (0.02 * sampleRate));
    const double attack = 1.0 - std::exp(-1.0 / (0.015 * sampleRate));
    const double release = 1.0 - std::exp(-1.0 / (0.18 * sampleRate));
    std::vector<double> gain(loop.frames());
    double power = 1.0e-9;
    double reduction = 0.0;
    for (int pass = 0; pass < 2; ++pass) {
        for (std::size_t i = 0; i < loop.frames(); ++i) {
            const double now = 0.5 * (loop.left[i] * loop.left[i] + loop.right[i] * loop.right[i]);
            power += window * (now - power);
            const double over = 10.0 * std::log10(power + 1.0e-12) - threshold;
            const double bent = std::clamp(over + 0.5 * kneeDb, 0.0, kneeDb);
            const double excess = over > 0.5 * kneeDb ? over : bent * bent / (2.0 * kneeDb);
            const double goal = excess * (1.0 - 1.0 / ratio);
            reduction += (goal > reduction ? attack : release) * (goal - reduction);
            gain[i] = std::pow(10.0, -reduction / 20.0);
        }
    }
    applyGain(loop, gain);
}

void limit(StereoLoop &loop, const std::vector<double> &excess)
{
    const auto ahead = static_cast<std::size_t>(0.005 * sampleRate);
    std::vector<double> gain = largestAhead(excess, ahead);
    for (double &value : gain)
        value = 1.0 / std::max(1.0, value);
    const double release = 1.0 - std::exp(-1.0 / (0.08 * sampleRate));
    double level = 1.0;
    for (int pass = 0; pass < 2; ++pass) {
        for (double &value : gain) {
            level = std::min(value, level + release * (1.0 - level));
            value = level;
        }
    }
    applyGain(loop, meanBehind(gain, ahead));
}

} // namespace demonstration_loops
