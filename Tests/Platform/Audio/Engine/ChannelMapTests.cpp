#include "Platform/Audio/ChannelMap.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <vector>

namespace
{

using platform::audio::ChannelMap;

constexpr float half = 0.70710678F;

// One frame in which channel n holds the power of ten 10^n.
std::vector<float> mapped(std::uint32_t sources, std::uint32_t destinations)
{
    std::vector<float> in(sources);
    std::vector<const float *> inputs(sources);
    for (std::uint32_t channel = 0; channel < sources; ++channel) {
        in[channel] = std::pow(10.0F, static_cast<float>(channel));
        inputs[channel] = &in[channel];
    }
    std::vector<float> out(destinations, -1.0F);
    std::vector<float *> outputs(destinations);
    for (std::uint32_t channel = 0; channel < destinations; ++channel)
        outputs[channel] = &out[channel];
    ChannelMap(sources, destinations).apply(inputs.data(), outputs.data(), 1);
    return out;
}

TEST(ChannelMap, EqualCountsGoStraightThrough)
{
    EXPECT_TRUE(ChannelMap(2, 2).isIdentity());
    EXPECT_EQ(mapped(3, 3), (std::vector<float>{1, 10, 100}));
    EXPECT_FALSE(ChannelMap(1, 2).isIdentity());
}

TEST(ChannelMap, MonoGoesToBothSides)
{
    EXPECT_EQ(mapped(1, 2), (std::vector<float>{1, 1}));
    EXPECT_EQ(mapped(1, 4), (std::vector<float>{1, 1, 0, 0}));
}

TEST(ChannelMap, StereoIsAveragedToMono)
{
    EXPECT_EQ(mapped(2, 1), (std::vector<float>{5.5F}));
}

TEST(ChannelMap, FiveOneMixesDownByTheUsualCoefficients)
{
    const std::vector<float> stereo = mapped(6, 2);
    EXPECT_FLOAT_EQ(stereo[0], 1 + half * 100 + half * 10000);
    EXPECT_FLOAT_EQ(stereo[1], 10 + half * 100 + half * 100000);
    EXPECT_FLOAT_EQ(mapped(6, 1)[0], 0.5F * (stereo[0] + stereo[1]));
}

TEST(ChannelMap, SevenOneMixesBothPairsOfSurroundsDown)
{
    const std::vector<float> stereo = mapped(8, 2);
    EXPECT_FLOAT_EQ(stereo[0], 1 + half * 100 + half * 10000 + half * 1000000);
}

TEST(ChannelMap, ChannelsWithoutAPlaceAreLeftOutOrSilent)
{
    EXPECT_EQ(mapped(2, 4), (std::vector<float>{1, 10, 0, 0}));
    EXPECT_EQ(mapped(5, 3), (std::vector<float>{1, 10, 100}));
    EXPECT_EQ(mapped(12, 2), (std::vector<float>{1, 10}));
}

} // namespace
