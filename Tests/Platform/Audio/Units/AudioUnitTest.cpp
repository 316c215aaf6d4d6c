#include "AudioUnitFixture.hpp"

#include "Platform/Foundation/DispatchQueue.hpp"
#include "Platform/Foundation/PlatformError.hpp"
#include "Platform/Foundation/RunLoop.hpp"

#include <gmock/gmock.h>

#include <array>
#include <atomic>
#include <future>
#include <thread>
#include <vector>

using testing::ElementsAre;
using testing::IsEmpty;

namespace
{

using AudioUnitTest = AudioUnitFixture;

struct Event {
    std::int64_t sampleTime;
    std::int64_t length;
    std::vector<std::uint8_t> bytes;
};

} // namespace

TEST_P(AudioUnitTest, CountsTheChannelsOfTheMainAudio)
{
    EXPECT_EQ(unit("urn:test:amplifier")->inputChannelCount(), 2U);
    EXPECT_EQ(unit("urn:test:amplifier")->outputChannelCount(), 2U);
    EXPECT_EQ(unit("urn:test:mono")->inputChannelCount(), 1U);
    EXPECT_EQ(unit("urn:test:everything")->inputChannelCount(), 1U);
    EXPECT_EQ(unit("urn:test:everything")->outputChannelCount(), 1U);
    EXPECT_EQ(unit("urn:test:midi:echo")->inputChannelCount(), 0U);
}

TEST_P(AudioUnitTest, RendersOnlyWithResources)
{
    const auto mono = unit("urn:test:mono");
    EXPECT_FALSE(mono->renderResourcesAllocated());
    EXPECT_THAT(render(*mono), IsEmpty());
    mono->allocateRenderResources(48000.0, blockFrames);
    EXPECT_TRUE(mono->renderResourcesAllocated());
    EXPECT_EQ(render(*mono), std::vector<float>(blockFrames, 2.0F));
    mono->deallocateRenderResources();
    EXPECT_THAT(render(*mono), IsEmpty());
}

TEST_P(AudioUnitTest, RefusesFormatsThatMakeNoSense)
{
    const auto mono = unit("urn:test:mono");
    EXPECT_THROW(mono->allocateRenderResources(0.0, 64), PlatformError);
    EXPECT_THROW(mono->allocateRenderResources(NAN, 64), PlatformError);
    EXPECT_THROW(mono->allocateRenderResources(48000.0, 0), PlatformError);
    EXPECT_THROW(mono->allocateRenderResources(48000.0, UINT32_MAX), PlatformError);
}

TEST_P(AudioUnitTest, NumbersPresetsAndKeepsTheCurrentOneAcrossSampleRates)
{
    const auto amplifier = unit("urn:test:amplifier");
    const auto presets = amplifier->factoryPresets();
    ASSERT_TRUE(presets);
    ASSERT_EQ(presets->size(), 2U);
    EXPECT_EQ(presets->at(0)->number, 0);
    EXPECT_EQ(presets->at(0)->name, "Half");
    EXPECT_EQ(presets->at(1)->number, 1);
    EXPECT_EQ(amplifier->currentPreset(), nullptr);

    amplifier->setCurrentPreset(presets->at(1));
    EXPECT_EQ(amplifier->currentPreset(), presets->at(1));
    amplifier->allocateRenderResources(48000.0, blockFrames);
    EXPECT_EQ(render(*amplifier).front(), 3.0F);
    amplifier->allocateRenderResources(96000.0, blockFrames);
    EXPECT_EQ(render(*amplifier).front(), 3.0F);
    EXPECT_EQ(amplifier->currentPreset(), presets->at(1));
    amplifier->setCurrentPreset(presets->at(0));
    EXPECT_EQ(render(*amplifier).front(), 0.5F);
    amplifier->setCurrentPreset(nullptr);
    EXPECT_EQ(amplifier->currentPreset(), nullptr);
    EXPECT_EQ(render(*amplifier).front(), 0.5F);

    for (const std::int64_t number : {-1, 2})
        EXPECT_THROW(
            amplifier->setCurrentPreset(std::make_shared<AUAudioUnitPreset>(number, "none")),
            PlatformError);
}

TEST_P(AudioUnitTest, HasNoPresetsWhereThePluginHasNone)
{
    EXPECT_FALSE(unit("urn:test:mono")->factoryPresets());
}

TEST_P(AudioUnitTest, KeepsStateAcrossSampleRates)
{
    const auto stateful = unit("urn:test:state");
    stateful->setCurrentPreset(stateful->factoryPresets()->at(0));
    stateful->allocateRenderResources(44100.0, blockFrames);
    const auto report = render(*stateful);
    EXPECT_EQ(report[1], 44100.0F);
    // It saves 42 whatever it restored: the number has gone through the plug-in.
    EXPECT_EQ(report[2], 42.0F);
}

TEST_P(AudioUnitTest, TellsThePluginTheNameOfItsContext)
{
    const auto curious = unit("urn:test:curious");
    EXPECT_EQ(curious->contextName(), std::nullopt);
    curious->setContextName("a host");
    EXPECT_EQ(curious->contextName(), "a host");
    curious->allocateRenderResources(48000.0, blockFrames);
    EXPECT_EQ(render(*curious)[1], 6.0F);
    curious->allocateRenderResources(32000.0, blockFrames);
    EXPECT_EQ(render(*curious)[0], 6.0F);
    EXPECT_EQ(curious->contextName(), "a host");
}

TEST_P(AudioUnitTest, ReportsLatencyInSeconds)
{
    const auto delay = unit("urn:test:delay");
    EXPECT_EQ(delay->latency(), 0.0);
    delay->allocateRenderResources(32000.0, blockFrames);
    EXPECT_DOUBLE_EQ(delay->latency(), 64.0 / 32000.0);
}

TEST_P(AudioUnitTest, NamesItsMIDIOutputs)
{
    EXPECT_THAT(unit("urn:test:midi:echo")->MIDIOutputNames(), ElementsAre("MIDI Out"));
    EXPECT_THAT(unit("urn:test:everything")->MIDIOutputNames(), IsEmpty());
}

TEST_P(AudioUnitTest, HandsOnMIDIOnItsOwnThreadPaddedToThreeBytes)
{
    const auto flood = unit("urn:test:midi:flood");
    std::vector<Event> events;
    std::thread::id thread;
    std::promise<void> done;
    flood->setMIDIOutputEventBlock([&](std::int64_t time, std::uint8_t, std::int64_t length,
                                       const std::uint8_t *bytes) -> std::int32_t {
        events.push_back({time, length, {bytes, bytes + std::max<std::int64_t>(length, 3)}});
        thread = std::this_thread::get_id();
        if (events.size() == 4)
            done.set_value();
        return 0;
    });
    flood->allocateRenderResources(48000.0, blockFrames);
    ASSERT_FALSE(render(*flood, 6400).empty());
    ASSERT_EQ(done.get_future().wait_for(std::chrono::seconds(10)), std::future_status::ready);
    flood->setMIDIOutputEventBlock(nullptr);

    EXPECT_NE(thread, std::this_thread::get_id());
    EXPECT_EQ(events[0].sampleTime, 6400);
    EXPECT_EQ(events[0].length, 1);
    EXPECT_THAT(events[0].bytes, ElementsAre(0xF8, 0, 0));
    EXPECT_EQ(events[1].length, 2);
    EXPECT_THAT(events[1].bytes, ElementsAre(0xC0, 5, 0));
    EXPECT_THAT(events[2].bytes, ElementsAre(0x90, 60, 100));
    EXPECT_EQ(events[3].sampleTime, 6403);
    EXPECT_EQ(events[3].length, 300);
    EXPECT_EQ(events[3].bytes.back(), 0xF7);
}

TEST_P(AudioUnitTest, HandsOnMIDIBeforeAnOfflineBlockReturns)
{
    const auto flood = unit("urn:test:midi:flood");
    std::atomic<int> events{0};
    flood->setMIDIOutputEventBlock(
        [&](std::int64_t, std::uint8_t, std::int64_t, const std::uint8_t *) -> std::int32_t {
            ++events;
            return 0;
        });
    flood->setRenderingOffline(true);
    flood->allocateRenderResources(48000.0, blockFrames);
    for (int block = 1; block <= 1000; ++block) {
        render(*flood);
        ASSERT_EQ(events, 4 * block);
    }
}

TEST_P(AudioUnitTest, GivesAHandlerNothingFromBeforeItWasThere)
{
    const auto flood = unit("urn:test:midi:flood");
    flood->setRenderingOffline(true);
    flood->allocateRenderResources(48000.0, blockFrames);
    for (int block = 0; block < 10; ++block)
        render(*flood);
    std::atomic<int> events{0};
    flood->setMIDIOutputEventBlock(
        [&](std::int64_t, std::uint8_t, std::int64_t, const std::uint8_t *) -> std::int32_t {
            ++events;
            return 0;
        });
    render(*flood);
    EXPECT_EQ(events, 4);
}

TEST_P(AudioUnitTest, RunsNoHandlerAfterItWasReplaced)
{
    const auto flood = unit("urn:test:midi:flood");
    flood->allocateRenderResources(48000.0, blockFrames);
    for (int round = 0; round < 20; ++round) {
        auto alive = std::make_shared<std::atomic<bool>>(true);
        auto lateCalls = std::make_shared<std::atomic<int>>(0);
        flood->setMIDIOutputEventBlock([alive, lateCalls](std::int64_t, std::uint8_t, std::int64_t,
                                                          const std::uint8_t *) -> std::int32_t {
            std::this_thread::yield();
            if (!*alive)
                ++*lateCalls;
            return 0;
        });
        render(*flood);
        flood->setMIDIOutputEventBlock(nullptr);
        *alive = false;
        render(*flood);
        EXPECT_EQ(*lateCalls, 0);
    }
}

TEST_P(AudioUnitTest, MayBeLetGoOfWithinItsHandler)
{
    auto flood = unit("urn:test:midi:flood");
    flood->allocateRenderResources(48000.0, blockFrames);
    std::promise<void> gone;
    auto holder = std::make_shared<std::shared_ptr<AUAudioUnit>>(flood);
    flood->setMIDIOutputEventBlock([holder, &gone](std::int64_t, std::uint8_t, std::int64_t,
                                                   const std::uint8_t *) -> std::int32_t {
        if (*holder) {
            holder->reset();
            gone.set_value();
        }
        return 0;
    });
    render(*flood);
    flood.reset();
    EXPECT_EQ(gone.get_future().wait_for(std::chrono::seconds(10)), std::future_status::ready);
}

TEST_P(AudioUnitTest, EchoesScheduledMIDI)
{
    const auto echo = unit("urn:test:midi:echo");
    std::vector<std::int64_t> times;
    echo->setMIDIOutputEventBlock(
        [&](std::int64_t time, std::uint8_t, std::int64_t, const std::uint8_t *) -> std::int32_t {
            times.push_back(time);
            return 0;
        });
    echo->setRenderingOffline(true);
    echo->allocateRenderResources(48000.0, blockFrames);
    const std::array<std::uint8_t, 3> note{0x90, 60, 100};
    EXPECT_TRUE(echo->scheduleMIDIEvent(9, note.data(), note.size()));
    EXPECT_TRUE(echo->scheduleMIDIEvent(4, note.data(), note.size()));
    EXPECT_FALSE(echo->scheduleMIDIEvent(4, note.data(), 2));
    EXPECT_FALSE(echo->scheduleMIDIEvent(4, nullptr, 0));
    render(*echo, 100);
    EXPECT_THAT(times, ElementsAre(104, 109));
    EXPECT_FALSE(unit("urn:test:mono")->scheduleMIDIEvent(0, note.data(), note.size()));
}

TEST_P(AudioUnitTest, AnswersWithoutAViewOnTheMainThread)
{
    const auto mono = unit("urn:test:mono");
    bool answered = false;
    // Made where programs make it: GLib's own set-up is on the main thread then.
    DispatchQueue::main();
    std::thread asker([&] {
        mono->requestViewController([&](const std::shared_ptr<AUViewController> &controller) {
            EXPECT_EQ(controller, nullptr);
            EXPECT_TRUE(platform::foundation::isMainThread());
            answered = true;
        });
    });
    EXPECT_TRUE(RunLoop::main().runUntil([&] { return answered; }, 10.0));
    asker.join();
}

TEST_P(AudioUnitTest, IsControlledWhileItRenders)
{
    const auto amplifier = unit("urn:test:amplifier");
    amplifier->allocateRenderResources(48000.0, blockFrames);
    const auto presets = amplifier->factoryPresets();
    std::atomic<bool> ending{false};
    std::thread audio([&] {
        while (!ending) {
            const auto block = render(*amplifier);
            if (!block.empty()) {
                EXPECT_THAT(block.front(), testing::AnyOf(0.5F, 1.0F, 3.0F));
            }
        }
    });
    for (int i = 0; i < 50; ++i) {
        amplifier->setCurrentPreset(presets->at(static_cast<std::size_t>(i % 2)));
        amplifier->setContextName("round " + std::to_string(i));
        EXPECT_GE(amplifier->latency(), 0.0);
    }
    ending = true;
    audio.join();
}

INSTANTIATE_TEST_SUITE_P(Places, AudioUnitTest,
                         testing::Values(Place::thisProcess, Place::ownProcess), placeName);
