#include "Effect/SoftDrive.hpp"
#include "Tests/Effect/Signals.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <vector>

using effect::Ramp;
using effect::SoftDrive;
using effect::Tick;
using effect::tickFrames;

namespace
{

std::vector<float> driven(const std::vector<float> &input, float gain, float makeUp)
{
    SoftDrive drive;
    drive.reset();
    std::vector<float> output;
    for (std::size_t from = 0; from + tickFrames <= input.size(); from += tickFrames) {
        Tick tick;
        std::copy_n(input.begin() + static_cast<std::ptrdiff_t>(from), tickFrames, tick.begin());
        drive.process(tick, Ramp(gain, gain), Ramp(makeUp, makeUp));
        output.insert(output.end(), tick.begin(), tick.end());
    }
    return output;
}

} // namespace

TEST(SoftDrive, IsFlatWhenItDoesNotBend)
{
    std::vector<float> impulse(1600, 0);
    impulse[0] = 1;
    const std::vector<float> response = driven(impulse, 0.001F, 1000);
    for (int step = 0; step < 19; ++step) {
        const double frequency = 20 * std::pow(1.4, step);
        EXPECT_NEAR(signals::decibels(std::abs(signals::spectrumAt(response, frequency))), 0, 0.1)
            << frequency << " Hz";
    }
    EXPECT_GT(signals::decibels(std::abs(signals::spectrumAt(response, 18000))), -1);
}

TEST(SoftDrive, FollowsItsCurveForSlowSignals)
{
    for (const float level : {-4.0F, -0.7F, 0.0F, 0.2F, 1.0F, 6.0F}) {
        const std::vector<float> output = driven(std::vector<float>(1600, level), 2, 1);
        const float x = 2 * level;
        EXPECT_NEAR(output.back(), x / std::sqrt(1 + x * x), 1e-5);
    }
}

TEST(SoftDrive, FoldsHarmonicsDownFarBelowTheTone)
{
    // Harmonics 7 and 9 of 5 kHz lie at 35 and 45 kHz, and fold to 13 and 3 kHz. The
    // same curve taken sample by sample is the measure of what is won.
    const std::vector<float> input = signals::sine(5000, 48000, 0.7);
    const std::vector<float> output = driven(input, 3, 1);
    std::vector<float> bare = input;
    for (float &sample : bare) {
        sample = 3 * sample / std::sqrt(1 + 9 * sample * sample);
    }
    const auto folded = [](const std::vector<float> &samples, double frequency) {
        return signals::decibels(std::abs(signals::spectrumAt(samples, frequency)) /
                                 std::abs(signals::spectrumAt(samples, 5000)));
    };
    for (const double frequency : {13000.0, 3000.0}) {
        EXPECT_LT(folded(output, frequency), folded(bare, frequency) - 30);
        EXPECT_LT(folded(output, frequency), -70);
    }
}

TEST(SoftDrive, BoundsWhatIsFarTooLoud)
{
    const std::vector<float> input = signals::noise(16000, 3, 64);
    const std::vector<float> output = driven(input, 8, 1);
    EXPECT_TRUE(signals::allFinite(output));
    // ±1 through filters that overshoot as far as the sizes of their weights add up.
    EXPECT_LE(signals::largest(output), 2.0F);
}
