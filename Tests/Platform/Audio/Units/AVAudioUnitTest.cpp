#include "LV2PathFixture.hpp"

#include "Platform/Audio/AVAudioUnit.hpp"
#include "Platform/Audio/DerivedDescription.hpp"
#include "Platform/Foundation/PlatformError.hpp"

#include <gmock/gmock.h>

#include <future>
#include <thread>

using platform::audio::derivedDescription;
using platform::audio::fourCharacterCode;
using testing::HasSubstr;

namespace
{

struct Outcome {
    std::shared_ptr<AVAudioUnit> unit;
    std::string error;
    std::thread::id thread;
    int calls = 0;
};

class AVAudioUnitTest : public LV2PathFixture
{
protected:
    static Outcome instantiate(const AudioComponentDescription &description,
                               AudioComponentInstantiationOptions options = 0)
    {
        auto outcome = std::make_shared<Outcome>();
        std::promise<void> done;
        AVAudioUnit::instantiate(description, options,
                                 [outcome, &done](const std::shared_ptr<AVAudioUnit> &unit,
                                                  const std::exception_ptr &error) {
                                     outcome->unit = unit;
                                     outcome->thread = std::this_thread::get_id();
                                     ++outcome->calls;
                                     try {
                                         if (error)
                                             std::rethrow_exception(error);
                                     } catch (const PlatformError &fault) {
                                         outcome->error = fault.what();
                                     }
                                     done.set_value();
                                 });
        done.get_future().wait();
        return *outcome;
    }
};

} // namespace

TEST_F(AVAudioUnitTest, DeliversTheUnitOffTheCallingThread)
{
    link("amplifier");
    const AudioComponentDescription wanted{fourCharacterCode("aufx"), fourCharacterCode("ampl"),
                                           fourCharacterCode("TEST"), 0, 0};
    const Outcome outcome = instantiate(wanted);
    ASSERT_TRUE(outcome.unit);
    EXPECT_EQ(outcome.error, "");
    EXPECT_EQ(outcome.calls, 1);
    EXPECT_NE(outcome.thread, std::this_thread::get_id());
    EXPECT_EQ(outcome.unit->name(), "Test Amplifier");
    EXPECT_EQ(outcome.unit->numberOfInputs(), 1U);
    EXPECT_EQ(outcome.unit->numberOfOutputs(), 1U);
    EXPECT_EQ(outcome.unit->auAudioUnit()->componentDescription().componentFlags, 6U);
}

TEST_F(AVAudioUnitTest, DeliversErrorsTheSameWay)
{
    for (const char *bundle : {"refusing", "missing-binary", "unknown-feature"})
        link(bundle);
    const Outcome missing = instantiate(derivedDescription("urn:test:nowhere"));
    EXPECT_FALSE(missing.unit);
    EXPECT_EQ(missing.calls, 1);
    EXPECT_NE(missing.thread, std::this_thread::get_id());
    EXPECT_THAT(missing.error, HasSubstr("No audio unit is registered"));

    const auto errorOf = [](const char *uri) {
        const Outcome outcome = instantiate(derivedDescription(uri));
        EXPECT_FALSE(outcome.unit);
        return outcome.error;
    };
    EXPECT_THAT(errorOf("urn:test:refusing"), HasSubstr("refuses"));
    EXPECT_THAT(errorOf("urn:test:missing-binary"), HasSubstr("cannot be loaded"));
    EXPECT_THAT(errorOf("urn:test:unknown-feature"), HasSubstr("no-such-feature"));
}

TEST_F(AVAudioUnitTest, SurvivesABinaryThatEndsItsProcess)
{
    link("exploding");
    const Outcome outcome = instantiate(derivedDescription("urn:test:exploding"));
    EXPECT_FALSE(outcome.unit);
    EXPECT_EQ(outcome.calls, 1);
    EXPECT_THAT(outcome.error, HasSubstr("ended unexpectedly (SIGKILL); it was never ready."));
}

TEST_F(AVAudioUnitTest, KnowsNoOptions)
{
    link("amplifier");
    EXPECT_THAT(instantiate(derivedDescription("urn:test:mono"), 1).error, HasSubstr("options"));
}

TEST_F(AVAudioUnitTest, TakesTheFirstOfSeveralMatches)
{
    link("midi");
    link("amplifier");
    const Outcome outcome = instantiate({});
    ASSERT_TRUE(outcome.unit);
    EXPECT_EQ(outcome.unit->name(), "Test Amplifier");
}

TEST(AudioComponentDescription, IsPrintedInDecimal)
{
    const AudioComponentDescription description{1635085670, 2054582642, 1364350552, 2, 0};
    EXPECT_EQ(description.description(),
              "AudioComponentDescription(componentType: 1635085670, componentSubType: 2054582642, "
              "componentManufacturer: 1364350552, componentFlags: 2, componentFlagsMask: 0)");
}
