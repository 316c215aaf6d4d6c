#include "Resources/Demonstration Loops/Audio/Envelope.hpp"
#include "Resources/Demonstration Loops/Audio/Filters.hpp"
#include "Resources/Demonstration Loops/Audio/Oscillator.hpp"
#include "Resources/Demonstration Loops/Random.hpp"
#include "Tests/Resources/Measuring.hpp"

#include <gtest/gtest.h>

namespace
{

using namespace demonstration_loops;

TEST(RandomTests, TheSameSeedGivesTheSameNumbers)
{
    Random a(7);
    Random b(7);
    Random other(8);
    bool differs = false;
    for (int i = 0; i < 100; ++i) {
        const auto bits = a.bits();
        EXPECT_EQ(bits, b.bits());
        differs = differs || bits != other.bits();
    }
    EXPECT_TRUE(differs);
}

TEST(RandomTests, FillsItsRangeEvenly)
{
    Random random(1);
    double mean = 0.0;
    double squares = 0.0;
    constexpr int count = 100000;
    for (int i = 0; i < count; ++i) {
        const double value = random.bipolar();
        ASSERT_GE(value, -1.0);
        ASSERT_LT(value, 1.0);
        mean += value / count;
        squares += value * value / count;
    }
    EXPECT_NEAR(mean, 0.0, 0.01);
    EXPECT_NEAR(squares, 1.0 / 3.0, 0.01);
}

TEST(OscillatorTests, AliasesOfAHighSawStayFarBelowItsFundamental)
{
    const double frequency = 5000.0;
    Oscillator oscillator;
    std::vector<double> wave(16384);
    for (double &sample : wave)
        sample = oscillator.saw(frequency / sampleRate);
    const double fundamental = std::abs(measuring::component(wave, 0, wave.size(), frequency));
    // Harmonics 7 and 8 fold back to 13 and 8 kHz.
    for (const double alias : {13000.0, 8000.0})
        EXPECT_LT(measuring::decibels(std::abs(measuring::component(wave, 0, wave.size(), alias)) /
                                      fundamental),
                  -30.0);
}

TEST(OscillatorTests, APartialFadesAtItsRate)
{
    Partial partial(1.0, 1000.0 / sampleRate, fadeFactor(1.0), 0.0);
    std::vector<double> wave(48000);
    for (double &sample : wave)
        sample = partial.next();
    const double fall =
        measuring::decibels(measuring::rms(wave, 43200, 48000) / measuring::rms(wave, 0, 4800));
    EXPECT_NEAR(fall, -54.0, 0.1);
}

TEST(EnvelopeTests, RisesHoldsAndEnds)
{
    Envelope envelope({0.01, 0.1, 0.5, 0.05}, 0.5);
    double level = 0.0;
    for (int i = 0; i < 480; ++i)
        level = envelope.next();
    EXPECT_NEAR(level, 1.0, 0.01);
    for (int i = 480; i < 23999; ++i)
        level = envelope.next();
    EXPECT_NEAR(level, 0.5, 0.001);
    EXPECT_FALSE(envelope.finished());
    for (int i = 0; i < 4800; ++i)
        level = envelope.next();
    EXPECT_TRUE(envelope.finished());
    EXPECT_LT(level, 1.0e-5);
}

TEST(FilterTests, ALowPassFallsByTwelveDecibelsAnOctave)
{
    const auto gain = [](double frequency) {
        StateVariable filter;
        filter.tune(500.0, 0.707);
        Oscillator oscillator;
        std::vector<double> wave(24000);
        for (double &sample : wave)
            sample = filter.next(oscillator.sine(frequency / sampleRate)).low;
        return measuring::decibels(measuring::rms(wave, 12000, 24000) * std::numbers::sqrt2);
    };
    EXPECT_NEAR(gain(50.0), 0.0, 0.1);
    EXPECT_NEAR(gain(500.0), -3.0, 0.1);
    EXPECT_NEAR(gain(4000.0) - gain(2000.0), -12.3, 0.6);
}

TEST(FilterTests, ALoopIsFilteredAsIfItHadAlwaysBeenPlaying)
{
    Random random(3);
    StereoLoop loop(48000);
    for (std::size_t i = 0; i < loop.frames(); ++i)
        loop.left[i] = loop.right[i] = random.bipolar();
    StereoLoop shifted = measuring::rotated(loop, 20000);
    const auto section = BiquadCoefficients::highPass(100.0, 0.7);
    filterLoop(loop, section);
    filterLoop(shifted, section);
    EXPECT_LT(measuring::largestDifference(measuring::rotated(loop, 20000), shifted), 1.0e-9);
}

TEST(StereoLoopTests, AWriterGoesOnAtTheBeginning)
{
    StereoLoop loop(4);
    LoopWriter writer(loop, 6);
    for (int i = 1; i <= 6; ++i)
        writer.add(i, -i);
    EXPECT_EQ(loop.left, (std::vector<double>{3, 4, 1 + 5, 2 + 6}));
    EXPECT_EQ(loop.right, (std::vector<double>{-3, -4, -6, -8}));
    EXPECT_EQ(loop.peak(), 8.0);
}

} // namespace
