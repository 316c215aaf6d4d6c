#pragma once

#include "Audio Engine/AUEnginePlayer.hpp"
#include "Platform/Foundation/Bundle.hpp"
#include "Platform/Foundation/DispatchQueue.hpp"
#include "Tests/Audio Engine/CapturedLines.hpp"
#include "Tests/Audio Engine/GainUnit.hpp"
#include "Tests/Audio Engine/WaveFile.hpp"
#include "Tests/Platform/Foundation/TemporaryFolder.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
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
        setenv("SDL_AUDIODRIVER", "dummy", 1);
        GTEST_FLAG_SET(death_test_style, "threadsafe");
        for (int number = 1; number <= 80; ++number)
            writeWaveFile(folder.path() / (std::to_string(number) + ".m4a"), valueOf(number),
                          fileFrames, 2);
        Bundle::setMain(std::make_shared<Bundle>(URL::fileURLWithPath(folder.path().string())));
        engine->enableManualRenderingMode(format, blockFrames);
        player->delegate.store(recorder);
    }

    ~EnginePlayerFixture() override
    {
        linesOf([this] {
            player->stop();
            drainMainQueue();
        });
        Bundle::setMain(nullptr);
    }

    static float valueOf(int number) { return static_cast<float>(number) / 128.0F; }
    std::string pathOf(int number) const
    {
        return folder.path().string() + "/" + std::to_string(number) + ".m4a";
    }
    URL urlOf(int number) const { return URL::fileURLWithPath(pathOf(number)); }

    /// The file of the last `file` event.
    std::string start()
    {
        linesOf([this] {
            player->start();
            drainMainQueue();
        });
        const auto events = recorder->take();
        return events.empty() ? "" : events.front().substr(std::string("file ").size());
    }

    void loadQuietly(int number)
    {
        linesOf([&] { player->load(urlOf(number)); });
        recorder->take();
    }

    /// Renders the next frames and answers the left channel; the lines of loops
    /// wait on the main queue meanwhile.
    std::vector<float> render(std::uint32_t frames)
    {
        std::vector<float> samples;
        while (samples.size() < frames) {
            const auto left = frames - static_cast<std::uint32_t>(samples.size());
            engine->renderOffline(std::min(left, blockFrames), buffer);
            const float *const from = buffer.floatChannelData()[0];
            samples.insert(samples.end(), from, from + buffer.frameLength());
        }
        return samples;
    }

    std::shared_ptr<AVAudioUnit> gainUnit(float gain)
    {
        unit = std::make_shared<GainUnit>(gain);
        return std::make_shared<AVAudioUnit>(unit);
    }

    TemporaryFolder folder;
    AVAudioFormat format{48000.0, 2};
    AVAudioPCMBuffer buffer{format, blockFrames};
    std::shared_ptr<AVAudioEngine> engine = std::make_shared<AVAudioEngine>();
    std::shared_ptr<PlayerRecorder> recorder = std::make_shared<PlayerRecorder>();
    std::shared_ptr<OpenEnginePlayer> player = std::make_shared<OpenEnginePlayer>(engine);
    std::shared_ptr<GainUnit> unit;
};
