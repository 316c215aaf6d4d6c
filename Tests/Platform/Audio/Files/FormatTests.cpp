#include "Platform/Audio/AVAudioFormat.hpp"
#include "Platform/Audio/AVAudioPCMBuffer.hpp"
#include "Platform/Foundation/PlatformError.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

TEST(AVAudioFormat, AcceptsWhatAudioUses)
{
    EXPECT_NO_THROW(AVAudioFormat(1.0, 1));
    EXPECT_NO_THROW(AVAudioFormat(8'000.0, 1));
    EXPECT_NO_THROW(AVAudioFormat(768'000.0, 256));
}

TEST(AVAudioFormat, RefusesTheRest)
{
    for (const double rate :
         {0.0, -48'000.0, 0.5, 768'001.0, 1e9, std::numeric_limits<double>::infinity(),
          std::numeric_limits<double>::quiet_NaN()})
        EXPECT_THROW(AVAudioFormat(rate, 2), PlatformError) << rate;
    for (const std::uint32_t channels : {0U, 257U, 10'000U})
        EXPECT_THROW(AVAudioFormat(48'000.0, channels), PlatformError) << channels;
}

TEST(AVAudioFormat, DescribesItself)
{
    EXPECT_EQ(AVAudioFormat(48'000.0, 2).description(), "48000 Hz, 2 channels");
    EXPECT_EQ(AVAudioFormat(8'000.0, 1).description(), "8000 Hz, 1 channel");
    EXPECT_EQ(AVAudioFormat(22'050.5, 6).description(), "22050.5 Hz, 6 channels");
}

TEST(AVAudioFormat, ComparesByValue)
{
    EXPECT_EQ(AVAudioFormat(48'000.0, 2), AVAudioFormat(48'000.0, 2));
    EXPECT_NE(AVAudioFormat(48'000.0, 2), AVAudioFormat(44'100.0, 2));
    EXPECT_NE(AVAudioFormat(48'000.0, 2), AVAudioFormat(48'000.0, 1));
}

TEST(AVAudioPCMBuffer, StartsSilentAndEmpty)
{
    const AVAudioPCMBuffer buffer(AVAudioFormat(48'000.0, 3), 1'001);
    EXPECT_EQ(buffer.frameCapacity(), 1'001U);
    EXPECT_EQ(buffer.frameLength(), 0U);
    for (std::uint32_t channel = 0; channel < 3; ++channel)
        for (std::uint32_t frame = 0; frame < 1'001; ++frame)
            ASSERT_EQ(buffer.floatChannelData()[channel][frame], 0.0F);
}

TEST(AVAudioPCMBuffer, AlignsEachChannelAndKeepsThemApart)
{
    for (const std::uint32_t capacity : {0U, 1U, 15U, 16U, 17U, 4'096U}) {
        AVAudioPCMBuffer buffer(AVAudioFormat(48'000.0, 256), capacity);
        for (std::uint32_t channel = 0; channel < 256; ++channel) {
            float *samples = buffer.floatChannelData()[channel];
            EXPECT_EQ(reinterpret_cast<std::uintptr_t>(samples) % 64, 0U);
            for (std::uint32_t frame = 0; frame < capacity; ++frame)
                samples[frame] = static_cast<float>(channel);
        }
        for (std::uint32_t channel = 0; channel < 256; ++channel)
            for (std::uint32_t frame = 0; frame < capacity; ++frame)
                ASSERT_EQ(buffer.floatChannelData()[channel][frame], static_cast<float>(channel));
    }
}

TEST(AVAudioPCMBuffer, KeepsItsLengthWithinItsCapacity)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    AVAudioPCMBuffer buffer(AVAudioFormat(48'000.0, 2), 16);
    buffer.setFrameLength(16);
    EXPECT_EQ(buffer.frameLength(), 16U);
    EXPECT_DEATH(buffer.setFrameLength(17), "exceeds its capacity");
}
