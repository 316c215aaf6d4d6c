#include "Platform/LV2/HostedPlugin.hpp"

#include "HeldPlugin.hpp"
#include "Platform/Foundation/PlatformError.hpp"

#include <gmock/gmock.h>

using namespace testsupport;
using platform::lv2::HostedPlugin;

namespace
{

HostedPlugin singleRate()
{
    return {"urn:test:single-rate", ownBundle("single-rate"), {48000.0, 512, false, std::nullopt}};
}

} // namespace

TEST(HostedPlugin, ChangesTheRateOfOneThatRefusesTwoAtATime)
{
    HostedPlugin hosted = singleRate();
    hosted.instance().setControl("gain", 3.0F);
    hosted.prepare(44100.0, 512);
    EXPECT_EQ(hosted.instance().settings().sampleRate, 44100.0);
    EXPECT_EQ(hosted.instance().controls().at("gain"), 3.0F);
}

TEST(HostedPlugin, IsAsItWasAfterARateThatIsRefused)
{
    HostedPlugin hosted = singleRate();
    hosted.instance().setControl("gain", 3.0F);
    EXPECT_THROW(hosted.prepare(192000.0, 512), PlatformError);
    EXPECT_EQ(hosted.instance().settings().sampleRate, 48000.0);
    EXPECT_EQ(hosted.instance().controls().at("gain"), 3.0F);
}

TEST(HostedPlugin, SaysSoAsLongAsItIsLeftWithoutAnInstance)
{
    HostedPlugin hosted{
        "urn:test:sulking", ownBundle("sulking"), {48000.0, 512, false, std::nullopt}};
    hosted.instance().setControl("gain", 3.0F);
    const auto isTold = testing::ThrowsMessage<PlatformError>(testing::HasSubstr("Test Sulking"));
    EXPECT_THAT([&] { hosted.prepare(192000.0, 512); }, isTold);
    EXPECT_THAT([&] { hosted.instance(); }, isTold);
    EXPECT_THAT([&] { hosted.loadPreset(0); }, isTold);
    EXPECT_FALSE(hosted.isPrepared(48000.0, 512));
    EXPECT_EQ(hosted.inputChannelCount(), 2U);
    hosted.setContextName("Song");
    hosted.setOffline(true);

    // What is asked for anew is tried anew, and as it was and was to be.
    hosted.prepare(48000.0, 512);
    EXPECT_EQ(hosted.instance().controls().at("gain"), 3.0F);
    EXPECT_EQ(hosted.instance().settings().contextName, "Song");
    EXPECT_TRUE(hosted.instance().settings().isOffline);
}

TEST(HostedPlugin, TakesADefaultBeyondARangeInSampleRatesForAFrequency)
{
    const auto controls = singleRate().instance().controls();
    EXPECT_EQ(controls.at("hertz"), 440.0F);
    EXPECT_EQ(controls.at("share"), 12000.0F);
}
