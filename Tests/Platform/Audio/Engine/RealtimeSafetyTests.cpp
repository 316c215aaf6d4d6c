#include "Platform/Audio/AVAudioEngine.hpp"
#include "Platform/Audio/AVAudioFile.hpp"
#include "Platform/Audio/AVAudioPlayerNode.hpp"
#include "Platform/Audio/AVAudioUnit.hpp"
#include "Platform/Foundation/DispatchQueue.hpp"
#include "Tests/Utilities/Channels.hpp"
#include "Tests/Utilities/RealtimeProbe.hpp"
#include "Tests/Utilities/StandInEffect.hpp"
#include "Tests/Utilities/TemporaryFolder.hpp"
#include "Tests/Utilities/WatchedDevice.hpp"
#include "Tests/Utilities/WaveFile.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <thread>

namespace
{

using test::RealtimeProbe;
using test::WatchedDevice;

// The effect is in a process of its own: handing a block over and waiting for it are
// the kernel's, and the one thing that is.
TEST(RealtimeSafety, TheCallbackNeverAllocatesOrLocksAndEntersTheKernelForTheEffectAlone)
{
    if (RealtimeProbe::obstacle() != nullptr)
        GTEST_SKIP() << RealtimeProbe::obstacle();
    WatchedDevice::Findings findings;
    const test::TemporaryFolder folder;
    AVAudioEngine engine(std::make_unique<WatchedDevice>(findings));
    auto player = std::make_shared<AVAudioPlayerNode>();
    const std::shared_ptr<AVAudioUnit> effect = test::StandInEffect().instantiate();
    ASSERT_NE(effect, nullptr);
    std::atomic<int> events{0};
    effect->auAudioUnit()->setMIDIOutputEventBlock(
        [&events](std::int64_t, std::uint8_t, std::int64_t, const std::uint8_t *) {
            ++events;
            return 0;
        });

    // Two files of different formats, looped in turn, so that converters work too.
    const auto first = std::make_shared<AVAudioFile>(
        test::writeWave(folder.path() / "first.wav", test::noise(2, 3000), 48000));
    const auto second = std::make_shared<AVAudioFile>(
        test::writeWave(folder.path() / "second.wav", test::noise(1, 2000), 44100));
    DispatchQueue queue("example.qrvx.test.loop");
    std::atomic<bool> loops{true};
    std::atomic<int> turns{0};
    std::function<void()> scheduleNext = [&] {
        player->scheduleFile(turns % 2 == 0 ? first : second, [&] {
            queue.async([&] {
                ++turns;
                if (loops)
                    scheduleNext();
            });
        });
    };
    engine.connect(player, engine.mainMixerNode(), first->processingFormat());
    engine.connect(engine.mainMixerNode(), engine.outputNode(), nullptr);
    engine.start();
    queue.sync(scheduleNext);
    player->play();

    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    int changes = 0;
    const auto enough = [&] { return changes >= 20 && turns > 60 && events > 3; };
    while (!enough() && std::chrono::steady_clock::now() < end) {
        const auto format = ++changes % 3 == 0 ? second->processingFormat() : nullptr;
        engine.connect(player, effect, format);
        engine.connect(effect, engine.mainMixerNode(), format);
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
        // Where nothing is optimised the effect takes longer than that to get ready.
        const auto patience = std::chrono::steady_clock::now() + std::chrono::seconds(3);
        while (events < std::min(changes, 4) && std::chrono::steady_clock::now() < patience)
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        player->pause();
        engine.detach(effect);
        engine.connect(player, engine.mainMixerNode(), first->processingFormat());
        player->play();
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    loops = false;
    player->stop();
    engine.stop();
    platform::foundation::waitUntilSerialQueuesAreIdle();
    EXPECT_TRUE(enough()) << changes << " changes, " << turns << " turns, " << events << " events";
    EXPECT_GT(findings.blocks, 1000U);
    EXPECT_EQ(findings.allocations, 0U);
    EXPECT_EQ(findings.locks, 0U);
    EXPECT_EQ(findings.systemCalls, 0U);
    EXPECT_GT(findings.futexCalls, 0U);
}

} // namespace
