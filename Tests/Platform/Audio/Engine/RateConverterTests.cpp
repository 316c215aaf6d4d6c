#include "Platform/Audio/ConvertBuffer.hpp"
#include "Platform/Audio/RateConverter.hpp"
#include "Platform/Foundation/PlatformError.hpp"
#include "Tests/Utilities/Channels.hpp"
#include "Tests/Utilities/OfflineRenderer.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace
{

using platform::audio::RateConverter;
using test::Channels;

// Converts in parts of the given sizes, the end last.
Channels converted(const Channels &in, double from, double to, std::uint32_t inputPart,
                   std::uint32_t outputPart)
{
    const auto channels = static_cast<std::uint32_t>(in.size());
    const auto total = static_cast<std::uint32_t>(in.front().size());
    RateConverter converter(from, to, channels);
    std::vector<const float *> inputs;
    for (const auto &channel : in)
        inputs.push_back(channel.data());
    Channels out(channels);
    Channels part(channels, std::vector<float>(outputPart));
    std::vector<float *> outputs;
    for (auto &channel : part)
        outputs.push_back(channel.data());
    std::uint32_t taken = 0;
    for (;;) {
        const std::uint32_t give = std::min(inputPart, total - taken);
        const RateConverter::Progress progress = converter.process(
            inputs.data(), taken, give, outputs.data(), 0, outputPart, taken + give == total);
        taken += progress.taken;
        for (std::uint32_t channel = 0; channel < channels; ++channel)
            out[channel].insert(out[channel].end(), part[channel].begin(),
                                part[channel].begin() + progress.made);
        if (progress.taken == 0 && progress.made == 0)
            return out;
    }
}

TEST(RateConverter, ASineStaysTheSameSineAtTheNewRate)
{
    const Channels in = test::sine(2, 44100, 1000.0, 44100.0);
    const Channels out = converted(in, 44100, 48000, 4096, 4096);
    const Channels expected = test::sine(2, 48000, 1000.0, 48000.0);
    ASSERT_NEAR(static_cast<double>(out[0].size()), 48000.0, 2.0);
    double worst = 0;
    for (std::size_t frame = 1000; frame < 47000; ++frame)
        worst = std::max(worst, std::abs(static_cast<double>(out[0][frame] - expected[0][frame])));
    // The library states 121 dB for this quality.
    EXPECT_LT(worst, 0.5 * std::pow(10.0, -100.0 / 20.0));
    EXPECT_EQ(out[0], out[1]);
}

TEST(RateConverter, TheSizesOfThePartsDoNotMatter)
{
    const Channels in = test::noise(2, 5000);
    const Channels whole = converted(in, 44100, 48000, 5000, 6000);
    EXPECT_EQ(test::firstDifference(converted(in, 44100, 48000, 37, 6000), whole), -1);
    EXPECT_EQ(test::firstDifference(converted(in, 44100, 48000, 1, 1), whole), -1);
    EXPECT_EQ(test::firstDifference(converted(in, 44100, 48000, 5000, 11), whole), -1);
}

TEST(RateConverter, ResetForgetsWhatWasTaken)
{
    const Channels in = test::noise(1, 2000);
    const float *const input = in[0].data();
    std::vector<float> first(1000);
    std::vector<float> second(1000);
    float *firstOut = first.data();
    float *secondOut = second.data();
    RateConverter converter(48000, 24000, 1);
    const auto once = converter.process(&input, 0, 2000, &firstOut, 0, 1000, false);
    converter.reset();
    const auto again = converter.process(&input, 0, 2000, &secondOut, 0, 1000, false);
    EXPECT_EQ(once.made, again.made);
    EXPECT_EQ(first, second);
}

TEST(RateConverter, RefusesARatioOutOfRange)
{
    EXPECT_THROW(RateConverter(1.0, 48000.0, 2), PlatformError);
    EXPECT_THROW(RateConverter(768000.0, 2000.0, 2), PlatformError);
}

TEST(ConvertBuffer, ChangesChannelsAndRateOfAWhole)
{
    AVAudioPCMBuffer mono(AVAudioFormat(24000, 1), 2400);
    mono.setFrameLength(2400);
    const Channels wave = test::sine(1, 2400, 500.0, 24000.0);
    std::copy(wave[0].begin(), wave[0].end(), mono.floatChannelData()[0]);
    const auto stereo = platform::audio::convertBuffer(mono, AVAudioFormat(48000, 2));
    EXPECT_EQ(stereo->format(), AVAudioFormat(48000, 2));
    ASSERT_NEAR(stereo->frameLength(), 4800.0, 2.0);
    const Channels expected = test::sine(1, 4800, 500.0, 48000.0);
    for (std::size_t frame = 500; frame < 4300; ++frame) {
        ASSERT_NEAR(stereo->floatChannelData()[0][frame], expected[0][frame], 1e-4);
        ASSERT_EQ(stereo->floatChannelData()[0][frame], stereo->floatChannelData()[1][frame]);
    }
}

TEST(ConvertBuffer, CopiesWhatHasTheFormatAlready)
{
    AVAudioPCMBuffer buffer(AVAudioFormat(48000, 1), 10);
    buffer.setFrameLength(7);
    buffer.floatChannelData()[0][6] = 0.75F;
    const auto copy = platform::audio::convertBuffer(buffer, buffer.format());
    EXPECT_EQ(copy->frameLength(), 7U);
    EXPECT_EQ(copy->floatChannelData()[0][6], 0.75F);
}

} // namespace
