#include "Platform/Audio/OutputGuard.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace
{

using platform::audio::OutputGuard;

using Block = std::array<float, 3>;
using Interleaved = std::array<float, 6>;

Interleaved passed(OutputGuard &guard, const Block &left, const Block &right)
{
    const std::array<const float *, 2> channels{left.data(), right.data()};
    Interleaved out;
    out.fill(99.0F);
    guard.pass(channels.data(), 2, 3, out.data());
    return out;
}

TEST(OutputGuard, InterleavesWhatIsInRangeBitForBit)
{
    OutputGuard guard;
    EXPECT_EQ(passed(guard, {0.25F, -1.0F, 1.0F}, {0.5F, -0.0F, 1e-30F}),
              (Interleaved{0.25F, 0.5F, -1.0F, -0.0F, 1.0F, 1e-30F}));
    EXPECT_FALSE(guard.sawNonFinite());
    EXPECT_FALSE(guard.sawTooLoud());
}

TEST(OutputGuard, FlushesDenormalSamples)
{
    constexpr float smallest = std::numeric_limits<float>::min();
    constexpr float denormal = smallest / 2.0F;
    OutputGuard guard;
    EXPECT_EQ(passed(guard, {denormal, smallest, 0}, {0, -denormal, -smallest}),
              (Interleaved{0, 0, smallest, -0.0F, 0, -smallest}));
    std::vector<float> out(2, 99.0F);
    const std::array<float, 2> channel{denormal, smallest};
    const std::array<const float *, 1> channels{channel.data()};
    guard.pass(channels.data(), 1, 2, out.data());
    EXPECT_EQ(out, (std::vector<float>{0.0F, smallest}));
}

TEST(OutputGuard, LimitsLouderSamples)
{
    OutputGuard guard;
    EXPECT_EQ(passed(guard, {0.25F, 1.5F, -1e30F}, {0, 0, 0}),
              (Interleaved{0.25F, 0, 1.0F, 0, -1.0F, 0}));
    EXPECT_TRUE(guard.sawTooLoud());
    EXPECT_FALSE(guard.sawNonFinite());
}

TEST(OutputGuard, SilencesABlockThatIsNotFinite)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float infinity = std::numeric_limits<float>::infinity();
    for (const float bad : {nan, -nan, infinity, -infinity}) {
        OutputGuard guard;
        EXPECT_EQ(passed(guard, {0.25F, 0.5F, 0.5F}, {0, bad, 0}), Interleaved{});
        EXPECT_TRUE(guard.sawNonFinite());
    }
}

// The compiler renders many frames at a time: none of them may be missed, nor one
// of those left over.
TEST(OutputGuard, FindsABadSampleWhereverItStands)
{
    constexpr std::uint32_t frames = 37;
    for (const std::uint32_t channelCount : {1U, 2U, 3U})
        for (std::size_t bad = 0; bad < frames * channelCount; ++bad) {
            std::vector<std::vector<float>> audio(channelCount, std::vector<float>(frames, 0.5F));
            std::vector<const float *> channels;
            for (const std::vector<float> &channel : audio)
                channels.push_back(channel.data());
            std::vector<float> out(frames * channelCount, 99.0F);

            OutputGuard guard;
            audio[bad % channelCount][bad / channelCount] = -3.0F;
            guard.pass(channels.data(), channelCount, frames, out.data());
            std::vector<float> limited(out.size(), 0.5F);
            limited[bad] = -1.0F;
            EXPECT_EQ(out, limited);
            EXPECT_TRUE(guard.sawTooLoud());
            EXPECT_FALSE(guard.sawNonFinite());

            audio[bad % channelCount][bad / channelCount] = std::nanf("");
            guard.pass(channels.data(), channelCount, frames, out.data());
            EXPECT_EQ(out, std::vector<float>(out.size(), 0.0F));
            EXPECT_TRUE(guard.sawNonFinite());
        }
}

} // namespace
