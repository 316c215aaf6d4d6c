#include "Platform/Audio/AVAudioEngine.hpp"
#include "Platform/Audio/AVAudioFile.hpp"
#include "Platform/Audio/AVAudioPlayerNode.hpp"
#include "Platform/Foundation/DispatchQueue.hpp"
#include "Tests/Utilities/Channels.hpp"
#include "Tests/Utilities/OfflineRenderer.hpp"
#include "Tests/Utilities/TemporaryFolder.hpp"
#include "Tests/Utilities/WaveFile.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <functional>
#include <future>
#include <memory>
#include <thread>

namespace
{

using test::Channels;

// An engine that renders by hand: player → mixer → output.
class PlayerTest : public testing::Test
{
protected:
    void start(const AVAudioFormat &format, std::uint32_t maximumFrames = 4096)
    {
        engine.enableManualRenderingMode(format, maximumFrames);
        engine.connect(player, engine.mainMixerNode(), std::make_shared<AVAudioFormat>(format));
        engine.connect(engine.mainMixerNode(), engine.outputNode(),
                       engine.outputNode()->outputFormat(0));
        engine.start();
    }

    std::shared_ptr<AVAudioFile> file(const Channels &channels, std::uint32_t rate = 48000)
    {
        const std::string name = std::to_string(++files) + ".wav";
        return std::make_shared<AVAudioFile>(test::writeWave(folder.path() / name, channels, rate));
    }

    Channels render(std::size_t frames, std::uint32_t block = 512)
    {
        return test::renderOffline(engine, *engine.outputNode()->outputFormat(0), frames, block);
    }

    // Schedules the file again at each end, from a serial queue.
    void loop(const std::shared_ptr<AVAudioFile> &looped)
    {
        player->scheduleFile(looped, [this, looped] {
            queue.async([this, looped] {
                ++ends;
                if (loops)
                    loop(looped);
            });
        });
    }

    const AVAudioFormat stereo{48000, 2};
    test::TemporaryFolder folder;
    int files = 0;
    std::atomic<int> ends{0};
    std::atomic<bool> loops{true};
    DispatchQueue queue{"example.qrvx.test.loop"};
    AVAudioEngine engine;
    std::shared_ptr<AVAudioPlayerNode> player = std::make_shared<AVAudioPlayerNode>();
};

TEST_F(PlayerTest, PlaysAFileSampleForSampleAndThenSilence)
{
    start(stereo);
    const Channels wave = test::noise(2, 10000);
    std::atomic<int> completed{0};
    player->scheduleFile(file(wave), [&] { ++completed; });
    player->play();
    Channels expected = wave;
    for (auto &channel : expected)
        channel.resize(12000, 0.0F);
    EXPECT_EQ(test::firstDifference(render(12000), expected), -1);
    EXPECT_EQ(completed, 1);
}

TEST_F(PlayerTest, IsSilentUntilItPlays)
{
    start(stereo);
    player->scheduleFile(file(test::noise(2, 1000)), {});
    EXPECT_FALSE(player->isPlaying());
    EXPECT_EQ(test::firstDifference(render(500), Channels(2, std::vector<float>(500))), -1);
    player->play();
    EXPECT_TRUE(player->isPlaying());
    EXPECT_EQ(test::firstDifference(render(1000), test::noise(2, 1000)), -1);
}

TEST_F(PlayerTest, AFileIsNotPlayedThroughBeforeTheNodePlays)
{
    start(stereo);
    std::atomic<int> completed{0};
    player->scheduleFile(file(test::noise(2, 100)), [&] { ++completed; });
    render(5000);
    EXPECT_EQ(completed, 0);
    player->play();
    render(200);
    EXPECT_EQ(completed, 1);
}

TEST_F(PlayerTest, FilesFollowOneAnotherInTheVeryNextFrame)
{
    start(stereo);
    const Channels first = test::noise(2, 1234, 1);
    const Channels second = test::noise(2, 777, 2);
    player->scheduleFile(file(first), {});
    player->scheduleFile(file(second), {});
    player->play();
    Channels expected = first;
    for (std::size_t channel = 0; channel < 2; ++channel)
        expected[channel].insert(expected[channel].end(), second[channel].begin(),
                                 second[channel].end());
    EXPECT_EQ(test::firstDifference(render(2011), expected), -1);
}

TEST_F(PlayerTest, ALoopHasNoGapWhateverTheBlock)
{
    for (const std::uint32_t block : {1U, 17U, 64U, 512U, 2027U, 4096U}) {
        SCOPED_TRACE(block);
        AVAudioEngine fresh;
        player = std::make_shared<AVAudioPlayerNode>();
        fresh.enableManualRenderingMode(stereo, 4096);
        fresh.connect(player, fresh.mainMixerNode(), std::make_shared<AVAudioFormat>(stereo));
        fresh.connect(fresh.mainMixerNode(), fresh.outputNode(), nullptr);
        fresh.start();
        const Channels wave = test::noise(2, 3001);
        loops = true;
        loop(file(wave));
        player->play();
        EXPECT_EQ(test::firstDifference(test::renderOffline(fresh, stereo, 5 * 3001, block),
                                        test::repeated(wave, 5)),
                  -1);
        loops = false;
        player->stop();
        platform::foundation::waitUntilSerialQueuesAreIdle();
    }
}

TEST_F(PlayerTest, TenFramesLoopWithoutAGap)
{
    start(stereo);
    const Channels wave = test::noise(2, 10);
    loop(file(wave));
    player->play();
    EXPECT_EQ(test::firstDifference(render(5000), test::repeated(wave, 500)), -1);
    loops = false;
    player->stop();
    platform::foundation::waitUntilSerialQueuesAreIdle();
    // The ring may be ahead of what was heard, not more.
    EXPECT_GE(ends, 500);
    EXPECT_LE(ends, 500 + 2 * (16384 + 1024) / 10);
}

TEST_F(PlayerTest, AConvertedLoopHasNoEdge)
{
    start(stereo);
    // A whole number of periods: laid end to end it is one sine.
    const Channels wave = test::sine(2, 4410, 1000.0, 44100.0);
    loop(file(wave, 44100));
    player->play();
    const Channels rendered = render(48000);
    const Channels expected = test::sine(2, 48000, 1000.0, 48000.0);
    for (std::size_t frame = 500; frame < 48000; ++frame)
        ASSERT_NEAR(rendered[0][frame], expected[0][frame], 1e-4) << "frame " << frame;
    loops = false;
    player->stop();
}

TEST_F(PlayerTest, TheEndOfAConvertedFileIsHeardWhenNothingFollows)
{
    start(stereo);
    const Channels wave = test::sine(2, 4410, 1000.0, 44100.0);
    player->scheduleFile(file(wave, 44100), {});
    player->play();
    const Channels rendered = render(6000);
    double energyOfLastFrames = 0;
    for (std::size_t frame = 4750; frame < 4800; ++frame)
        energyOfLastFrames += rendered[0][frame] * rendered[0][frame];
    EXPECT_GT(energyOfLastFrames, 50 * 0.5 * 0.25 * 0.5);
    for (std::size_t frame = 4900; frame < 6000; ++frame)
        ASSERT_EQ(rendered[0][frame], 0.0F);
}

TEST_F(PlayerTest, MonoIsHeardOnBothSides)
{
    start(stereo);
    const Channels wave = test::noise(1, 2000);
    player->scheduleFile(file(wave), {});
    player->play();
    EXPECT_EQ(test::firstDifference(render(2000), {wave[0], wave[0]}), -1);
}

TEST_F(PlayerTest, AFileOfAnotherRateAndChannelCountMayFollow)
{
    start(stereo);
    const Channels first = test::noise(2, 1000);
    player->scheduleFile(file(first), {});
    player->scheduleFile(file(test::sine(1, 2205, 500.0, 22050.0), 22050), {});
    player->scheduleFile(file(first), {});
    player->play();
    const Channels rendered = render(7000);
    Channels head = rendered;
    for (auto &channel : head)
        channel.resize(1000);
    EXPECT_EQ(test::firstDifference(head, first), -1);
    const Channels sine = test::sine(1, 4800, 500.0, 48000.0);
    for (std::size_t frame = 300; frame < 4500; ++frame)
        ASSERT_NEAR(rendered[1][1000 + frame], sine[0][frame], 1e-3) << frame;
    // The third file is there whole, one frame more or less after the second.
    bool found = false;
    for (std::size_t at = 5795; at <= 5805 && !found; ++at)
        found = std::equal(first[0].begin(), first[0].end(),
                           rendered[0].begin() + static_cast<long>(at));
    EXPECT_TRUE(found);
}

TEST_F(PlayerTest, StopFiresThePendingCompletionOnTheFeederBeforeItReturns)
{
    start(stereo);
    std::promise<std::thread::id> thread;
    player->scheduleFile(file(test::noise(2, 480000)),
                         [&] { thread.set_value(std::this_thread::get_id()); });
    player->play();
    render(1000);
    player->stop();
    std::future<std::thread::id> completed = thread.get_future();
    ASSERT_EQ(completed.wait_for(std::chrono::seconds(0)), std::future_status::ready);
    EXPECT_NE(completed.get(), std::this_thread::get_id());
    EXPECT_FALSE(player->isPlaying());
}

TEST_F(PlayerTest, StopDropsAllThatIsQueuedInOrder)
{
    start(stereo);
    std::vector<int> order;
    for (int index = 0; index < 3; ++index)
        player->scheduleFile(file(test::noise(2, 48000)),
                             [&order, index] { order.push_back(index); });
    player->play();
    render(100);
    player->stop();
    EXPECT_EQ(order, (std::vector<int>{0, 1, 2}));
    EXPECT_EQ(test::firstDifference(render(1000), Channels(2, std::vector<float>(1000))), -1);
}

TEST_F(PlayerTest, StopInACompletionRunsTheOthersInPlace)
{
    start(stereo);
    std::vector<int> order;
    player->scheduleFile(file(test::noise(2, 100)), [&] {
        order.push_back(0);
        player->stop();
        order.push_back(2);
    });
    player->scheduleFile(file(test::noise(2, 100)), [&] { order.push_back(1); });
    player->play();
    render(1000);
    EXPECT_EQ(order, (std::vector<int>{0, 1, 2}));
}

TEST_F(PlayerTest, AFileScheduledAfterStopBeginsAtItsFirstFrame)
{
    start(stereo);
    const Channels wave = test::noise(2, 20000);
    const auto same = file(wave);
    player->scheduleFile(same, {});
    player->play();
    render(777);
    player->stop();
    player->scheduleFile(same, {});
    player->play();
    EXPECT_EQ(test::firstDifference(render(20000), wave), -1);
}

TEST_F(PlayerTest, PauseKeepsEverythingInPlace)
{
    start(stereo);
    const Channels wave = test::noise(2, 20000);
    player->scheduleFile(file(wave), {});
    player->play();
    Channels rendered = render(5000);
    player->pause();
    EXPECT_EQ(test::firstDifference(render(3000), Channels(2, std::vector<float>(3000))), -1);
    player->play();
    const Channels rest = render(15000);
    for (std::size_t channel = 0; channel < 2; ++channel)
        rendered[channel].insert(rendered[channel].end(), rest[channel].begin(),
                                 rest[channel].end());
    EXPECT_EQ(test::firstDifference(rendered, wave), -1);
}

TEST_F(PlayerTest, ReconnectingInAnotherFormatLosesNothingThatWasReadAhead)
{
    start(stereo);
    const Channels wave = test::sine(2, 96000, 400.0, 48000.0);
    player->scheduleFile(file(wave), {});
    player->play();
    render(1000);
    player->pause();
    engine.connect(player, engine.mainMixerNode(), std::make_shared<AVAudioFormat>(32000.0, 2));
    player->play();
    const Channels rendered = render(60000);
    // The sine goes on at the phase at which it stopped, but for the seams of the
    // converters, which show within a millisecond.
    std::size_t off = 0;
    for (std::size_t frame = 200; frame < 60000; ++frame)
        if (std::abs(rendered[0][frame] - wave[0][1000 + frame]) > 0.02F)
            ++off;
    EXPECT_LT(off, 400U);
}

TEST_F(PlayerTest, ReconnectingInAnotherFormatNeedsNoFile)
{
    start(stereo);
    for (const double rate : {44100.0, 96000.0, 48000.0})
        engine.connect(player, engine.mainMixerNode(), std::make_shared<AVAudioFormat>(rate, 2));
    player->play();
    const Channels wave = test::noise(2, 1000);
    player->scheduleFile(file(wave), {});
    EXPECT_EQ(test::firstDifference(render(1000), wave), -1);
}

TEST_F(PlayerTest, AnEmptyFileCompletesAtTheRateOfBlocks)
{
    start(stereo);
    const auto empty = file(Channels(2));
    ASSERT_EQ(empty->length(), 0);
    loop(empty);
    player->play();
    EXPECT_EQ(test::firstDifference(render(48000), Channels(2, std::vector<float>(48000))), -1);
    loops = false;
    player->stop();
    platform::foundation::waitUntilSerialQueuesAreIdle();
    EXPECT_GE(ends, 90);
    EXPECT_LE(ends, 90 + 100);
}

TEST_F(PlayerTest, AnUnconnectedPlayerAcceptsEverything)
{
    std::atomic<int> completed{0};
    player->scheduleFile(file(test::noise(2, 100)), [&] { ++completed; });
    player->play();
    player->play();
    player->pause();
    EXPECT_EQ(completed, 0);
    player->stop();
    EXPECT_EQ(completed, 1);
    player->stop();
    EXPECT_EQ(completed, 1);
}

TEST_F(PlayerTest, TheLastHandleMayGoInACompletion)
{
    start(stereo);
    const std::weak_ptr<AVAudioPlayerNode> node = player;
    std::promise<void> gone;
    player->scheduleFile(file(test::noise(2, 100)), [this, &gone] {
        engine.detach(player);
        player.reset();
        gone.set_value();
    });
    player->play();
    render(1000);
    // A detached player is not waited for.
    gone.get_future().wait();
    EXPECT_TRUE(node.expired());
}

TEST_F(PlayerTest, AThousandQuickStopsAndPlaysLeaveOneSchedule)
{
    start(stereo);
    const Channels wave = test::noise(2, 1000);
    const auto looped = file(wave);
    for (int time = 0; time < 1000; ++time) {
        loops = true;
        queue.sync([&] {
            loop(looped);
            player->play();
        });
        if (time % 7 == 0)
            render(300);
        queue.sync([&] {
            player->stop();
            loops = false;
        });
    }
    platform::foundation::waitUntilSerialQueuesAreIdle();
    loops = true;
    loop(looped);
    player->play();
    EXPECT_EQ(test::firstDifference(render(5000), test::repeated(wave, 5)), -1);
    loops = false;
    player->stop();
}

} // namespace
