#include "Platform/Audio/AVAudioEngine.hpp"
#include "Platform/Audio/AVAudioFile.hpp"
#include "Platform/Audio/AVAudioPlayerNode.hpp"
#include "Platform/Audio/AVAudioUnit.hpp"
#include "Platform/Foundation/PlatformError.hpp"
#include "Tests/Utilities/Channels.hpp"
#include "Tests/Utilities/OfflineRenderer.hpp"
#include "Tests/Utilities/ScriptedUnit.hpp"
#include "Tests/Utilities/TemporaryFolder.hpp"
#include "Tests/Utilities/WaveFile.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <thread>

namespace
{

using test::Channels;

// The player plays one long file of noise.
class EngineTest : public testing::Test
{
protected:
    void manual(const AVAudioFormat &format, std::uint32_t maximumFrames = 512)
    {
        engine.enableManualRenderingMode(format, maximumFrames);
        engine.connect(engine.mainMixerNode(), engine.outputNode(),
                       engine.outputNode()->outputFormat(0));
    }

    void play(const Channels &channels, std::uint32_t rate = 48000)
    {
        player->scheduleFile(std::make_shared<AVAudioFile>(
                                 test::writeWave(folder.path() / "file.wav", channels, rate)),
                             {});
        player->play();
    }

    Channels render(std::size_t frames, std::uint32_t block = 512)
    {
        return test::renderOffline(engine, *engine.outputNode()->outputFormat(0), frames, block);
    }

    static std::shared_ptr<AVAudioFormat> formatOf(double rate, std::uint32_t channels)
    {
        return std::make_shared<AVAudioFormat>(rate, channels);
    }

    const AVAudioFormat stereo{48000, 2};
    const Channels wave = test::noise(2, 20000);
    test::TemporaryFolder folder;
    AVAudioEngine engine;
    std::shared_ptr<AVAudioPlayerNode> player = std::make_shared<AVAudioPlayerNode>();
    std::shared_ptr<test::ScriptedUnit> unit = std::make_shared<test::ScriptedUnit>();
    std::shared_ptr<AVAudioUnit> effect = std::make_shared<AVAudioUnit>(unit);
};

Channels scaled(Channels channels, float gain, std::size_t frames)
{
    for (auto &channel : channels) {
        channel.resize(frames);
        for (float &sample : channel)
            sample *= gain;
    }
    return channels;
}

TEST_F(EngineTest, OutputFormatIs48kHzStereoBeforeADeviceWasOpened)
{
    EXPECT_EQ(*engine.outputNode()->outputFormat(0), stereo);
    EXPECT_FALSE(engine.isRunning());
}

TEST_F(EngineTest, ABusOtherThanZeroIsFatal)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(engine.outputNode()->outputFormat(1),
                 "Fatal error: The output node has no bus but 0");
}

TEST_F(EngineTest, RendersThroughTheEffect)
{
    manual(stereo);
    engine.connect(player, effect, formatOf(48000, 2));
    engine.connect(effect, engine.mainMixerNode(), formatOf(48000, 2));
    engine.start();
    play(wave);
    EXPECT_EQ(test::firstDifference(render(5000), scaled(wave, 2.0F, 5000)), -1);
    EXPECT_EQ(unit->sampleRate, 48000);
    EXPECT_EQ(unit->maximumFrames, 512U);
    EXPECT_TRUE(unit->offline);
}

TEST_F(EngineTest, SettlesAConnectionWithoutFormatByTheEffectsChannels)
{
    manual(stereo);
    unit = std::make_shared<test::ScriptedUnit>(1, 1);
    effect = std::make_shared<AVAudioUnit>(unit);
    engine.connect(player, effect, nullptr);
    engine.connect(effect, engine.mainMixerNode(), nullptr);
    engine.start();
    play(wave);
    const Channels rendered = render(100);
    for (std::size_t frame = 0; frame < 100; ++frame) {
        // The file is mixed down to the effect's one channel, which is heard on both sides.
        EXPECT_FLOAT_EQ(rendered[0][frame], wave[0][frame] + wave[1][frame]);
        EXPECT_EQ(rendered[0][frame], rendered[1][frame]);
    }
}

TEST_F(EngineTest, SettlesAConnectionWithoutFormatByTheOutputsRate)
{
    manual(AVAudioFormat(44100, 2));
    engine.connect(player, effect, nullptr);
    engine.connect(effect, engine.mainMixerNode(), nullptr);
    engine.start();
    EXPECT_EQ(unit->sampleRate, 44100);
}

TEST_F(EngineTest, AMonoEffectInAStereoConnectionIsHeardOnBothSides)
{
    manual(stereo);
    unit = std::make_shared<test::ScriptedUnit>(1, 1);
    effect = std::make_shared<AVAudioUnit>(unit);
    engine.connect(player, effect, formatOf(48000, 2));
    engine.connect(effect, engine.mainMixerNode(), formatOf(48000, 2));
    engine.start();
    play(wave);
    const Channels rendered = render(100);
    EXPECT_FLOAT_EQ(rendered[0][50], wave[0][50] + wave[1][50]);
    EXPECT_EQ(rendered[0], rendered[1]);
}

TEST_F(EngineTest, TheMixerConvertsAnInputOfAnotherRate)
{
    manual(stereo);
    const Channels sine = test::sine(2, 44100, 1000.0, 44100.0, 0.25);
    engine.connect(player, effect, formatOf(44100, 2));
    engine.connect(effect, engine.mainMixerNode(), formatOf(44100, 2));
    engine.start();
    play(sine, 44100);
    EXPECT_EQ(unit->sampleRate, 44100);
    for (const std::uint32_t block : {512U, 1U, 333U}) {
        SCOPED_TRACE(block);
        engine.stop();
        player->stop();
        engine.start();
        play(sine, 44100);
        const Channels rendered = render(24000, block);
        const Channels expected = test::sine(1, 24000, 1000.0, 48000.0);
        for (std::size_t frame = 300; frame < 24000; ++frame)
            ASSERT_NEAR(rendered[0][frame], expected[0][frame], 1e-4) << frame;
    }
}

TEST_F(EngineTest, TheOutputConvertsWhatTheMixersConnectionCarries)
{
    engine.connect(engine.mainMixerNode(), engine.outputNode(),
                   engine.outputNode()->outputFormat(0));
    engine.enableManualRenderingMode(AVAudioFormat(96000, 1), 512);
    engine.connect(player, engine.mainMixerNode(), formatOf(48000, 2));
    engine.start();
    play(test::sine(2, 48000, 1000.0, 48000.0));
    const Channels rendered = render(48000);
    ASSERT_EQ(rendered.size(), 1U);
    const Channels expected = test::sine(1, 48000, 1000.0, 96000.0);
    for (std::size_t frame = 300; frame < 48000; ++frame)
        ASSERT_NEAR(rendered[0][frame], expected[0][frame], 1e-4) << frame;
}

TEST_F(EngineTest, TheMixerAddsUpItsInputs)
{
    manual(stereo);
    engine.connect(player, engine.mainMixerNode(), formatOf(48000, 2));
    auto other = std::make_shared<AVAudioPlayerNode>();
    engine.connect(other, engine.mainMixerNode(), formatOf(48000, 1));
    engine.start();
    const Channels second = test::noise(1, 5000, 9);
    other->scheduleFile(
        std::make_shared<AVAudioFile>(test::writeWave(folder.path() / "other.wav", second, 48000)),
        {});
    other->play();
    play(wave);
    const Channels rendered = render(5000);
    Channels expected = scaled(wave, 1.0F, 5000);
    for (auto &channel : expected)
        for (std::size_t frame = 0; frame < 5000; ++frame)
            channel[frame] += second[0][frame];
    EXPECT_EQ(test::firstDifference(rendered, expected), -1);
}

TEST_F(EngineTest, PathsThatMeetAreHeardAtTheSameMoment)
{
    // The effect is late by as many frames as it says.
    std::size_t delay = 100;
    std::vector<float> heard;
    unit->delay = 100.0 / 48000.0;
    unit->onRender = [&](const AURenderBlock &block) {
        heard.insert(heard.end(), block.input[0], block.input[0] + block.frames);
        for (std::uint32_t frame = 0; frame < block.frames; ++frame) {
            const std::size_t place = heard.size() - block.frames + frame;
            const float sample = place < delay ? 0.0F : heard[place - delay];
            block.output[0][frame] = block.output[1][frame] = sample;
        }
        return true;
    };
    manual(stereo);
    engine.connect(player, effect, formatOf(48000, 2));
    // Through a mixer of its own, as effects in parallel often are.
    auto wet = std::make_shared<AVAudioMixerNode>();
    engine.connect(effect, wet, formatOf(48000, 2));
    engine.connect(wet, engine.mainMixerNode(), formatOf(48000, 2));
    auto dry = std::make_shared<AVAudioPlayerNode>();
    engine.connect(dry, engine.mainMixerNode(), formatOf(48000, 2));
    engine.start();
    const Channels noise = test::noise(1, 9000);
    const URL location = test::writeWave(folder.path() / "mono.wav", noise, 48000);
    for (const auto &each : {player, dry}) {
        each->scheduleFile(std::make_shared<AVAudioFile>(location), {});
        each->play();
    }
    const Channels wet100 = render(2000);
    for (std::size_t frame = 0; frame < 2000; ++frame)
        ASSERT_EQ(wet100[0][frame], frame < 100 ? 0.0F : 2.0F * noise[0][frame - 100]) << frame;

    // The effect takes to another delay, and the other path with it.
    delay = 300;
    unit->delay = 300.0 / 48000.0;
    render(1000);
    const Channels wet300 = render(2000);
    for (std::size_t frame = 0; frame < 2000; ++frame)
        ASSERT_EQ(wet300[0][frame], 2.0F * noise[0][3000 + frame - 300]) << frame;
}

TEST_F(EngineTest, EffectsInARowAndMixersInARowRender)
{
    manual(stereo);
    auto second = std::make_shared<AVAudioUnit>(std::make_shared<test::ScriptedUnit>());
    auto middle = std::make_shared<AVAudioMixerNode>();
    engine.connect(player, effect, formatOf(48000, 2));
    engine.connect(effect, second, formatOf(48000, 2));
    engine.connect(second, middle, formatOf(48000, 2));
    engine.connect(middle, engine.mainMixerNode(), formatOf(48000, 2));
    engine.start();
    play(wave);
    EXPECT_EQ(test::firstDifference(render(3000), scaled(wave, 4.0F, 3000)), -1);
}

TEST_F(EngineTest, TheGraphMayChangeBetweenTwoBlocks)
{
    manual(stereo);
    engine.connect(player, engine.mainMixerNode(), formatOf(48000, 2));
    engine.start();
    play(wave);
    const Channels dry = render(1000, 500);
    EXPECT_EQ(test::firstDifference(dry, scaled(wave, 1.0F, 1000)), -1);
    engine.connect(player, effect, formatOf(48000, 2));
    engine.connect(effect, engine.mainMixerNode(), formatOf(48000, 2));
    const Channels wet = render(1000, 500);
    for (std::size_t frame = 0; frame < 1000; ++frame)
        ASSERT_EQ(wet[0][frame], 2.0F * wave[0][1000 + frame]);
    engine.detach(effect);
    EXPECT_FALSE(unit->renderResourcesAllocated());
    EXPECT_EQ(test::firstDifference(render(512), Channels(2, std::vector<float>(512))), -1);
    engine.connect(player, engine.mainMixerNode(), formatOf(48000, 2));
    const Channels again = render(1000, 500);
    for (std::size_t frame = 0; frame < 1000; ++frame)
        ASSERT_EQ(again[1][frame], wave[1][2000 + frame]);
}

TEST_F(EngineTest, ChangesThatTakeNothingAwayDoNothing)
{
    manual(stereo);
    engine.disconnectNodeInput(effect);
    engine.disconnectNodeInput(engine.mainMixerNode());
    engine.detach(effect);
    engine.stop();
    engine.start();
    engine.start();
    EXPECT_TRUE(engine.isRunning());
    EXPECT_EQ(test::firstDifference(render(600), Channels(2, std::vector<float>(600))), -1);
    engine.stop();
    engine.stop();
    EXPECT_FALSE(engine.isRunning());
}

TEST_F(EngineTest, StartsWithAnEffectThatCannotRunAndSaysSo)
{
    manual(stereo);
    unit->refusal = "It needs more memory";
    engine.connect(player, effect, formatOf(48000, 2));
    engine.connect(effect, engine.mainMixerNode(), formatOf(48000, 2));
    testing::internal::CaptureStderr();
    engine.start();
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "The effect 'Test' cannot render: It needs more memory\n");
    EXPECT_TRUE(engine.isRunning());
    EXPECT_EQ(test::firstDifference(render(1000), Channels(2, std::vector<float>(1000))), -1);
}

TEST_F(EngineTest, AnEffectThatCannotRunAfterAChangeIsSilent)
{
    manual(stereo);
    engine.connect(player, engine.mainMixerNode(), formatOf(48000, 2));
    engine.start();
    play(wave);
    unit->refusal = "It needs more memory";
    testing::internal::CaptureStderr();
    engine.connect(player, effect, formatOf(48000, 2));
    engine.connect(effect, engine.mainMixerNode(), formatOf(48000, 2));
    EXPECT_NE(testing::internal::GetCapturedStderr().find(
                  "The effect 'Test' cannot render: It needs more memory\n"),
              std::string::npos);
    EXPECT_EQ(test::firstDifference(render(600), Channels(2, std::vector<float>(600))), -1);
    EXPECT_EQ(unit->rendersWhileUnallocated, 0);
}

TEST_F(EngineTest, ABlockThatAnEffectDoesNotRenderIsSilent)
{
    manual(stereo);
    unit->onRender = [](const AURenderBlock &block) {
        std::fill_n(block.output[0], block.frames, 1.0F);
        return false;
    };
    engine.connect(player, effect, formatOf(48000, 2));
    engine.connect(effect, engine.mainMixerNode(), formatOf(48000, 2));
    engine.start();
    play(wave);
    EXPECT_EQ(test::firstDifference(render(600), Channels(2, std::vector<float>(600))), -1);
}

TEST_F(EngineTest, TheEffectHearsHowFarItHasCome)
{
    manual(stereo);
    std::vector<std::int64_t> times;
    unit->onRender = [&times](const AURenderBlock &block) {
        times.push_back(block.sampleTime);
        return false;
    };
    engine.connect(player, effect, formatOf(48000, 2));
    engine.connect(effect, engine.mainMixerNode(), formatOf(48000, 2));
    engine.start();
    render(1200);
    // A change of the graph elsewhere does not set it back.
    engine.disconnectNodeInput(effect);
    render(100);
    EXPECT_EQ(times, (std::vector<std::int64_t>{0, 512, 1024, 1200}));
}

TEST_F(EngineTest, ManualRenderingIsNotGuarded)
{
    manual(stereo);
    unit->onRender = [](const AURenderBlock &block) {
        for (std::uint32_t frame = 0; frame < block.frames; ++frame) {
            block.output[0][frame] = 8.0F;
            block.output[1][frame] = std::numeric_limits<float>::quiet_NaN();
        }
        return true;
    };
    engine.connect(player, effect, formatOf(48000, 2));
    engine.connect(effect, engine.mainMixerNode(), formatOf(48000, 2));
    engine.start();
    const Channels rendered = render(10);
    EXPECT_EQ(rendered[0][9], 8.0F);
    EXPECT_TRUE(std::isnan(rendered[1][9]));
}

TEST_F(EngineTest, ManualRenderingIsTheSameEachTime)
{
    const auto once = [this] {
        AVAudioEngine fresh;
        auto source = std::make_shared<AVAudioPlayerNode>();
        fresh.enableManualRenderingMode(stereo, 333);
        fresh.connect(source, fresh.mainMixerNode(), formatOf(44100, 2));
        fresh.connect(fresh.mainMixerNode(), fresh.outputNode(), nullptr);
        fresh.start();
        source->scheduleFile(
            std::make_shared<AVAudioFile>(test::writeWave(folder.path() / "once.wav", wave, 32000)),
            {});
        source->play();
        return test::renderOffline(fresh, stereo, 20000, 333);
    };
    const Channels first = once();
    for (int time = 0; time < 3; ++time)
        EXPECT_EQ(test::firstDifference(once(), first), -1);
}

TEST_F(EngineTest, ManualRenderingRefusesWhatWasNotAgreed)
{
    AVAudioPCMBuffer buffer(stereo, 1024);
    EXPECT_THROW(engine.renderOffline(10, buffer), PlatformError);
    EXPECT_THROW(engine.enableManualRenderingMode(stereo, 0), PlatformError);
    manual(stereo);
    EXPECT_THROW(engine.renderOffline(10, buffer), PlatformError) << "not started";
    engine.start();
    EXPECT_THROW(engine.renderOffline(513, buffer), PlatformError);
    EXPECT_THROW(engine.enableManualRenderingMode(stereo, 64), PlatformError) << "running";
    AVAudioPCMBuffer mono(AVAudioFormat(48000, 1), 1024);
    EXPECT_THROW(engine.renderOffline(10, mono), PlatformError);
    AVAudioPCMBuffer small(stereo, 5);
    EXPECT_THROW(engine.renderOffline(10, small), PlatformError);
    engine.renderOffline(512, buffer);
    EXPECT_EQ(buffer.frameLength(), 512U);
    engine.renderOffline(0, buffer);
    EXPECT_EQ(buffer.frameLength(), 0U);
    engine.disableManualRenderingMode();
    EXPECT_FALSE(engine.isRunning());
}

TEST_F(EngineTest, PrepareAllocatesWhatStartNeeds)
{
    manual(stereo);
    engine.connect(player, effect, formatOf(48000, 2));
    engine.connect(effect, engine.mainMixerNode(), formatOf(48000, 2));
    engine.prepare();
    EXPECT_EQ(unit->allocations, 1);
    engine.start();
    EXPECT_EQ(unit->allocations, 1);
}

TEST_F(EngineTest, ManyThreadsMayChangeTheGraphWhileItRenders)
{
    manual(stereo);
    engine.connect(player, effect, formatOf(48000, 2));
    engine.connect(effect, engine.mainMixerNode(), formatOf(48000, 2));
    engine.start();
    play(wave);
    std::atomic<bool> ends{false};
    const auto change = [&](const std::shared_ptr<AVAudioUnit> &node) {
        while (!ends) {
            engine.connect(node, engine.mainMixerNode(), formatOf(44100, 2));
            engine.disconnectNodeInput(engine.mainMixerNode());
            engine.detach(node);
            // Out of the callback's reach: freed resources are not rendered with.
            std::this_thread::yield();
        }
    };
    auto second = std::make_shared<test::ScriptedUnit>();
    std::thread one([&] { change(effect); });
    std::thread two([&] { change(std::make_shared<AVAudioUnit>(second)); });
    render(200000);
    ends = true;
    one.join();
    two.join();
    EXPECT_EQ(unit->rendersWhileUnallocated, 0);
    EXPECT_EQ(second->rendersWhileUnallocated, 0);
}

} // namespace
