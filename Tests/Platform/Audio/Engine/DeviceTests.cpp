#include "Platform/Audio/AVAudioEngine.hpp"
#include "Platform/Audio/AVAudioFile.hpp"
#include "Platform/Audio/AVAudioPlayerNode.hpp"
#include "Platform/Audio/AVAudioSession.hpp"
#include "Platform/Audio/AVAudioUnit.hpp"
#include "Platform/Audio/OutputDevice.hpp"
#include "Platform/Foundation/PlatformError.hpp"
#include "Tests/Utilities/Channels.hpp"
#include "Tests/Utilities/EnvironmentVariable.hpp"
#include "Tests/Utilities/OfflineRenderer.hpp"
#include "Tests/Utilities/ScriptedUnit.hpp"
#include "Tests/Utilities/TemporaryFolder.hpp"
#include "Tests/Utilities/WaveFile.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <thread>

namespace
{

using platform::audio::OutputDevice;
using test::Channels;

bool eventually(const std::function<bool()> &condition)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}

// SDL's real device on the driver that the test names.
class SDLDeviceTest : public testing::Test
{
protected:
    ~SDLDeviceTest() override { engine.stop(); }

    void useDriver(const std::string &driver)
    {
        driverName.set(driver);
        recordingPath.set(recording());
    }

    std::filesystem::path recording() const { return folder.path() / "recording.raw"; }

    void connect(const std::shared_ptr<AVAudioNode> &source)
    {
        engine.connect(source, engine.mainMixerNode(), std::make_shared<AVAudioFormat>(48000.0, 2));
        engine.connect(engine.mainMixerNode(), engine.outputNode(),
                       engine.outputNode()->outputFormat(0));
    }

    Channels recorded() const
    {
        std::ifstream file(recording(), std::ios::binary);
        Channels channels(2);
        std::array<float, 2> frame{};
        while (file.read(reinterpret_cast<char *>(frame.data()), sizeof frame)) {
            channels[0].push_back(frame[0]);
            channels[1].push_back(frame[1]);
        }
        return channels;
    }

    test::TemporaryFolder folder;
    const test::EnvironmentVariable driverName{"SDL_AUDIODRIVER", std::nullopt};
    const test::EnvironmentVariable recordingPath{"SDL_DISKAUDIOFILE", std::nullopt};
    AVAudioEngine engine;
    std::shared_ptr<AVAudioPlayerNode> player = std::make_shared<AVAudioPlayerNode>();
};

TEST_F(SDLDeviceTest, PlaysTheFileToTheDeviceBitForBit)
{
    useDriver("disk");
    connect(player);
    const Channels wave = test::noise(2, 9600);
    std::atomic<bool> completed{false};
    player->scheduleFile(
        std::make_shared<AVAudioFile>(test::writeWave(folder.path() / "f.wav", wave, 48000)),
        [&] { completed = true; });
    engine.start();
    EXPECT_TRUE(engine.isRunning());
    player->play();
    ASSERT_TRUE(eventually([&] { return completed.load(); }));
    // What was read ahead still has to be heard.
    ASSERT_TRUE(eventually(
        [&] { return std::filesystem::file_size(recording()) >= 8 * 2 * (9600 + 4800); }));
    engine.stop();
    const Channels heard = recorded();
    const auto begin = std::find(heard[0].begin(), heard[0].end(), wave[0][0]);
    ASSERT_NE(begin, heard[0].end());
    ASSERT_GE(heard[0].end() - begin, 9600);
    EXPECT_TRUE(std::equal(wave[0].begin(), wave[0].end(), begin));
    EXPECT_TRUE(
        std::equal(wave[1].begin(), wave[1].end(), heard[1].begin() + (begin - heard[0].begin())));
}

TEST_F(SDLDeviceTest, WhatReachesTheDeviceIsFiniteAndInRange)
{
    useDriver("disk");
    auto unit = std::make_shared<test::ScriptedUnit>();
    std::atomic<int> blocks{0};
    unit->onRender = [&blocks](const AURenderBlock &block) {
        const int number = blocks++;
        for (std::uint32_t channel = 0; channel < 2; ++channel)
            std::fill_n(block.output[channel], block.frames, number % 2 == 0 ? 3.0F : -0.5F);
        if (number % 4 == 1)
            block.output[1][block.frames / 2] = std::numeric_limits<float>::quiet_NaN();
        return true;
    };
    connect(std::make_shared<AVAudioUnit>(unit));
    testing::internal::CaptureStderr();
    engine.start();
    ASSERT_TRUE(eventually([&] { return blocks > 20; }));
    engine.stop();
    const std::string told = testing::internal::GetCapturedStderr();
    // Behind what SDL says of its disk driver, each fault stands once.
    EXPECT_THAT(told, testing::EndsWith(
                          "recording.raw].\n"
                          "The audio held samples that are no numbers; such blocks are silenced.\n"
                          "The audio is louder than the device can play; it is limited.\n"));
    const Channels heard = recorded();
    std::size_t limited = 0;
    std::size_t through = 0;
    for (const float sample : heard[1]) {
        ASSERT_TRUE(std::isfinite(sample));
        ASSERT_LE(std::abs(sample), 1.0F);
        limited += sample == 1.0F ? 1 : 0;
        through += sample == -0.5F ? 1 : 0;
    }
    EXPECT_GT(limited, 1000U);
    EXPECT_GT(through, 1000U);
}

TEST_F(SDLDeviceTest, StartFailsInTheDriversWordsWhenNoDeviceOpens)
{
    useDriver("disk");
    recordingPath.set(folder.path() / "missing" / "file.raw");
    connect(player);
    try {
        engine.start();
        FAIL() << "the engine started";
    } catch (const PlatformError &error) {
        EXPECT_NE(std::string(error.what()), "");
    }
    EXPECT_FALSE(engine.isRunning());
    // And the fault leaves nothing behind: the next start works.
    useDriver("disk");
    engine.start();
    EXPECT_TRUE(engine.isRunning());
}

TEST_F(SDLDeviceTest, ADriverThatDoesNotExistIsAnError)
{
    useDriver("no such driver");
    connect(player);
    EXPECT_THROW(engine.start(), PlatformError);
    EXPECT_THROW(AVAudioSession::sharedInstance().setActive(true, 0), PlatformError);
}

TEST_F(SDLDeviceTest, QuickStartsAndStopsLeaveNothingBehind)
{
    useDriver("dummy");
    connect(player);
    const auto threads = [] {
        return std::distance(std::filesystem::directory_iterator("/proc/self/task"), {});
    };
    const auto descriptors = [] {
        return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
    };
    engine.start();
    engine.stop();
    const auto threadsBefore = threads();
    const auto descriptorsBefore = descriptors();
    for (int time = 0; time < 50; ++time) {
        engine.start();
        engine.stop();
    }
    EXPECT_EQ(threads(), threadsBefore);
    EXPECT_EQ(descriptors(), descriptorsBefore);
}

TEST_F(SDLDeviceTest, SessionKnowsPlaybackAlone)
{
    useDriver("dummy");
    AVAudioSession &session = AVAudioSession::sharedInstance();
    session.setCategory(AVAudioSessionCategoryPlayback, AVAudioSessionModeDefault, 0);
    EXPECT_THROW(session.setCategory("AVAudioSessionCategoryRecord", AVAudioSessionModeDefault, 0),
                 PlatformError);
    EXPECT_THROW(session.setCategory(AVAudioSessionCategoryPlayback, "Loud", 0), PlatformError);
    EXPECT_THROW(session.setCategory(AVAudioSessionCategoryPlayback, AVAudioSessionModeDefault, 1),
                 PlatformError);
    EXPECT_THROW(session.setActive(true, 1), PlatformError);
    session.setActive(true, 0);
    session.setActive(true, 0);
    session.setActive(false, 0);
    session.setActive(false, 0);
}

// A device that can be made to vanish, which a real one does not on demand.
class VanishingDevice : public OutputDevice
{
public:
    struct Control {
        std::atomic<bool> alive{true};
        std::atomic<bool> opens{true};
        std::atomic<int> openings{0};
        std::atomic<int> blocks{0};
        AVAudioFormat next{48000, 2};
    };

    explicit VanishingDevice(Control &control) : control_(control) {}
    ~VanishingDevice() override { VanishingDevice::close(); }

    Obtained open(const AVAudioFormat & /*wanted*/) override
    {
        ++control_.openings;
        if (!control_.opens)
            throw PlatformError("There is no device");
        control_.alive = true;
        return {control_.next, 256};
    }

    void run(Source &source) override
    {
        runs_ = true;
        thread_ = std::thread([this, &source, channels = control_.next.channelCount()] {
            std::vector<float> block(static_cast<std::size_t>(256) * channels);
            while (runs_ && control_.alive) {
                source.renderInterleaved(block.data(), 256, channels);
                ++control_.blocks;
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            }
        });
    }

    void close() override
    {
        runs_ = false;
        if (thread_.joinable())
            thread_.join();
    }

    bool isAlive() const override { return control_.alive; }

private:
    Control &control_;
    std::atomic<bool> runs_{false};
    std::thread thread_;
};

TEST(DeviceLoss, GoesOnOnTheDefaultDeviceAndSaysSoOnce)
{
    VanishingDevice::Control control;
    AVAudioEngine engine(std::make_unique<VanishingDevice>(control));
    auto unit = std::make_shared<test::ScriptedUnit>();
    auto effect = std::make_shared<AVAudioUnit>(unit);
    engine.connect(effect, engine.mainMixerNode(), nullptr);
    engine.connect(engine.mainMixerNode(), engine.outputNode(), nullptr);
    testing::internal::CaptureStderr();
    engine.start();
    ASSERT_TRUE(eventually([&] { return control.blocks > 3; }));
    EXPECT_EQ(unit->sampleRate, 48000);
    EXPECT_FALSE(unit->offline);

    // It vanishes, there is no other for a while, then one of another format.
    control.opens = false;
    control.next = AVAudioFormat(44100, 6);
    control.alive = false;
    ASSERT_TRUE(eventually([&] { return control.openings >= 3; }));
    EXPECT_TRUE(engine.isRunning());
    const int before = control.blocks;
    control.opens = true;
    ASSERT_TRUE(eventually([&] { return control.blocks > before + 3; }));
    EXPECT_EQ(*engine.outputNode()->outputFormat(0), AVAudioFormat(44100, 6));
    engine.stop();
    EXPECT_EQ(unit->sampleRate, 44100);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "The audio device has gone away; going on with the default device.\n");
}

} // namespace
