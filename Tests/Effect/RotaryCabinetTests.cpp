#include "Effect/FlushDenormals.hpp"
#include "Effect/RotaryCabinet.hpp"
#include "Tests/Effect/Signals.hpp"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <limits>
#include <vector>

using effect::CabinetSettings;
using effect::RotaryCabinet;
using effect::Rotor;
using effect::TurnListener;

namespace
{

class Turns : public TurnListener
{
public:
    void turned(std::uint32_t frame) override { frames.push_back(base + frame); }

    std::size_t base = 0;
    std::vector<std::size_t> frames;
};

struct Stereo {
    std::vector<float> left;
    std::vector<float> right;
};

/// Renders in blocks of one size; `before` may change settings ahead of each block.
Stereo render(RotaryCabinet &cabinet, const Stereo &input, std::size_t block, Turns &turns,
              const std::function<void(std::size_t)> &before = {})
{
    Stereo output{std::vector<float>(input.left.size()), std::vector<float>(input.left.size())};
    for (std::size_t from = 0; from < input.left.size(); from += block) {
        const std::size_t frames = std::min(block, input.left.size() - from);
        if (before) {
            before(from);
        }
        turns.base = from;
        cabinet.process(input.left.data() + from, input.right.data() + from,
                        output.left.data() + from, output.right.data() + from,
                        static_cast<std::uint32_t>(frames), turns);
    }
    return output;
}

Stereo render(const CabinetSettings &settings, const Stereo &input, std::size_t block = 256)
{
    RotaryCabinet cabinet(signals::sampleRate);
    cabinet.setSettings(settings);
    cabinet.reset();
    Turns turns;
    return render(cabinet, input, block, turns);
}

Stereo both(const std::vector<float> &channel)
{
    return {channel, channel};
}

CabinetSettings clean()
{
    CabinetSettings settings;
    settings.drive = 0;
    return settings;
}

/// The phase of `samples` against a tone, unwrapped, in radians a frame each
/// `window` frames; the window is to hold whole periods.
std::vector<double> phases(const std::vector<float> &samples, double frequency, std::size_t window)
{
    std::vector<double> unwrapped;
    for (std::size_t from = 0; from + window <= samples.size(); from += window) {
        const std::vector<float> part(samples.begin() + static_cast<std::ptrdiff_t>(from),
                                      samples.begin() + static_cast<std::ptrdiff_t>(from + window));
        double phase = std::arg(signals::spectrumAt(part, frequency));
        if (!unwrapped.empty()) {
            phase =
                unwrapped.back() + std::remainder(phase - unwrapped.back(), 2 * std::numbers::pi);
        }
        unwrapped.push_back(phase);
    }
    return unwrapped;
}

bool sameBits(const std::vector<float> &a, const std::vector<float> &b)
{
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(float)) == 0;
}

} // namespace

TEST(RotaryCabinet, MovesTheSourceByTheHornsRadius)
{
    // At 6 kHz the phase follows the path: 2π f · 2 r depth / c from rear to front.
    constexpr double frequency = 6000;
    CabinetSettings settings = clean();
    settings.speed = 2;
    settings.spread = 0;
    settings.balance = 1;
    settings.depth = 0.5F;
    const Stereo output = render(settings, both(signals::sine(frequency, 96000)));
    std::vector<double> phase = phases(output.left, frequency, 8);
    phase.erase(phase.begin(), phase.begin() + 200);
    const auto [least, most] = std::minmax_element(phase.begin(), phase.end());
    const double path = 2 * RotaryCabinet::hornRadius * settings.depth;
    const double expected = 2 * std::numbers::pi * frequency * path / RotaryCabinet::speedOfSound;
    EXPECT_NEAR((*most - *least) / expected, 1, 0.05);
}

TEST(RotaryCabinet, BendsThePitchByTheSpeedOfTheHorn)
{
    // The opening runs at v = 2π r·depth·rate against air: f' / f = 1 ± v / c.
    constexpr double frequency = 6000;
    CabinetSettings settings = clean();
    settings.spread = 0;
    settings.balance = 1;
    settings.depth = 0.5F;
    for (const float speed : {1.0F, 2.0F}) {
        settings.speed = speed;
        const Stereo output = render(settings, both(signals::sine(frequency, 240000)));
        // Mean frequency over 1/16 of a turn on either side of the steepest point, for
        // which a sine's slope is sin(π/8) / (π/8) of its greatest.
        const double rate = Rotor::speedAt(effect::hornDesign, speed);
        const std::vector<double> phase = phases(output.left, frequency, 8);
        const auto span = static_cast<std::size_t>(signals::sampleRate / rate / 8 / 8);
        double steepest = 0;
        for (std::size_t n = 200; n + span < phase.size(); ++n) {
            steepest = std::max(steepest, phase[n + span] - phase[n]);
        }
        const double shift = steepest / (2 * std::numbers::pi * frequency) /
                             (static_cast<double>(span) * 8 / signals::sampleRate);
        const double expected = 2 * std::numbers::pi * RotaryCabinet::hornRadius * settings.depth *
                                rate / RotaryCabinet::speedOfSound *
                                std::sin(std::numbers::pi / 8) / (std::numbers::pi / 8);
        EXPECT_NEAR(shift / expected, 1, 0.15) << "speed " << speed;
    }
}

TEST(RotaryCabinet, SwingsTrebleMoreThanBass)
{
    CabinetSettings settings = clean();
    settings.speed = 2;
    settings.depth = 1;
    const auto swing = [&settings](double frequency) {
        const Stereo output = render(settings, both(signals::sine(frequency, 96000)));
        double most = 0;
        double least = 1e9;
        for (std::size_t from = 4800; from + 480 <= output.left.size(); from += 480) {
            const std::vector<float> part(output.left.begin() + static_cast<std::ptrdiff_t>(from),
                                          output.left.begin() +
                                              static_cast<std::ptrdiff_t>(from + 480));
            double power = 0;
            for (const float sample : part) {
                power += static_cast<double>(sample) * sample;
            }
            most = std::max(most, std::sqrt(power));
            least = std::min(least, std::sqrt(power));
        }
        return signals::decibels(most / least);
    };
    const double bass = swing(100);
    const double treble = swing(8000);
    EXPECT_GT(bass, 0.5);
    EXPECT_LT(bass, 5);
    // (1 + ¾·1.125) / (1 − ¾·0.875) is 14.6 dB; the wall fills the dip by some.
    EXPECT_GT(treble, 10);
    EXPECT_LT(treble, 14.6);
}

TEST(RotaryCabinet, HearsTheTurnDifferentlyAtTheMicrophones)
{
    CabinetSettings settings = clean();
    settings.speed = 2;
    const Stereo input = both(signals::noise(48000, 5));
    settings.spread = 120;
    const Stereo wide = render(settings, input);
    double difference = 0;
    double sum = 0;
    for (std::size_t n = 0; n < wide.left.size(); ++n) {
        difference += std::pow(wide.left[n] - wide.right[n], 2);
        sum += std::pow(wide.left[n] + wide.right[n], 2);
    }
    EXPECT_GT(difference / sum, 0.1);
}

TEST(RotaryCabinet, IsFlatAndStillWithoutDepth)
{
    CabinetSettings settings = clean();
    settings.speed = 2;
    settings.depth = 0;
    for (const double frequency : {60.0, 300.0, 800.0, 2000.0, 6000.0}) {
        const Stereo output = render(settings, both(signals::sine(frequency, 96000, 0.25)));
        const std::vector<float> steady(output.left.begin() + 48000, output.left.end());
        const double level = std::abs(signals::spectrumAt(steady, frequency)) / (0.25 * 24000);
        EXPECT_NEAR(signals::decibels(level), 0, 0.35) << frequency << " Hz";
    }
}

TEST(RotaryCabinet, PassesEveryBitWithoutMix)
{
    CabinetSettings settings;
    settings.mix = 0;
    settings.level = 12;
    settings.drive = 1;
    Stereo input{signals::noise(10000, 1), signals::noise(10000, 2)};
    input.left[10] = -0.0F;
    input.left[11] = std::numeric_limits<float>::denorm_min();
    input.right[12] = 1e30F;
    const effect::FlushDenormals flush;
    const Stereo output = render(settings, input, 100);
    EXPECT_TRUE(sameBits(output.left, input.left));
    EXPECT_TRUE(sameBits(output.right, input.right));
}

TEST(RotaryCabinet, LeavesNothingOfTheInputAtFullMix)
{
    CabinetSettings settings;
    settings.balance = -1;
    settings.mix = 1;
    // The drum alone passes next to nothing of a high tone.
    const Stereo output = render(settings, both(signals::sine(12000, 48000)));
    const std::vector<float> steady(output.left.begin() + 4800, output.left.end());
    EXPECT_LT(signals::largest(steady), 0.001F);
}

TEST(RotaryCabinet, GivesTheSameSamplesForAllBlockSizes)
{
    // Settings move at frames that all the sizes meet or not: only the frame counts.
    const Stereo input{signals::noise(17408, 1), signals::noise(17408, 2)};
    const auto run = [&input](std::size_t block, Turns &turns) {
        CabinetSettings settings;
        settings.speed = 2;
        RotaryCabinet cabinet(signals::sampleRate);
        cabinet.setSettings(settings);
        cabinet.reset();
        return render(cabinet, input, block, turns, [&](std::size_t from) {
            if (from == 8704) {
                settings = {1, 0.3F, -0.4F, 0.8F, 60, 2, 3, 0.5F};
                cabinet.setSettings(settings);
            }
        });
    };
    Turns reference;
    const Stereo expected = run(8704, reference);
    EXPECT_FALSE(reference.frames.empty());
    for (const std::size_t block : {1U, 17U, 64U, 512U}) {
        Turns turns;
        const Stereo output = run(block, turns);
        EXPECT_TRUE(sameBits(output.left, expected.left)) << block;
        EXPECT_TRUE(sameBits(output.right, expected.right)) << block;
        EXPECT_EQ(turns.frames, reference.frames) << block;
    }
}

TEST(RotaryCabinet, GivesTheSameSamplesInPlace)
{
    const Stereo input{signals::noise(4000, 1), signals::noise(4000, 2)};
    CabinetSettings settings;
    settings.mix = 0.6F;
    const Stereo expected = render(settings, input, 100);
    RotaryCabinet cabinet(signals::sampleRate);
    cabinet.setSettings(settings);
    cabinet.reset();
    Turns turns;
    Stereo samples = input;
    // The channels change places too, the worst a host may do with its buffers.
    for (std::size_t from = 0; from < samples.left.size(); from += 100) {
        cabinet.process(samples.left.data() + from, samples.right.data() + from,
                        samples.right.data() + from, samples.left.data() + from, 100, turns);
    }
    EXPECT_TRUE(sameBits(samples.right, expected.left));
    EXPECT_TRUE(sameBits(samples.left, expected.right));
}

TEST(RotaryCabinet, CountsTurnsAsTheyAre)
{
    CabinetSettings settings;
    settings.speed = 2;
    RotaryCabinet cabinet(signals::sampleRate);
    cabinet.setSettings(settings);
    cabinet.reset();
    Turns turns;
    render(cabinet, both(std::vector<float>(482400, 0)), 333, turns);
    EXPECT_EQ(turns.frames.size(),
              static_cast<std::size_t>(10.05 * Rotor::speedAt(effect::hornDesign, 2)));
    EXPECT_TRUE(std::is_sorted(turns.frames.begin(), turns.frames.end()));
}

TEST(RotaryCabinet, IsSilentAndStillWhenStoppedWithoutInput)
{
    CabinetSettings settings;
    settings.speed = 0;
    RotaryCabinet cabinet(signals::sampleRate);
    cabinet.setSettings(settings);
    cabinet.reset();
    Turns turns;
    const Stereo output = render(cabinet, both(std::vector<float>(48000, 0)), 64, turns);
    EXPECT_TRUE(turns.frames.empty());
    EXPECT_EQ(signals::largest(output.left), 0);
}

class CabinetUnderChange : public testing::TestWithParam<std::pair<const char *, CabinetSettings>>
{
};

TEST_P(CabinetUnderChange, NeverClicks)
{
    // A low tone bends little by itself, so that any step would tower over it. Half
    // a second before the change and half a second after are taken for reference.
    const CabinetSettings from;
    const CabinetSettings to = GetParam().second;
    RotaryCabinet cabinet(signals::sampleRate);
    cabinet.setSettings(from);
    cabinet.reset();
    Turns turns;
    const Stereo output =
        render(cabinet, both(signals::sine(220, 144000)), 64, turns, [&](std::size_t frame) {
            if (frame >= 48000) {
                cabinet.setSettings(to);
            }
        });
    const auto part = [&output](std::ptrdiff_t begin, std::ptrdiff_t end) {
        return std::vector<float>(output.left.begin() + begin, output.left.begin() + end);
    };
    const float before = signals::largestBend(part(24000, 47900));
    const float during = signals::largestBend(part(47900, 72000));
    const float after = signals::largestBend(part(120000, 144000));
    EXPECT_GT(during, 0);
    // A bare step of one hundredth of full scale would bend by 0.01.
    EXPECT_LT(during, 1.5F * std::max(before, after) + 2e-4F);
}

INSTANTIATE_TEST_SUITE_P(Each, CabinetUnderChange,
                         testing::Values(std::pair{"Speed", CabinetSettings{.speed = 2}},
                                         std::pair{"Brake", CabinetSettings{.speed = 0}},
                                         std::pair{"Depth", CabinetSettings{.depth = 0}},
                                         std::pair{"Drum", CabinetSettings{.balance = -1}},
                                         std::pair{"Horn", CabinetSettings{.balance = 1}},
                                         std::pair{"Drive", CabinetSettings{.drive = 1}},
                                         std::pair{"Clean", CabinetSettings{.drive = 0}},
                                         std::pair{"Spread", CabinetSettings{.spread = 0}},
                                         std::pair{"Inertia", CabinetSettings{.inertia = 0.25F}},
                                         std::pair{"Level", CabinetSettings{.level = -24}},
                                         std::pair{"Mix", CabinetSettings{.mix = 0}},
                                         std::pair{"All", CabinetSettings{2, 1, 0.5F, 0.9F, 180, 3,
                                                                          -12, 0.5F}}),
                         [](const auto &instance) { return instance.param.first; });

TEST(RotaryCabinet, RecoversFromInputThatIsNotFinite)
{
    for (const float poison :
         {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(),
          -std::numeric_limits<float>::infinity(), std::numeric_limits<float>::max()}) {
        CabinetSettings settings;
        settings.speed = 2;
        Stereo input = both(signals::noise(48000, 7));
        const Stereo expected = render(settings, input);
        std::fill_n(input.left.begin() + 1000, 500, poison);
        const Stereo output = render(settings, input);
        EXPECT_TRUE(signals::allFinite(output.left));
        EXPECT_TRUE(signals::allFinite(output.right));
        float apart = 0;
        for (std::size_t n = 24000; n < 48000; ++n) {
            apart = std::max(apart, std::abs(output.left[n] - expected.left[n]));
        }
        EXPECT_LT(apart, 1e-6F) << poison;
    }
}

TEST(RotaryCabinet, FadesToNothingAndNotToDenormals)
{
    RotaryCabinet cabinet(signals::sampleRate);
    Turns turns;
    Stereo input = both(signals::noise(96000, 7));
    std::fill(input.left.begin() + 4800, input.left.end(), 0.0F);
    std::fill(input.right.begin() + 4800, input.right.end(), 0.0F);
    const effect::FlushDenormals flush;
    const Stereo output = render(cabinet, input, 64, turns);
    EXPECT_GT(signals::largest(output.left), 0.01F);
    EXPECT_TRUE(std::none_of(output.left.begin(), output.left.end(),
                             [](float sample) { return std::fpclassify(sample) == FP_SUBNORMAL; }));
    const std::vector<float> end(output.left.begin() + 72000, output.left.end());
    EXPECT_LT(signals::largest(end), 1e-30F);
}

TEST(RotaryCabinet, WorksAtEveryRate)
{
    for (const double rate : {8000.0, 11025.0, 44100.0, 96000.0, 192000.0}) {
        RotaryCabinet cabinet(rate);
        // At full depth and with both microphones in one place, paths are shortest and longest.
        CabinetSettings settings;
        settings.speed = 2;
        settings.depth = 1;
        settings.spread = 0;
        cabinet.setSettings(settings);
        cabinet.reset();
        Turns turns;
        const auto frames = static_cast<std::size_t>(rate);
        const Stereo output = render(cabinet, both(signals::noise(frames, 3)), 8192, turns);
        EXPECT_TRUE(signals::allFinite(output.left));
        EXPECT_GT(signals::largest(output.left), 0.1F);
        EXPECT_LT(signals::largest(output.left), 4);
        EXPECT_EQ(turns.frames.size(), 6U) << rate;
    }
}

TEST(RotaryCabinet, StartsAnewOnReset)
{
    RotaryCabinet cabinet(signals::sampleRate);
    Turns turns;
    const Stereo input = both(signals::noise(5000, 9));
    const Stereo first = render(cabinet, input, 50, turns);
    cabinet.reset();
    const Stereo second = render(cabinet, input, 50, turns);
    EXPECT_TRUE(sameBits(first.left, second.left));
    EXPECT_TRUE(sameBits(first.right, second.right));
}
