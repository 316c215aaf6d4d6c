#include "Resources/Demonstration Loops/Mastering/Cabinet.hpp"
#include "Resources/Demonstration Loops/Mastering/Dynamics.hpp"
#include "Resources/Demonstration Loops/Mastering/Loudness.hpp"
#include "Resources/Demonstration Loops/Mastering/Master.hpp"
#include "Resources/Demonstration Loops/Mastering/SlidingMaximum.hpp"
#include "Resources/Demonstration Loops/Random.hpp"
#include "Tests/Resources/Measuring.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

namespace
{

using namespace demonstration_loops;

StereoLoop sine(double frequency, double decibels, double seconds)
{
    StereoLoop loop(static_cast<std::size_t>(seconds * sampleRate));
    const double amplitude = std::pow(10.0, decibels / 20.0);
    for (std::size_t i = 0; i < loop.frames(); ++i)
        loop.left[i] = loop.right[i] = amplitude * std::sin(2.0 * std::numbers::pi * frequency *
                                                            static_cast<double>(i) / sampleRate);
    return loop;
}

// BS.1770 fixes its scale so: a sine of 997 Hz at 0 dBFS in one front channel is
// -3.01 LUFS, in both 0.0.
TEST(LoudnessTests, AToneInBothChannelsHasItsLevel)
{
    EXPECT_NEAR(integratedLoudness(sine(997, -23, 10)), -23.0, 0.05);
    EXPECT_NEAR(integratedLoudness(sine(997, -33, 10)), -33.0, 0.05);
}

TEST(LoudnessTests, AToneInOneChannelIsThreeDecibelsLess)
{
    StereoLoop loop = sine(997, -20, 10);
    std::fill(loop.right.begin(), loop.right.end(), 0.0);
    EXPECT_NEAR(integratedLoudness(loop), -23.01, 0.05);
}

// The values are those of FFmpeg's ebur128 filter for the same tones.
TEST(LoudnessTests, LowTonesCountLessAndHighOnesMore)
{
    EXPECT_NEAR(integratedLoudness(sine(50, -20, 10)), -24.6, 0.1);
    EXPECT_NEAR(integratedLoudness(sine(8000, -20, 10)), -16.7, 0.1);
}

TEST(LoudnessTests, RestsAreGatedOut)
{
    StereoLoop loop = sine(1000, -20, 20);
    for (std::size_t i = loop.frames() / 2; i < loop.frames(); ++i)
        loop.left[i] = loop.right[i] = 0.0;
    EXPECT_NEAR(integratedLoudness(loop), -20.0, 0.2);
}

TEST(LoudnessTests, SilenceHasNone)
{
    EXPECT_EQ(integratedLoudness(StereoLoop(96000)), -std::numeric_limits<double>::infinity());
}

/// By what factor each frame is above `ceiling`.
std::vector<double> excessOver(const StereoLoop &loop, double ceiling)
{
    std::vector<double> excess(loop.frames());
    for (std::size_t i = 0; i < loop.frames(); ++i)
        excess[i] = std::max(std::abs(loop.left[i]), std::abs(loop.right[i])) / ceiling;
    return excess;
}

TEST(LimiterTests, KeepsEverySampleUnderTheCeiling)
{
    Random random(2);
    StereoLoop loop(96000);
    for (std::size_t i = 0; i < loop.frames(); ++i) {
        const double level = i % 9600 < 300 ? 3.0 : 0.3;
        loop.left[i] = level * random.bipolar();
        loop.right[i] = level * random.bipolar();
    }
    limit(loop, excessOver(loop, 0.7));
    EXPECT_LE(loop.peak(), 0.7 + 1.0e-12);
    EXPECT_GT(loop.peak(), 0.5) << "no more than needed is taken away";
}

TEST(LimiterTests, LeavesWhatIsUnderTheCeilingAlone)
{
    const StereoLoop before = sine(440, -6, 2);
    StereoLoop after = before;
    limit(after, excessOver(after, 0.7));
    EXPECT_LT(measuring::largestDifference(before, after), 1.0e-12);
}

TEST(LimiterTests, ThePeakAtTheBeginningIsForeseenAtTheEnd)
{
    StereoLoop loop = sine(440, -12, 2);
    loop.left[0] = 1.0;
    const double before = loop.left[loop.frames() - 27];
    limit(loop, excessOver(loop, 0.5));
    EXPECT_LE(std::abs(loop.left[0]), 0.5 + 1.0e-12);
    EXPECT_LT(std::abs(loop.left[loop.frames() - 27]), 0.8 * std::abs(before));
}

TEST(SlidingMaximumTests, LooksAheadRoundTheEnd)
{
    EXPECT_EQ(largestAhead({3, 1, 4, 1, 5, 0}, 2), (std::vector<double>{4, 4, 5, 5, 5, 3}));
    EXPECT_EQ(largestAhead({3, 1, 4}, 0), (std::vector<double>{3, 1, 4}));
}

TEST(CabinetTests, ThrowsTrebleFurtherThanBass)
{
    const auto loudest = [](const StereoLoop &loop) {
        const std::vector<double> level = levelThroughCabinet(loop);
        return *std::max_element(level.begin(), level.end());
    };
    EXPECT_NEAR(loudest(sine(80, -6, 1)), 1.2 * 0.5012, 0.01);
    EXPECT_NEAR(loudest(sine(7919, -6, 1)), 1.7 * 0.5012, 0.01);
    StereoLoop opposed = sine(7919, -6, 1);
    for (double &sample : opposed.right)
        sample = -sample;
    EXPECT_LT(loudest(opposed), 1.0e-12) << "it takes both channels as one";
}

TEST(CabinetTests, LetsPeaksMeetThatAreHalfAMillisecondApart)
{
    const auto levelNextTo = [](std::size_t distance) {
        StereoLoop loop(48000);
        loop.left[20000] = loop.right[20000] = 1.0;
        return levelThroughCabinet(loop)[20000 + distance];
    };
    EXPECT_GT(levelNextTo(24), 1.0);
    EXPECT_LT(levelNextTo(200), 0.1);
}

TEST(CompressorTests, LoudPassagesComeNearerToSoftOnes)
{
    StereoLoop loop = sine(440, -8, 8);
    for (std::size_t i = loop.frames() / 2; i < loop.frames(); ++i) {
        loop.left[i] *= 0.05;
        loop.right[i] *= 0.05;
    }
    compress(loop, -20, 2);
    // The sine's RMS lies 9 dB above the threshold: half of that goes.
    EXPECT_NEAR(measuring::decibels(measuring::rms(loop.left, 96000, 168000) * std::sqrt(2.0)),
                -8.0 - 4.5, 0.5);
    EXPECT_NEAR(measuring::decibels(measuring::rms(loop.left, 288000, 360000) * std::sqrt(2.0)),
                -34.0, 0.3);
}

TEST(MasterTests, ReachesTheTargetUnderTheCeiling)
{
    Random random(4);
    StereoLoop loop(240000);
    for (std::size_t i = 0; i < loop.frames(); ++i) {
        const double level = i % 24000 < 1200 ? 1.0 : 0.25;
        loop.left[i] = level * random.bipolar();
        loop.right[i] = level * random.bipolar();
    }
    master(loop);
    EXPECT_NEAR(integratedLoudness(loop), targetLoudness, 0.5);
    EXPECT_LE(measuring::decibels(loop.peak()), ceilingDb + 0.01);
    const std::vector<double> level = levelThroughCabinet(loop);
    // While it changes, the gain is not the same for a band as for what it is filtered from.
    EXPECT_LE(measuring::decibels(*std::max_element(level.begin(), level.end())),
              cabinetCeilingDb + 0.1);
}

} // namespace
