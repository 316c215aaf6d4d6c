#include "Effect/FractionalDelay.hpp"
#include "Tests/Effect/Signals.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <vector>

using effect::allLanes;
using effect::FractionalDelay;
using effect::Lanes;
using effect::Tick;
using effect::tickFrames;

namespace
{

float total(Lanes lanes)
{
    return (lanes[0] + lanes[1]) + (lanes[2] + lanes[3]);
}

enum class Reader { fine, plain };

/// The input through a delay that is worked out for each frame.
std::vector<float> delayed(const std::vector<float> &input, Reader reader,
                           const std::function<double(std::size_t)> &delayAt)
{
    FractionalDelay line(400);
    std::vector<float> output;
    for (std::size_t from = 0; from + tickFrames <= input.size(); from += tickFrames) {
        Tick tick;
        std::copy_n(input.begin() + static_cast<std::ptrdiff_t>(from), tickFrames, tick.begin());
        line.write(tick);
        for (std::size_t n = 0; n < tickFrames; ++n) {
            const FractionalDelay::Places places(allLanes(static_cast<float>(delayAt(from + n))));
            output.push_back(total(reader == Reader::fine ? line.readFine(n, places, 1)
                                                          : line.readPlain(n, places, 2)));
        }
    }
    return output;
}

/// The largest departure from the sine that an ideal delay gives.
double worstError(double frequency, double delay, Reader reader)
{
    const std::vector<float> output =
        delayed(signals::sine(frequency, 4800), reader, [delay](std::size_t) { return delay; });
    double worst = 0;
    for (std::size_t n = 1000; n < output.size(); ++n) {
        const double ideal = 0.5 * std::sin(2 * std::numbers::pi * frequency / signals::sampleRate *
                                            (static_cast<double>(n) - delay));
        worst = std::max(worst, std::abs(output[n] - ideal) / 0.5);
    }
    return worst;
}

} // namespace

TEST(FractionalDelay, PassesWholeDelaysUnchanged)
{
    const std::vector<float> input = signals::noise(1600, 1);
    for (const std::size_t delay : {std::size_t{3}, std::size_t{64}, std::size_t{400}}) {
        for (const Reader reader : {Reader::fine, Reader::plain}) {
            const std::vector<float> output =
                delayed(input, reader, [delay](std::size_t) { return static_cast<double>(delay); });
            for (std::size_t n = delay; n < output.size(); ++n) {
                ASSERT_FLOAT_EQ(output[n], input[n - delay]) << "delay " << delay;
            }
        }
    }
}

TEST(FractionalDelay, ReadsFineBetweenSamplesUpToHighFrequencies)
{
    for (int step = 0; step < 11; ++step) {
        const double delay = 20 + 0.0937 * step;
        EXPECT_LT(signals::decibels(worstError(1000, delay, Reader::fine)), -66) << delay;
        EXPECT_LT(signals::decibels(worstError(8000, delay, Reader::fine)), -60) << delay;
        EXPECT_LT(signals::decibels(worstError(12000, delay, Reader::fine)), -50) << delay;
    }
}

TEST(FractionalDelay, ReadsPlainBetweenSamplesOfLowFrequencies)
{
    for (int step = 0; step < 11; ++step) {
        const double delay = 20 + 0.0937 * step;
        EXPECT_LT(signals::decibels(worstError(400, delay, Reader::plain)), -80) << delay;
        EXPECT_LT(signals::decibels(worstError(1600, delay, Reader::plain)), -65) << delay;
    }
}

TEST(FractionalDelay, ShiftsThePitchByTheSpeedOfItsReading)
{
    // A delay that shrinks by v samples a frame reads at 1 + v: f' = f (1 + v).
    constexpr double speed = 0.02;
    constexpr double frequency = 3000;
    const std::vector<float> output =
        delayed(signals::sine(frequency, 16000), Reader::fine,
                [](std::size_t n) { return 350.0 - speed * static_cast<double>(n); });
    const std::vector<float> steady(output.begin() + 1000, output.begin() + 15400);
    const double wanted = std::abs(signals::spectrumAt(steady, frequency * (1 + speed)));
    EXPECT_NEAR(wanted / (0.5 * static_cast<double>(steady.size()) / 2), 1, 0.001);
    // What else there is lies far below: neither the old pitch nor a step of the table.
    std::vector<float> rest = steady;
    const std::complex<double> line = signals::spectrumAt(steady, frequency * (1 + speed)) * 2.0 /
                                      static_cast<double>(steady.size());
    for (std::size_t n = 0; n < rest.size(); ++n) {
        const double phase = 2 * std::numbers::pi * frequency * (1 + speed) / signals::sampleRate *
                             static_cast<double>(n);
        rest[n] -= static_cast<float>((line * std::polar(1.0, phase)).real());
    }
    EXPECT_LT(signals::decibels(signals::largest(rest) / 0.5), -55);
}

TEST(FractionalDelay, ForgetsOnReset)
{
    FractionalDelay line(100);
    Tick loud;
    loud.fill(1);
    line.write(loud);
    line.reset();
    for (std::size_t n = 0; n < tickFrames; ++n) {
        EXPECT_EQ(total(line.readFine(n, FractionalDelay::Places(allLanes(5.5F)), 0)), 0);
    }
}
