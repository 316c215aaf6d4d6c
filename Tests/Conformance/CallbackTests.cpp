#include "Platform/Audio/AVAudioEngine.hpp"
#include "Platform/Audio/AVAudioFile.hpp"
#include "Platform/Audio/AVAudioPlayerNode.hpp"
#include "Platform/Audio/AVAudioUnit.hpp"
#include "Platform/Audio/RemoteAudioUnit.hpp"
#include "Tests/Conformance/ChosenComponents.hpp"
#include "Tests/Utilities/Channels.hpp"
#include "Tests/Utilities/EnvironmentVariable.hpp"
#include "Tests/Utilities/Places.hpp"
#include "Tests/Utilities/RealtimeProbe.hpp"
#include "Tests/Utilities/TemporaryFolder.hpp"
#include "Tests/Utilities/WatchedDevice.hpp"
#include "Tests/Utilities/WaveFile.hpp"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace
{

using test::RealtimeProbe;
using test::WatchedDevice;

constexpr std::uint64_t blocksToHear = 300;

/// Plays through the component until the device has had enough blocks, with notes from
/// another thread.
void play(const AVAudioUnitComponent &component, const std::shared_ptr<AVAudioFile> &file,
          WatchedDevice::Findings &findings)
{
    AVAudioEngine engine(std::make_unique<WatchedDevice>(findings));
    const auto player = std::make_shared<AVAudioPlayerNode>();
    const auto effect = std::make_shared<AVAudioUnit>(std::make_shared<RemoteAudioUnit>(component));
    engine.connect(player, effect, nullptr);
    engine.connect(effect, engine.mainMixerNode(), nullptr);
    engine.connect(engine.mainMixerNode(), engine.outputNode(), nullptr);
    player->scheduleFile(file, nullptr);
    engine.start();
    player->play();
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    for (unsigned count = 0; findings.blocks < blocksToHear; ++count) {
        ASSERT_LT(std::chrono::steady_clock::now(), end);
        const auto key = static_cast<std::uint8_t>(count % 80);
        const std::array<std::uint8_t, 3> note{0x90, key, 100};
        effect->auAudioUnit()->scheduleMIDIEvent(key, note.data(), note.size());
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    player->stop();
    engine.stop();
}

// What a plug-in does in the callback is its own affair, and in another process: here
// there is the host's part alone.
TEST(RealtimeSafety, HoldsWithEveryPluginOfTheSample)
{
    if (RealtimeProbe::obstacle() != nullptr)
        GTEST_SKIP() << RealtimeProbe::obstacle();
    const test::EnvironmentVariable path("LV2_PATH", "/usr/lib/lv2");
    const test::TemporaryFolder folder;
    const auto file = std::make_shared<AVAudioFile>(
        test::writeWave(folder.path() / "noise.wav", test::noise(2, 480000), 48000));
    for (const AVAudioUnitComponent &component :
         conformance::chosenComponents(conformance::listedPlugins(
             test::sourcePath("Tests/Conformance/Plug-ins/sample.txt")))) {
        SCOPED_TRACE(component.pluginURI());
        WatchedDevice::Findings findings;
        play(component, file, findings);
        EXPECT_EQ(findings.allocations, 0U);
        EXPECT_EQ(findings.locks, 0U);
        EXPECT_EQ(findings.systemCalls, 0U);
        EXPECT_GT(findings.futexCalls, 0U);
    }
}

} // namespace
