#include "Platform/LV2/HostedPlugin.hpp"

#include "HeldPlugin.hpp"
#include "Platform/Foundation/PlatformError.hpp"

#include <gtest/gtest.h>

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

TEST(HostedPlugin, TakesADefaultBeyondARangeInSampleRatesForAFrequency)
{
    const auto controls = singleRate().instance().controls();
    EXPECT_EQ(controls.at("hertz"), 440.0F);
    EXPECT_EQ(controls.at("share"), 12000.0F);
}
