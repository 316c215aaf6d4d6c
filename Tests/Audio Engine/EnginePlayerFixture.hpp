#pragma once

#include "Audio Engine/AUEnginePlayer.hpp"
#include "Platform/Foundation/Bundle.hpp"
#include "Platform/Foundation/DispatchQueue.hpp"
#include "Tests/Utilities/EnvironmentVariable.hpp"
#include "Tests/Utilities/MainThread.hpp"
#include "Tests/Utilities/OfflineRenderer.hpp"
#include "Tests/Utilities/PrintedLines.hpp"
#include "Tests/Utilities/ScriptedUnit.hpp"
#include "Tests/Utilities/TemporaryFolder.hpp"
#include "Tests/Utilities/WaveFile.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

/// Writes down what it is told, and on which side of the main thread.
class PlayerRecorder : public AUEnginePlayerDelegate
{
public:
    void onPlayerStateChanged(bool playing) override { note(playing ? "playing" : "stopped"); }
    void onFileSelect(const std::string &file) override { note("file " + file); }
    void onLoop(std::int64_t count) override { note("loop " + std::to_string(count)); }

    /// The events since the last call; main thread.
    std::vector<std::string> take() { return std::exchange(events_, {}); }

private:
    void note(const std::string &event)
    {
        EXPECT_TRUE(platform::foundation::isMainThread()) << event;
        events_.push_back(event);
    }
    std::vector<std::string> events_;
};

/// Lets the tests call what only the class itself calls.
class OpenEnginePlayer : public AUEnginePlayer
{
public:
    using AUEnginePlayer::AUEnginePlayer;
    using AUEnginePlayer::randomizeFile;
    using AUEnginePlayer::resetAudioLoop;
    using AUEnginePlayer::scheduleEffectLoop;
    using AUEnginePlayer::setSessionActive;
};

/// A player on an engine that renders by hand, and eighty demonstration files,
/// each of one value that tells which it is.
class EnginePlayerFixture : public ::testing::Test
{
protected:
    /// More than the player reads ahead.
    static constexpr std::uint32_t fileFrames = 12000;
    static constexpr std::uint32_t blockFrames = 256;

    EnginePlayerFixture()
    {
        GTEST_FLAG_SET(death_test_style, "threadsafe");
        for (int number = 1; number <= 80; ++number)
            test::writeWave(pathOf(number), test::constant(2, fileFrames, valueOf(number)), 48000);
        Bundle::setMain(std::make_shared<Bundle>(URL::fileURLWithPath(folder.path().string())));
        engine->enableManualRenderingMode(format, blockFrames);
        player->delegate.store(recorder);
    }

    ~EnginePlayerFixture() override
    {
        test::linesOf([this] {
            player->stop();
            test::drainMainQueue();
        });
        Bundle::setMain(nullptr);
    }

    static float valueOf(int number) { return static_cast<float>(number) / 128.0F; }
    std::string pathOf(int number) const
    {
        return folder.path().string() + "/" + std::to_string(number) + ".m4a";
    }
    URL urlOf(int number) const { return URL::fileURLWithPath(pathOf(number)); }

    /// The lines that the main queue's waiting tasks write.
    static std::vector<std::string> linesOfMainQueue()
    {
        return test::linesOf(test::drainMainQueue);
    }

    /// The file of the last `file` event.
    std::string start()
    {
        test::linesOf([this] {
            player->start();
            test::drainMainQueue();
        });
        const auto events = recorder->take();
        return events.empty() ? "" : events.front().substr(std::string("file ").size());
    }

    void loadQuietly(int number)
    {
        test::linesOf([&] { player->load(urlOf(number)); });
        recorder->take();
    }

    /// Renders the next frames and answers the left channel; the lines of loops
    /// wait on the main queue meanwhile.
    std::vector<float> render(std::uint32_t frames)
    {
        return test::renderOffline(*engine, format, frames, blockFrames).front();
    }

    std::shared_ptr<AVAudioUnit> gainUnit(float gain)
    {
        unit = std::make_shared<test::ScriptedUnit>();
        unit->gain = gain;
        return std::make_shared<AVAudioUnit>(unit);
    }

    const test::EnvironmentVariable soundDriver{"SDL_AUDIODRIVER", "dummy"};
    test::TemporaryFolder folder;
    AVAudioFormat format{48000.0, 2};
    std::shared_ptr<AVAudioEngine> engine = std::make_shared<AVAudioEngine>();
    std::shared_ptr<PlayerRecorder> recorder = std::make_shared<PlayerRecorder>();
    std::shared_ptr<OpenEnginePlayer> player = std::make_shared<OpenEnginePlayer>(engine);
    std::shared_ptr<test::ScriptedUnit> unit;
};
