#include "Effect/Crossover.hpp"
#include "Tests/Effect/Signals.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

using effect::Crossover;
using effect::Tick;

namespace
{

struct Bands {
    std::vector<float> low;
    std::vector<float> high;
    std::vector<float> sum;
};

Bands impulseResponse(double frequency)
{
    Crossover crossover(frequency, signals::sampleRate);
    Bands bands;
    for (std::size_t tick = 0; tick < 2000; ++tick) {
        Tick input{};
        input[0] = tick == 0 ? 1.0F : 0.0F;
        Tick low;
        Tick high;
        crossover.process(input, low, high);
        bands.low.insert(bands.low.end(), low.begin(), low.end());
        bands.high.insert(bands.high.end(), high.begin(), high.end());
    }
    for (std::size_t n = 0; n < bands.low.size(); ++n) {
        bands.sum.push_back(bands.low[n] + bands.high[n]);
    }
    return bands;
}

double levelAt(const std::vector<float> &response, double frequency)
{
    return signals::decibels(std::abs(signals::spectrumAt(response, frequency)));
}

} // namespace

TEST(Crossover, BandsSumToAFlatSpectrum)
{
    const Bands bands = impulseResponse(800);
    for (int step = 0; step < 27; ++step) {
        const double frequency = 20 * std::pow(1.3, step);
        EXPECT_NEAR(levelAt(bands.sum, frequency), 0, 0.01) << frequency << " Hz";
    }
}

TEST(Crossover, BandsAreSixDecibelsDownWhereTheyMeet)
{
    const Bands bands = impulseResponse(800);
    EXPECT_NEAR(levelAt(bands.low, 800), -6.02, 0.05);
    EXPECT_NEAR(levelAt(bands.high, 800), -6.02, 0.05);
}

TEST(Crossover, BandsFallByTwentyFourDecibelsAnOctave)
{
    const Bands bands = impulseResponse(800);
    // Of 1 / (1 + (f / 800)⁴) and its mirror image; nearer to half the rate the
    // bilinear transform makes the low-pass fall faster.
    const double fall = 20 * std::log10(257.0 / 17.0);
    EXPECT_NEAR(levelAt(bands.low, 1600) - levelAt(bands.low, 3200), fall, 0.5);
    EXPECT_NEAR(levelAt(bands.high, 400) - levelAt(bands.high, 200), fall, 0.1);
}

TEST(Crossover, StaysStableAboveItsRange)
{
    const Bands bands = impulseResponse(40000);
    EXPECT_TRUE(signals::allFinite(bands.sum));
    EXPECT_LT(std::abs(bands.low.back()), 1e-6F);
}

TEST(Crossover, ForgetsOnReset)
{
    Crossover crossover(800, signals::sampleRate);
    Tick loud;
    loud.fill(1);
    Tick low;
    Tick high;
    crossover.process(loud, low, high);
    crossover.reset();
    crossover.process(Tick{}, low, high);
    EXPECT_EQ(low, Tick{});
    EXPECT_EQ(high, Tick{});
}
