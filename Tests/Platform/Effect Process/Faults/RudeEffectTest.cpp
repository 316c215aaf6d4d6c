// What a host plays through an effect without manners: in this process and in a
// process of its own.

#include "ErrorLines.hpp"
#include "PlayingHost.hpp"
#include "ProcessCensus.hpp"

#include "Platform/Audio/LocalAudioUnit.hpp"
#include "Platform/Audio/RemoteAudioUnit.hpp"
#include "Platform/Foundation/PlatformError.hpp"
#include "Platform/LV2/Instance.hpp"
#include "Tests/Utilities/EnvironmentVariable.hpp"
#include "Tests/Utilities/Places.hpp"

#include <gmock/gmock.h>

#include <cmath>
#include <csignal>
#include <string>
#include <tuple>

namespace
{

enum class Place { thisProcess, ownProcess };

class RudeEffect : public testing::Test
{
protected:
    static std::shared_ptr<AUAudioUnit> unit(Place place, const std::string &uri)
    {
        const AVAudioUnitComponent component({}, uri);
        if (place == Place::thisProcess)
            return std::make_shared<LocalAudioUnit>(component);
        // Waited for until it is ready: what it does then is the same each time.
        RemoteAudioUnit::Limits limits;
        limits.preparation = limits.instantiation;
        return std::make_shared<RemoteAudioUnit>(component, limits);
    }

    const test::EnvironmentVariable path{"LV2_PATH", test::buildPath(TEST_LV2_BUNDLES)};
};

std::string nameOf(Place place)
{
    return place == Place::thisProcess ? "InThisProcess" : "InItsOwnProcess";
}

// --- Samples that no device plays ---------------------------------------------------

class RudeSamples : public RudeEffect,
                    public testing::WithParamInterface<std::tuple<Place, const char *>>
{
protected:
    static Place place() { return std::get<0>(GetParam()); }
    static std::string rudeness() { return std::get<1>(GetParam()); }
    static std::string uri() { return "urn:test:rude:" + rudeness(); }
    static bool isNumber() { return rudeness().find("denormal") != std::string::npos; }
};

TEST_P(RudeSamples, ReachNoDevice)
{
    const ErrorLines errors;
    std::atomic<int> bad{0};
    std::atomic<int> blocks{0};
    PlayingHost host(unit(place(), uri()), test::constant(2, 4800, 0.25F),
                     [&](const float *samples, std::uint32_t frames) {
                         for (std::uint32_t i = 0; i < 2 * frames; ++i)
                             if (samples[i] != 0.0F && !std::isnormal(samples[i]))
                                 ++bad;
                         ++blocks;
                     });
    const std::string line =
        "The audio held samples that are no numbers; such blocks are silenced.";
    if (isNumber())
        ASSERT_TRUE(eventually([&] { return blocks > 500; }));
    else
        ASSERT_TRUE(errors.waitFor(line));
    EXPECT_TRUE(host.goesOn());
    host.stop();
    EXPECT_EQ(bad, 0);
    EXPECT_EQ(errors.with(line).size(), isNumber() ? 0U : 1U);
    if (!isNumber()) {
        EXPECT_EQ(host.report().sounding, 0U) << "part of a block was heard";
    }
}

INSTANTIATE_TEST_SUITE_P(Rudenesses, RudeSamples,
                         testing::Combine(testing::Values(Place::thisProcess, Place::ownProcess),
                                          testing::Values("nan", "infinity", "denormal",
                                                          "copied-denormal")),
                         [](const testing::TestParamInfo<RudeSamples::ParamType> &parameters) {
                             std::string name = std::get<1>(parameters.param);
                             std::replace(name.begin(), name.end(), '-', '_');
                             return nameOf(std::get<0>(parameters.param)) + "_" + name;
                         });

// --- Blocks that do not end where they should ------------------------------------------

class OverrunningEffect : public RudeEffect, public testing::WithParamInterface<Place>
{
};

TEST_P(OverrunningEffect, HarmsNothingAndIsToldOfWhereBoundsAreChecked)
{
    if (!platform::lv2::boundsAreChecked)
        GTEST_SKIP() << "bounds are not checked in this build";
    const ErrorLines errors;
    const auto overrunning = unit(GetParam(), "urn:test:rude:overrun");
    PlayingHost host(overrunning, test::constant(2, 4800, 0.25F));
    const std::string line = "Test Overrun: writes beyond its block";
    ASSERT_TRUE(errors.waitFor(line));
    EXPECT_TRUE(host.goesOn());
    host.stop();
    host.detachUnit();
    EXPECT_EQ(errors.with(line).size(), 1U);
}

INSTANTIATE_TEST_SUITE_P(Places, OverrunningEffect,
                         testing::Values(Place::thisProcess, Place::ownProcess),
                         [](const testing::TestParamInfo<Place> &place) {
                             return nameOf(place.param);
                         });

// --- Runs that take too long ----------------------------------------------------------

class SlowEffect : public RudeEffect, public testing::WithParamInterface<Place>
{
};

TEST_P(SlowEffect, IsToldOfAndHoldsNobodyUp)
{
    const ErrorLines errors;
    const auto slow = unit(GetParam(), "urn:test:rude:slow");
    PlayingHost host(slow, test::constant(2, 4800, 0.25F));
    const std::string line =
        GetParam() == Place::thisProcess
            ? "The audio takes longer to render than to play; there are gaps in it."
            : "Blocks of the effect 'Test Slow' come too late, ";
    ASSERT_TRUE(errors.waitFor(line));
    EXPECT_TRUE(host.goesOn());
    if (auto *remote = dynamic_cast<RemoteAudioUnit *>(slow.get())) {
        EXPECT_GT(remote->process().lateBlocks(), 10U);
        EXPECT_TRUE(remote->process().isUp()) << "slow is not hung";
    }
    // Control operations and the end come between two blocks.
    slow->setContextName("Song");
    host.useRate(44100.0);
    EXPECT_TRUE(host.goesOn());
    host.stop();
    host.detachUnit();
    EXPECT_EQ(errors.with(line).size(), 1U);
}

INSTANTIATE_TEST_SUITE_P(Places, SlowEffect, testing::Values(Place::thisProcess, Place::ownProcess),
                         [](const testing::TestParamInfo<Place> &place) {
                             return nameOf(place.param);
                         });

// --- No instance any more ---------------------------------------------------------------

class SulkingEffect : public RudeEffect, public testing::WithParamInterface<Place>
{
};

TEST_P(SulkingEffect, IsSilentUntilItIsWantedInAnotherWay)
{
    const ErrorLines errors;
    const auto sulking = unit(GetParam(), "urn:test:sulking");
    PlayingHost host(sulking, test::constant(2, 4800, 0.25F));
    ASSERT_TRUE(host.sounds());
    host.useRate(192000.0);
    ASSERT_TRUE(errors.waitFor("The effect 'Test Sulking' cannot render: "));
    EXPECT_TRUE(host.goesOn());
    sulking->setContextName("Song");
    EXPECT_EQ(sulking->contextName(), "Song");
    EXPECT_EQ(sulking->latency(), 0.0);
    EXPECT_THROW(sulking->setCurrentPreset(sulking->factoryPresets()->at(0)), PlatformError);
    EXPECT_TRUE(host.goesOn());

    host.useRate(48000.0);
    EXPECT_TRUE(host.sounds());
    sulking->setCurrentPreset(sulking->factoryPresets()->at(0));
    EXPECT_TRUE(eventually([&] { return host.report().sample == 0.125F; }));
    // Once for each of the two connections.
    EXPECT_EQ(errors.with("The effect '").size(), 2U);
}

INSTANTIATE_TEST_SUITE_P(Places, SulkingEffect,
                         testing::Values(Place::thisProcess, Place::ownProcess),
                         [](const testing::TestParamInfo<Place> &place) {
                             return nameOf(place.param);
                         });

class LateRefusal : public RudeEffect
{
};

TEST_F(LateRefusal, IsToldOfAsWell)
{
    const ErrorLines errors;
    const auto sulking =
        std::make_shared<RemoteAudioUnit>(AVAudioUnitComponent({}, "urn:test:sulking"));
    PlayingHost host(sulking, test::constant(2, 4800, 0.25F));
    ASSERT_TRUE(host.sounds());
    sendSignal(sulking->process().processIdentifier(), SIGSTOP);
    host.useRate(192000.0);
    sendSignal(sulking->process().processIdentifier(), SIGCONT);
    EXPECT_TRUE(errors.waitFor("The effect 'Test Sulking' cannot render: "));
    EXPECT_TRUE(host.goesOn());
    host.useRate(48000.0);
    EXPECT_TRUE(host.sounds());
    EXPECT_EQ(errors.with("The effect '").size(), 1U);
}

} // namespace
