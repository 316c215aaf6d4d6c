#include "Audio Engine/AUEnginePlayer.hpp"

#include "Platform/Audio/OutputDevice.hpp"
#include "Platform/Foundation/PlatformError.hpp"
#include "Platform/Foundation/Print.hpp"
#include "Tests/Audio Engine/EnginePlayerFixture.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <future>
#include <optional>
#include <thread>
#include <utility>

#include <pthread.h>

namespace
{

using test::drainMainQueue;
using test::linesOf;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::FloatEq;
using ::testing::IsEmpty;
using Lines = std::vector<std::string>;

class AUEnginePlayerTest : public EnginePlayerFixture
{
};

using AUEnginePlayerDeathTest = AUEnginePlayerTest;

// Starting and stopping -------------------------------------------------------

TEST_F(AUEnginePlayerTest, StartLoadsAFileAndStartsTellingOnTheMainQueue)
{
    const Lines lines = linesOf([&] { player->start(); });
    const Lines events = recorder->take();
    ASSERT_EQ(events.size(), 1U);
    ASSERT_TRUE(events[0].starts_with("file " + folder.path().string() + "/"));
    const std::string path = events[0].substr(5);
    EXPECT_THAT(lines, ElementsAre("AUEnginePlayer: Audio file at '" + path +
                                       "' was selected for loading into the player.",
                                   "AUEnginePlayer: The player was connected to the mainMixerNode.",
                                   path, "AUEnginePlayer: Audio session was set active."));
    EXPECT_THAT(linesOfMainQueue(), ElementsAre("AUEnginePlayer: Audio engine starting."));
    EXPECT_THAT(recorder->take(), ElementsAre("playing"));
}

TEST_F(AUEnginePlayerTest, StopDeactivatesTheSessionAndTellsOnTheMainQueue)
{
    start();
    EXPECT_THAT(linesOf([&] { player->stop(); }),
                ElementsAre("AUEnginePlayer: Audio session was set active."));
    EXPECT_THAT(recorder->take(), IsEmpty());
    // The pending completion has come meanwhile; it must not count as a loop.
    platform::foundation::waitUntilSerialQueuesAreIdle();
    EXPECT_THAT(linesOfMainQueue(), ElementsAre("AUEnginePlayer: Audio engine stopping."));
    EXPECT_THAT(recorder->take(), ElementsAre("stopped"));
    EXPECT_FALSE(engine->isRunning());
}

TEST_F(AUEnginePlayerTest, StopOfAStoppedPlayerDoesNothing)
{
    EXPECT_THAT(linesOf([&] { player->stop(); }), IsEmpty());
    EXPECT_THAT(linesOfMainQueue(), IsEmpty());
    EXPECT_THAT(recorder->take(), IsEmpty());
}

TEST_F(AUEnginePlayerTest, ToggleStartsAndStopsAndAnswersWhetherItPlays)
{
    linesOf([&] {
        EXPECT_TRUE(player->toggle());
        EXPECT_TRUE(engine->isRunning());
        EXPECT_FALSE(player->toggle());
        EXPECT_FALSE(engine->isRunning());
        drainMainQueue();
    });
    const Lines events = recorder->take();
    ASSERT_EQ(events.size(), 3U);
    EXPECT_EQ(events[1], "playing");
    EXPECT_EQ(events[2], "stopped");
}

TEST_F(AUEnginePlayerTest, StartWhilePlayingBringsInANewFileAsALoop)
{
    start();
    render(100);
    const Lines lines = linesOf([&] { player->start(); });
    const std::string path = recorder->take().at(0).substr(5);
    EXPECT_THAT(lines, ElementsAre("AUEnginePlayer: Audio file at '" + path +
                                       "' was selected for loading into the player.",
                                   "AUEnginePlayer: The player was connected to the mainMixerNode.",
                                   path));
    platform::foundation::waitUntilSerialQueuesAreIdle();
    EXPECT_THAT(linesOfMainQueue(),
                ElementsAre("AUEnginePlayer: Current audio file '" + path + "' looped: 1."));
    EXPECT_THAT(recorder->take(), ElementsAre("loop 0"));
    const int number = std::stoi(path.substr(folder.path().string().size() + 1));
    EXPECT_THAT(render(500), Each(FloatEq(valueOf(number))));
}

TEST_F(AUEnginePlayerTest, WorksWithoutADelegate)
{
    player->delegate.store(nullptr);
    linesOf([&] {
        player->start();
        render(3 * fileFrames);
        player->stop();
        drainMainQueue();
    });
    EXPECT_THAT(recorder->take(), IsEmpty());
}

TEST_F(AUEnginePlayerTest, KeepsItsDelegateAlive)
{
    const std::weak_ptr<PlayerRecorder> delegate = recorder;
    recorder.reset();
    EXPECT_FALSE(delegate.expired());
    player->delegate.store(nullptr);
    EXPECT_TRUE(delegate.expired());
}

/// Notes the order of the calls and the thread of each.
class TracingPlayer : public OpenEnginePlayer
{
public:
    using OpenEnginePlayer::OpenEnginePlayer;

    void randomizeFile() override
    {
        note("randomizeFile");
        OpenEnginePlayer::randomizeFile();
    }
    void load(const std::optional<URL> &url) override
    {
        note("load");
        OpenEnginePlayer::load(url);
    }
    void setSessionActive(bool active) override
    {
        note(active ? "setSessionActive true" : "setSessionActive false");
        OpenEnginePlayer::setSessionActive(active);
    }
    void startPlayingInternal() override
    {
        note("startPlayingInternal");
        OpenEnginePlayer::startPlayingInternal();
    }
    void stopPlayingInternal() override
    {
        note("stopPlayingInternal");
        OpenEnginePlayer::stopPlayingInternal();
    }
    void scheduleEffectLoop() override
    {
        note("scheduleEffectLoop");
        OpenEnginePlayer::scheduleEffectLoop();
    }
    void start() override
    {
        note("start");
        OpenEnginePlayer::start();
    }
    void stop() override
    {
        note("stop");
        OpenEnginePlayer::stop();
    }
    void disconnect() override
    {
        note("disconnect");
        OpenEnginePlayer::disconnect();
    }
    void connect(const std::shared_ptr<AVAudioUnit> &avAudioUnit,
                 const std::function<void()> &completion) override
    {
        note("connect");
        OpenEnginePlayer::connect(avAudioUnit, completion);
    }
    void resetAudioLoop() override
    {
        note("resetAudioLoop");
        OpenEnginePlayer::resetAudioLoop();
    }

    Lines calls;

private:
    void note(const std::string &call)
    {
        std::array<char, 16> thread{};
        pthread_getname_np(pthread_self(), thread.data(), thread.size());
        const bool onMain = platform::foundation::isMainThread();
        calls.push_back(call + (onMain ? " on main" : std::string(" on ") + thread.data()));
    }
};

TEST_F(AUEnginePlayerTest, EveryStepCanBeOverriddenAndRunsOnItsThread)
{
    const auto tracing = std::make_shared<TracingPlayer>(engine);
    linesOf([&] {
        tracing->toggle();
        tracing->finalize();
        drainMainQueue();
    });
    EXPECT_THAT(
        tracing->calls,
        ElementsAre("start on main", "randomizeFile on main", "load on main",
                    "startPlayingInternal on stateQueue", "setSessionActive true on stateQueue",
                    "scheduleEffectLoop on stateQueue", "stop on main",
                    "stopPlayingInternal on stateQueue", "setSessionActive false on stateQueue",
                    "disconnect on main", "connect on main", "resetAudioLoop on main"));
}

// Choosing and loading files --------------------------------------------------

/// Notes which files were chosen instead of opening them.
class ChoosingPlayer : public OpenEnginePlayer
{
public:
    using OpenEnginePlayer::OpenEnginePlayer;
    void load(const std::optional<URL> &url) override
    {
        ++timesChosen.at(static_cast<std::size_t>(std::stoi(url.value().lastPathComponent())));
    }
    std::array<int, 81> timesChosen{};
};

TEST_F(AUEnginePlayerTest, ChoosesEachOfTheEightyFilesEquallyOften)
{
    constexpr int draws = 8000;
    const auto choosing = std::make_shared<ChoosingPlayer>(engine);
    linesOf([&] {
        for (int i = 0; i < draws; ++i)
            choosing->randomizeFile();
    });
    EXPECT_EQ(choosing->timesChosen[0], 0);
    double chiSquare = 0;
    for (std::size_t number = 1; number <= 80; ++number) {
        const double excess = choosing->timesChosen.at(number) - draws / 80.0;
        chiSquare += excess * excess / (draws / 80.0);
    }
    // With 79 degrees of freedom chance exceeds 180 once in a thousand million.
    EXPECT_LT(chiSquare, 180);
}

TEST_F(AUEnginePlayerTest, RandomizingPrintsThePathAfterLoading)
{
    const Lines lines = linesOf([&] { player->randomizeFile(); });
    const std::string path = recorder->take().at(0).substr(5);
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_EQ(lines[2], path);
}

TEST_F(AUEnginePlayerDeathTest, AMissingDemonstrationFileIsFatalBeforeItsLineIsPrinted)
{
    Bundle::setMain(std::make_shared<Bundle>(URL::fileURLWithPath("/no/such/folder")));
    EXPECT_DEATH(
        {
            // What would come before the end is to be seen on standard error.
            std::fflush(stdout); // the test program's own words
            dup2(STDERR_FILENO, STDOUT_FILENO);
            player->randomizeFile();
        },
        "^Fatal error: Unexpectedly found nil while unwrapping an Optional value\n$");
}

TEST_F(AUEnginePlayerDeathTest, LoadingNoLocationIsFatal)
{
    EXPECT_DEATH(player->load(std::nullopt),
                 "^Fatal error: Unexpectedly found nil while unwrapping an Optional value\n");
}

TEST_F(AUEnginePlayerTest, LoadConnectsThePlayerToTheMixer)
{
    const Lines lines = linesOf([&] { player->load(urlOf(7)); });
    EXPECT_THAT(lines,
                ElementsAre("AUEnginePlayer: Audio file at '" + pathOf(7) +
                                "' was selected for loading into the player.",
                            "AUEnginePlayer: The player was connected to the mainMixerNode."));
    EXPECT_THAT(recorder->take(), ElementsAre("file " + pathOf(7)));
}

TEST_F(AUEnginePlayerTest, AFileThatDoesNotOpenKeepsTheOldOneUnderTheNewLocation)
{
    start();
    loadQuietly(9);
    platform::foundation::waitUntilSerialQueuesAreIdle();
    linesOfMainQueue();
    recorder->take();

    const std::string broken = folder.path().string() + "/broken file.m4a";
    std::ofstream(broken) << "this is no audio";
    const URL url = URL::fileURLWithPath(broken);
    std::string reason;
    try {
        const AVAudioFile file(url);
    } catch (const PlatformError &error) {
        reason = error.what();
    }
    ASSERT_NE(reason, "");
    EXPECT_THAT(linesOf([&] { player->load(url); }),
                ElementsAre("AUEnginePlayer: Audio file at '" + broken +
                                "' was selected for loading into the player.",
                            "AUEnginePlayer::ERROR: Could not create AVAudioFile instance for URL "
                            "'Optional(" +
                                url.absoluteString() + ")'. error: " + reason + "."));
    EXPECT_THAT(recorder->take(), IsEmpty());

    EXPECT_THAT(render(fileFrames), Each(FloatEq(valueOf(9))));
    platform::foundation::waitUntilSerialQueuesAreIdle();
    const Lines loops = linesOfMainQueue();
    ASSERT_FALSE(loops.empty());
    EXPECT_EQ(loops[0], "AUEnginePlayer: Current audio file '" + broken + "' looped: 2.");
}

// Looping ---------------------------------------------------------------------

TEST_F(AUEnginePlayerTest, LoopsWithoutAGapCountingForTheDelegateAndForTheLog)
{
    const std::string path = start();
    const int number = std::stoi(path.substr(folder.path().string().size() + 1));
    EXPECT_THAT(render(10 * fileFrames), Each(FloatEq(valueOf(number))));
    platform::foundation::waitUntilSerialQueuesAreIdle();
    const Lines lines = linesOfMainQueue();
    const Lines events = recorder->take();
    ASSERT_GE(lines.size(), 9U);
    ASSERT_EQ(events.size(), lines.size());
    for (std::size_t i = 0; i < lines.size(); ++i) {
        EXPECT_EQ(lines[i], "AUEnginePlayer: Current audio file '" + path +
                                "' looped: " + std::to_string(i + 1) + ".");
        EXPECT_EQ(events[i], "loop " + std::to_string(i));
    }
}

TEST_F(AUEnginePlayerTest, TheLoopCountIsNeverReset)
{
    start();
    render(2 * fileFrames);
    linesOf([&] {
        player->stop();
        drainMainQueue();
    });
    const Lines before = recorder->take();
    start();
    render(2 * fileFrames);
    platform::foundation::waitUntilSerialQueuesAreIdle();
    linesOfMainQueue();
    const auto isLoop = [](const std::string &event) { return event.starts_with("loop"); };
    const auto loops = std::count_if(before.begin(), before.end(), isLoop);
    const Lines after = recorder->take();
    const auto first = std::find_if(after.begin(), after.end(), isLoop);
    ASSERT_NE(first, after.end());
    EXPECT_EQ(*first, "loop " + std::to_string(loops));
}

TEST_F(AUEnginePlayerTest, QuickStopAndStartLeaveOneSchedule)
{
    for (int i = 0; i < 20; ++i) {
        linesOf([&] {
            player->start();
            player->stop();
        });
    }
    platform::foundation::waitUntilSerialQueuesAreIdle();
    linesOfMainQueue();
    recorder->take();
    const std::string path = start();
    render(3 * fileFrames);
    linesOf([&] {
        player->stop();
        drainMainQueue();
    });
    // Two schedules at once would loop about twice as often. What is read ahead is
    // less than a file.
    const Lines events = recorder->take();
    EXPECT_LE(events.size(), 3U + 1U + 1U); // loops, one more, stopped
}

TEST_F(AUEnginePlayerTest, SchedulingWithoutAFilePrintsAnError)
{
    EXPECT_THAT(linesOf([&] { player->scheduleEffectLoop(); }),
                ElementsAre("AUEnginePlayer::ERROR: `file` parameter must not be nil."));
}

// The effect ------------------------------------------------------------------

TEST_F(AUEnginePlayerTest, ConnectingBeforeAnyFileLeavesTheEffectToTheFirstLoad)
{
    const auto effect = gainUnit(0.5F);
    bool completed = false;
    EXPECT_THAT(linesOf([&] { player->connect(effect, [&] { completed = true; }); }),
                ElementsAre("AUEnginePlayer: A new audio unit will be connected.",
                            "AUEnginePlayer: Audio unit was attached.",
                            "AUEnginePlayer::ERROR: There was a problem with the file processing "
                            "format or the file is nil (yet)."));
    EXPECT_TRUE(completed);
    EXPECT_THAT(
        linesOf([&] { player->load(urlOf(4)); }),
        ElementsAre("AUEnginePlayer: Audio file at '" + pathOf(4) +
                        "' was selected for loading into the player.",
                    "AUEnginePlayer: Player was (temporarily) disconnecting from the main mixer.",
                    "AUEnginePlayer: Audio unit was (temporarily) disconnecting from the player.",
                    "2", "AUEnginePlayer: Audio unit re-connecting to the player.",
                    "AUEnginePlayer: Audio unit re-connectingto the main mixer."));
}

TEST_F(AUEnginePlayerTest, LoadingThroughTheEffectPrintsTheFilesChannelCount)
{
    const std::string mono = folder.path().string() + "/mono.m4a";
    test::writeWave(mono, test::constant(1, fileFrames, 0.25F), 48000);
    linesOf([&] { player->connect(gainUnit(1)); });
    EXPECT_EQ(linesOf([&] { player->load(URL::fileURLWithPath(mono)); }).at(3), "1");
}

TEST_F(AUEnginePlayerTest, PlaysThroughTheEffect)
{
    linesOf([&] { player->connect(gainUnit(0.5F)); });
    const std::string path = start();
    const int number = std::stoi(path.substr(folder.path().string().size() + 1));
    EXPECT_THAT(render(3 * fileFrames), Each(FloatEq(valueOf(number) * 0.5F)));
}

TEST_F(AUEnginePlayerTest, ConnectingWhilePlayingGoesOnThroughTheEffect)
{
    const std::string path = start();
    const int number = std::stoi(path.substr(folder.path().string().size() + 1));
    render(fileFrames);
    linesOfMainQueue();
    bool completed = false;
    const auto effect = gainUnit(0.25F);
    EXPECT_THAT(linesOf([&] { player->connect(effect, [&] { completed = true; }); }),
                ElementsAre("AUEnginePlayer: A new audio unit will be connected.",
                            "AUEnginePlayer: Audio unit was attached.",
                            "AUEnginePlayer: Audio Unit was connected to the player.",
                            "AUEnginePlayer: Audio Unit was connected to the main mixer."));
    EXPECT_TRUE(completed);
    EXPECT_THAT(render(fileFrames), Each(FloatEq(valueOf(number) * 0.25F)));
}

TEST_F(AUEnginePlayerTest, AnotherEffectReplacesTheOneBefore)
{
    loadQuietly(3);
    linesOf([&] { player->connect(gainUnit(0.5F)); });
    const auto first = unit;
    EXPECT_THAT(linesOf([&] { player->connect(gainUnit(0.25F)); }),
                ElementsAre("AUEnginePlayer: A new audio unit will be connected.",
                            "AUEnginePlayer: Audio unit was disconnecting and detaching.",
                            "AUEnginePlayer: Audio unit was attached.",
                            "AUEnginePlayer: Audio Unit was connected to the player.",
                            "AUEnginePlayer: Audio Unit was connected to the main mixer."));
    start();
    render(10);
    EXPECT_FALSE(first->renderResourcesAllocated());
    EXPECT_TRUE(unit->renderResourcesAllocated());
}

TEST_F(AUEnginePlayerTest, ConnectingNoneWithoutAnEffectResetsThePlayerAndCompletesFirst)
{
    loadQuietly(3);
    EXPECT_THAT(
        linesOf([&] { player->connect(nullptr, [] { print("completed"); }); }),
        ElementsAre(
            "AUEnginePlayer::WARNING: Function connect() with argument 'nil' causes disconnection.",
            "completed", "AUEnginePlayer: The audio unit was set to 'nil'."));
}

TEST_F(AUEnginePlayerTest, ConnectingNoneWithoutAFileReportsTheMissingFormat)
{
    EXPECT_THAT(
        linesOf([&] { player->connect(nullptr); }),
        ElementsAre(
            "AUEnginePlayer::WARNING: Function connect() with argument 'nil' causes disconnection.",
            "AUEnginePlayer: ERROR: There is a problem with the audio file processing format.",
            "AUEnginePlayer: The audio unit was set to 'nil'."));
}

TEST_F(AUEnginePlayerTest, DisconnectTakesTheEffectOutWhilePlaying)
{
    linesOf([&] { player->connect(gainUnit(0.5F)); });
    const std::string path = start();
    const int number = std::stoi(path.substr(folder.path().string().size() + 1));
    render(fileFrames);
    linesOfMainQueue();
    EXPECT_THAT(
        linesOf([&] { player->disconnect(); }),
        ElementsAre(
            "AUEnginePlayer::WARNING: Function connect() with argument 'nil' causes disconnection.",
            "AUEnginePlayer: Audio unit was disconnecting and detaching.",
            "AUEnginePlayer: Performed audio unit disconnection.",
            "AUEnginePlayer: The audio unit was set to 'nil'."));
    EXPECT_THAT(render(fileFrames), Each(FloatEq(valueOf(number))));
    EXPECT_FALSE(unit->renderResourcesAllocated());
}

TEST_F(AUEnginePlayerTest, FinalizeStopsThenDisconnects)
{
    linesOf([&] { player->connect(gainUnit(0.5F)); });
    start();
    EXPECT_THAT(
        linesOf([&] { player->finalize(); }),
        ElementsAre(
            "AUEnginePlayer: Audio session was set active.",
            "AUEnginePlayer::WARNING: Function connect() with argument 'nil' causes disconnection.",
            "AUEnginePlayer: Audio unit was disconnecting and detaching.",
            "AUEnginePlayer: Performed audio unit disconnection.",
            "AUEnginePlayer: The audio unit was set to 'nil'."));
    EXPECT_THAT(linesOfMainQueue(), ElementsAre("AUEnginePlayer: Audio engine stopping."));
}

TEST_F(AUEnginePlayerTest, ResettingWithoutAFilePrintsAnError)
{
    EXPECT_THAT(
        linesOf([&] { player->resetAudioLoop(); }),
        ElementsAre(
            "AUEnginePlayer: ERROR: There is a problem with the audio file processing format."));
}

// MIDI ------------------------------------------------------------------------

class MIDITest : public AUEnginePlayerTest
{
protected:
    MIDITest()
    {
        const auto effect = gainUnit(1);
        unit->midiOutputs = {"out"};
        lines = linesOf([&] { player->connect(effect); });
    }

    /// The lines of the main queue after the unit emitted `bytes` on another thread.
    Lines emit(std::int64_t time, std::vector<std::uint8_t> bytes)
    {
        const Lines before = linesOf([&] {
            std::thread([&] {
                EXPECT_EQ(
                    unit->emitMIDI(time, 5, static_cast<std::int64_t>(bytes.size()), bytes.data()),
                    0);
                // The bytes are the unit's own again.
                std::fill(bytes.begin(), bytes.end(), std::uint8_t{255});
            }).join();
        });
        EXPECT_THAT(before, IsEmpty());
        return linesOfMainQueue();
    }

    Lines lines;
};

TEST_F(MIDITest, AUnitThatReportsOutputsGetsTheHandler)
{
    ASSERT_EQ(lines.size(), 4U);
    EXPECT_EQ(lines[1],
              "AUEnginePlayer: The audio unit reports MIDI output names. Assigning a handling "
              "block.");
    EXPECT_EQ(lines[2], "AUEnginePlayer: Audio unit was attached.");
}

TEST_F(AUEnginePlayerTest, AUnitWithoutMIDIOutputsGetsNoHandler)
{
    linesOf([&] { player->connect(gainUnit(1)); });
    EXPECT_FALSE(unit->emitMIDI);
}

TEST_F(MIDITest, AnEventOfThreeBytesIsOneLine)
{
    EXPECT_THAT(emit(123456789012, {144, 60, 127}),
                ElementsAre("AUEnginePlayer: MIDI event from audio unit at: 123456789012, data: "
                            "144, 60, 127"));
}

TEST_F(MIDITest, AShorterEventIsFilledUpWithZeros)
{
    const std::string warning = "AUEnginePlayer::WARNING: The MIDI data length is not as expected.";
    EXPECT_THAT(
        emit(-1, {192, 5}),
        ElementsAre(warning, "AUEnginePlayer: MIDI event from audio unit at: -1, data: 192, 5, 0"));
    EXPECT_THAT(
        emit(0, {}),
        ElementsAre(warning, "AUEnginePlayer: MIDI event from audio unit at: 0, data: 0, 0, 0"));
}

TEST_F(MIDITest, ALongerEventIsCut)
{
    EXPECT_THAT(emit(1, {240, 1, 2, 3, 247}),
                ElementsAre("AUEnginePlayer::WARNING: The MIDI data length is not as expected.",
                            "AUEnginePlayer: MIDI event from audio unit at: 1, data: 240, 1, 2"));
}

// Faults that end the process -------------------------------------------------

TEST_F(AUEnginePlayerDeathTest, AMissingAudioDriverIsFatal)
{
    soundDriver.set("no such driver");
    EXPECT_DEATH(player->setSessionActive(true),
                 "^Fatal error: AUEnginePlayer::ERROR: Could not set audio session active true. "
                 "system error: .+\\.\n");
}

/// A device that does not open: the only way to a fault at that moment.
class ClosedDevice : public platform::audio::OutputDevice
{
public:
    Obtained open(const AVAudioFormat & /*wanted*/) override
    {
        throw PlatformError("the device is closed today");
    }
    void run(Source & /*source*/) override {}
    void close() override {}
    bool isAlive() const override { return false; }
};

TEST_F(AUEnginePlayerDeathTest, AnEngineThatDoesNotStartIsFatal)
{
    const auto closed = std::make_shared<OpenEnginePlayer>(
        std::make_shared<AVAudioEngine>(std::make_unique<ClosedDevice>()));
    EXPECT_DEATH(closed->start(), "Fatal error: AUEnginePlayer::ERROR: Could not start audio "
                                  "engine. error: the device is closed today\\.\n");
}

// Threads and lifetime --------------------------------------------------------

TEST_F(AUEnginePlayerTest, MayGoWhilePlaying)
{
    linesOf([&] {
        player->connect(gainUnit(0.5F));
        player->start();
    });
    render(fileFrames);
    const std::weak_ptr<AUEnginePlayer> gone = player;
    player = std::make_shared<OpenEnginePlayer>(engine);
    // Only what waits on the main queue keeps it.
    platform::foundation::waitUntilSerialQueuesAreIdle();
    linesOfMainQueue();
    EXPECT_TRUE(gone.expired());
    engine->stop();
}

/// Has a file loaded by another thread in the middle of taking the effect out.
class InterruptedPlayer : public OpenEnginePlayer
{
public:
    using OpenEnginePlayer::OpenEnginePlayer;

    void loadWhileResetting(const URL &url) { url_ = url; }
    /// Waits until the file is loaded.
    void finishLoading() { loading_.get(); }

    void resetAudioLoop() override
    {
        OpenEnginePlayer::resetAudioLoop();
        if (!url_)
            return;
        loading_ = std::async(std::launch::async,
                              [this, url = *std::exchange(url_, std::nullopt)] { load(url); });
        // Time to do harm; who is kept waiting takes all of it.
        loading_.wait_for(std::chrono::milliseconds(300));
    }

private:
    std::optional<URL> url_;
    std::future<void> loading_;
};

TEST_F(AUEnginePlayerTest, AFileThatIsLoadedWhileTheEffectGoesIsHeard)
{
    const auto interrupted = std::make_shared<InterruptedPlayer>(engine);
    player = interrupted;
    loadQuietly(3);
    linesOf([&] {
        player->connect(gainUnit(0.5F));
        interrupted->start();
        interrupted->loadWhileResetting(urlOf(5));
        interrupted->disconnect();
        interrupted->finishLoading();
    });
    render(2 * fileFrames);
    EXPECT_THAT(render(fileFrames), Each(FloatEq(valueOf(5))));
    EXPECT_FALSE(unit->renderResourcesAllocated());
}

TEST_F(AUEnginePlayerTest, TransportAndConnectionsMayComeFromDifferentThreads)
{
    const auto live = std::make_shared<OpenEnginePlayer>();
    live->delegate.store(recorder);
    std::atomic<bool> done = false;
    linesOf([&] {
        std::thread connector([&] {
            while (!done) {
                live->connect(
                    std::make_shared<AVAudioUnit>(std::make_shared<test::ScriptedUnit>()));
                live->disconnect();
            }
        });
        for (int i = 0; i < 30; ++i)
            live->toggle();
        done = true;
        connector.join();
        live->finalize();
        drainMainQueue();
    });
    EXPECT_EQ(recorder->take().back(), "stopped");
}

} // namespace
