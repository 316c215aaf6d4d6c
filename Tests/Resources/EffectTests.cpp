#include "Resources/Demonstration Loops/Effects/Effects.hpp"
#include "Resources/Demonstration Loops/Effects/Reverb.hpp"
#include "Resources/Demonstration Loops/Random.hpp"
#include "Tests/Resources/Measuring.hpp"

#include <gtest/gtest.h>

#include <ostream>

namespace
{

using namespace demonstration_loops;

/// Bursts of noise with rests between, different in both channels.
StereoLoop bursts(std::size_t frames)
{
    Random random(9);
    StereoLoop loop(frames);
    for (std::size_t i = 0; i < frames; ++i) {
        const double gate = i % 12000 < 3000 ? 0.4 : 0.0;
        loop.left[i] = gate * random.bipolar();
        loop.right[i] = gate * random.bipolar();
    }
    return loop;
}

StereoLoop impulse(std::size_t frames, std::size_t place)
{
    StereoLoop loop(frames);
    loop.left[place] = loop.right[place] = 1.0;
    return loop;
}

struct Case {
    const char *name;
    Effect effect;
};

std::ostream &operator<<(std::ostream &out, const Case &value)
{
    return out << value.name;
}

class EffectTests : public testing::TestWithParam<Case>
{
};

// What has no slow movement of its own treats every place of the loop alike.
TEST_P(EffectTests, TreatsTheSeamLikeAnyOtherPlace)
{
    StereoLoop loop = bursts(96000);
    StereoLoop shifted = measuring::rotated(loop, 40000);
    GetParam().effect(loop);
    GetParam().effect(shifted);
    EXPECT_LT(measuring::largestDifference(measuring::rotated(loop, 40000), shifted),
              1.0e-3 * loop.peak());
}

INSTANTIATE_TEST_SUITE_P(
    All, EffectTests,
    testing::Values(Case{"Drive", drive(4, 5000)}, Case{"AutoWah", autoWah(400, 2400)},
                    Case{"Tone", tone(800, 1, 6)}, Case{"LowCut", lowCut(100)},
                    Case{"Reverb", [](StereoLoop &loop) { loop = reverberate(loop, plate); }},
                    Case{"LongReverb",
                         [](StereoLoop &loop) { loop = reverberate(loop, cathedral); }},
                    Case{"Echo", [](StereoLoop &loop) { loop = echo(loop, 18000, 0.6); }}),
    [](const testing::TestParamInfo<Case> &instance) { return instance.param.name; });

TEST(SlowEffectTests, SweepsCloseTheirCircle)
{
    for (const Effect &effect : {filterSweep(400, 6000, 2), chorus(2.0, 0.5)}) {
        // A steady tone with whole periods in the loop shows any break of the sweep.
        StereoLoop loop(96000);
        for (std::size_t i = 0; i < loop.frames(); ++i)
            loop.left[i] = loop.right[i] =
                0.5 * std::sin(2.0 * std::numbers::pi * static_cast<double>(i) / 100.0);
        effect(loop);
        double largest = 0.0;
        for (std::size_t i = 1; i < loop.frames(); ++i)
            largest = std::max(largest, std::abs(loop.left[i] - loop.left[i - 1]));
        EXPECT_LE(std::abs(loop.left.front() - loop.left.back()), largest);
    }
}

TEST(ReverbTests, TheTailOfTheEndIsHeardAtTheBeginning)
{
    const StereoLoop wet = reverberate(impulse(192000, 191000), hall);
    EXPECT_GT(measuring::rms(wet.left, 0, 24000), 10.0 * measuring::rms(wet.left, 166000, 190000));
}

TEST(ReverbTests, DecaysInItsTime)
{
    const StereoLoop wet = reverberate(impulse(480000, 0), plate);
    const double early = measuring::rms(wet.left, 9600, 14400);
    const double late = measuring::rms(wet.left, 45600, 50400);
    // 0.75 s of a room whose low notes take 1.5 s to fall by 60 dB; damping speeds it up.
    EXPECT_LT(measuring::decibels(late / early), -27.0);
    EXPECT_GT(measuring::decibels(late / early), -42.0);
}

TEST(ReverbTests, BothSidesSoundButNotTheSame)
{
    const StereoLoop wet = reverberate(impulse(192000, 0), hall);
    double product = 0.0;
    for (std::size_t i = 0; i < wet.frames(); ++i)
        product += wet.left[i] * wet.right[i];
    const double frames = static_cast<double>(wet.frames());
    const double correlation =
        product / frames /
        (measuring::rms(wet.left, 0, wet.frames()) * measuring::rms(wet.right, 0, wet.frames()));
    EXPECT_LT(std::abs(correlation), 0.3);
}

TEST(EchoTests, ComesBackAfterItsDelayAndWeaker)
{
    const StereoLoop wet = echo(impulse(192000, 1000), 12000, 0.5);
    const auto peakAfter = [&](const std::vector<double> &channel, std::size_t from) {
        double peak = 0.0;
        for (std::size_t i = from; i < from + 400; ++i)
            peak = std::max(peak, std::abs(channel[i]));
        return peak;
    };
    EXPECT_LT(peakAfter(wet.left, 6000), 1.0e-3);
    const double first = peakAfter(wet.left, 12990);
    const double second = peakAfter(wet.right, 24990);
    EXPECT_GT(first, 0.1);
    EXPECT_GT(second, 0.02);
    EXPECT_LT(second, first);
}

TEST(DriveTests, AddsHarmonics)
{
    StereoLoop loop(48000);
    for (std::size_t i = 0; i < loop.frames(); ++i)
        loop.left[i] = 0.5 * std::sin(2.0 * std::numbers::pi * static_cast<double>(i) / 240.0);
    drive(5, 10000)(loop);
    const double first = std::abs(measuring::component(loop.left, 0, 48000, 200.0));
    const double third = std::abs(measuring::component(loop.left, 0, 48000, 600.0));
    EXPECT_GT(measuring::decibels(third / first), -20.0);
}

} // namespace
