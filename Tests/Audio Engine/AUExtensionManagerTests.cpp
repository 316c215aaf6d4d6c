#include "Audio Engine/AUExtensionManager.hpp"

#include "Platform/Foundation/ProcessInfo.hpp"
#include "Platform/Foundation/RunLoop.hpp"
#include "Tests/Audio Engine/EnginePlayerFixture.hpp"
#include "Tests/Utilities/StandInEffect.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace
{

using test::drainMainQueue;
using test::linesOf;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Lines = std::vector<std::string>;

/// Waits for what the manager tells, which it does on a thread of the platform's.
class ManagerRecorder : public AUExtensionManagerDelegate
{
public:
    void onFoundComponent(const std::shared_ptr<AVAudioUnit> &unit) override
    {
        EXPECT_FALSE(platform::foundation::isMainThread());
        const std::lock_guard lock(mutex_);
        units_.push_back(unit);
    }
    void onEngineInitialized() override
    {
        EXPECT_FALSE(platform::foundation::isMainThread());
        const std::lock_guard lock(mutex_);
        initialized_ = true;
        changed_.notify_all();
    }

    bool awaitInitialized()
    {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, std::chrono::seconds(60), [this] { return initialized_; });
    }
    bool isInitialized()
    {
        const std::lock_guard lock(mutex_);
        return initialized_;
    }
    std::vector<std::shared_ptr<AVAudioUnit>> units()
    {
        const std::lock_guard lock(mutex_);
        return units_;
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    bool initialized_ = false;
    std::vector<std::shared_ptr<AVAudioUnit>> units_;
};

/// Lets the tests call the steps of the search and fill the slot for the unit.
class OpenExtensionManager : public AUExtensionManager
{
public:
    using AUExtensionManager::_availableAudioUnits;
    using AUExtensionManager::audioUnit;
    using AUExtensionManager::AUExtensionManager;
    using AUExtensionManager::componentDescription;
    using AUExtensionManager::loadForRelease;
    using AUExtensionManager::log;
    using AUExtensionManager::onFoundComponent;
    using AUExtensionManager::selectAudioUnitWithComponentDescription;
    using AUExtensionManager::selectfoundComponent;
};

const std::string banner =
    "NOTE: WE ARE IN AUDIO UNIT RELEASE MODE. ENSURE THE STORYBOARD CONNECTIONS ARE VALID!";

class AUExtensionManagerTest : public ::testing::Test
{
protected:
    AUExtensionManagerTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }

    /// The lines until `expected` of them have come; the search runs on other threads.
    static Lines awaitLines(const test::PrintedLines &printed, std::size_t expected)
    {
        test::serveMainThreadUntil([&] { return printed.lines().size() >= expected; });
        return printed.lines();
    }

    static Lines processLines()
    {
        const ProcessInfo &info = ProcessInfo::processInfo();
        return {"",
                "Process Name: " + info.processName() +
                    " PID: " + std::to_string(info.processIdentifier()),
                ""};
    }

    const test::EnvironmentVariable soundDriver{"SDL_AUDIODRIVER", "dummy"};
    const test::StandInEffect effect;
    std::shared_ptr<ManagerRecorder> recorder = std::make_shared<ManagerRecorder>();
    std::shared_ptr<OpenExtensionManager> manager =
        std::make_shared<OpenExtensionManager>(recorder);
};

using AUExtensionManagerDeathTest = AUExtensionManagerTest;

TEST_F(AUExtensionManagerTest, FindsInstantiatesAndConnectsTheEffect)
{
    std::shared_ptr<AUExtensionManager> created;
    const Lines lines = linesOf([&] {
        created = AUExtensionManager::create(recorder);
        EXPECT_TRUE(recorder->awaitInitialized());
    });
    const Lines process = processLines();
    EXPECT_THAT(
        lines,
        ElementsAre(
            banner, "AUExtensionManager: Loaded component has following properties.", process[0],
            process[1], process[2], "AUExtension (", "type: aumf", "subtype: zvqr",
            "manufacturer: QRVX", "flags: 0x00000002", ")",
            "AUExtensionManager: Audio unit was found, making connections now ...",
            "AUEnginePlayer: A new audio unit will be connected.",
            "AUEnginePlayer: The audio unit reports MIDI output names. Assigning a handling block.",
            "AUEnginePlayer: Audio unit was attached.",
            "AUEnginePlayer::ERROR: There was a problem with the file processing "
            "format or the file is nil (yet).",
            "AUExtensionManager: Performed audio unit connection.",
            "WARNING: Audio unit is nil (yet?)."));
    ASSERT_EQ(recorder->units().size(), 1U);
    EXPECT_EQ(recorder->units()[0]->auAudioUnit()->contextName(), "running in distribution host");
    EXPECT_THAT(created->presets(), IsEmpty());
    EXPECT_FALSE(created->currentPreset());
    EXPECT_FALSE(created->viewController);
}

TEST_F(AUExtensionManagerTest, KeepsWhatItFound)
{
    linesOf([&] {
        manager->loadForRelease();
        EXPECT_TRUE(recorder->awaitInitialized());
    });
    ASSERT_EQ(manager->_availableAudioUnits.size(), 1U);
    EXPECT_EQ(manager->_availableAudioUnits[0].pluginURI(), "urn:qrvx:parvane");
}

TEST_F(AUExtensionManagerTest, WithoutAMatchPrintsOneLineAndTellsNobody)
{
    manager->componentDescription.componentSubType = platform::audio::fourCharacterCode("none");
    const test::PrintedLines printed;
    manager->loadForRelease();
    EXPECT_THAT(awaitLines(printed, 2),
                ElementsAre(banner, "ERROR: There were no audio units found."));
    EXPECT_THAT(recorder->units(), IsEmpty());
    EXPECT_FALSE(recorder->isInitialized());
}

TEST_F(AUExtensionManagerTest, AMissingComponentOrDescriptionIsOneLine)
{
    const auto never = [] { ADD_FAILURE() << "completed"; };
    EXPECT_THAT(linesOf([&] { manager->selectfoundComponent(std::nullopt, never); }),
                ElementsAre("ERROR: Component is nil."));
    EXPECT_THAT(
        linesOf([&] { manager->selectAudioUnitWithComponentDescription(std::nullopt, never); }),
        ElementsAre("Error: Component description is nil."));
}

TEST_F(AUExtensionManagerTest, AUnitThatIsNotToBeHadIsTwoLines)
{
    const test::PrintedLines printed;
    manager->selectAudioUnitWithComponentDescription(
        AudioComponentDescription{.componentType = 1,
                                  .componentSubType = 4294967295,
                                  .componentManufacturer = 3,
                                  .componentFlags = 4,
                                  .componentFlagsMask = 5},
        [] { ADD_FAILURE() << "completed"; });
    EXPECT_THAT(awaitLines(printed, 2),
                ElementsAre("AudioComponentDescription(componentType: 1, componentSubType: "
                            "4294967295, componentManufacturer: 3, componentFlags: 4, "
                            "componentFlagsMask: 5)",
                            "Error: Could not instantiate audio unit."));
    EXPECT_THAT(recorder->units(), IsEmpty());
}

TEST_F(AUExtensionManagerTest, LogsTheProcessAndTheRegisteredDescription)
{
    const Lines process = processLines();
    EXPECT_THAT(linesOf([&] {
                    manager->log({.componentType = platform::audio::fourCharacterCode("aufx"),
                                  .componentSubType = 0x41424380,
                                  .componentManufacturer = 0x20202020,
                                  .componentFlags = 0xDEADBEEF});
                }),
                ElementsAre(process[0], process[1], process[2], "AUExtension (", "type: aufx",
                            "subtype: ABC\xC3\x84", "manufacturer:     ", "flags: 0xdeadbeef",
                            ")"));
    // The alternate form adds no prefix to zero.
    EXPECT_EQ(linesOf([&] { manager->log({}); }).at(7), "flags: 0000000000");
}

TEST_F(AUExtensionManagerTest, TheEndOfLoadingWarnsAndTells)
{
    const Lines lines = linesOf([&] { std::thread([&] { manager->onFoundComponent(); }).join(); });
    EXPECT_THAT(lines, ElementsAre("WARNING: Audio unit is nil (yet?)."));
    EXPECT_TRUE(recorder->isInitialized());
}

TEST_F(AUExtensionManagerTest, TheEndOfLoadingNeedsNoDelegate)
{
    const auto lonely = std::make_shared<OpenExtensionManager>(nullptr);
    EXPECT_THAT(linesOf([&] { lonely->onFoundComponent(); }),
                ElementsAre("WARNING: Audio unit is nil (yet?)."));
}

TEST_F(AUExtensionManagerDeathTest, AMissingDelegateAtTheConnectionIsFatal)
{
    EXPECT_DEATH(
        {
            AUExtensionManager::create(nullptr);
            RunLoop::main().runUntil([] { return false; }, 60);
        },
        "Fatal error: Unexpectedly found nil while unwrapping an Optional value");
}

TEST_F(AUExtensionManagerTest, WithAUnitItsPresetsAreReached)
{
    const auto unit = std::make_shared<test::ScriptedUnit>();
    manager->audioUnit = unit;
    EXPECT_THAT(manager->presets(), IsEmpty());
    EXPECT_FALSE(manager->currentPreset());
    EXPECT_THAT(linesOf([&] { manager->connectParametersToControls(); }), IsEmpty());

    unit->knownPresets = {std::make_shared<AUAudioUnitPreset>(0, "Soft"),
                          std::make_shared<AUAudioUnitPreset>(1, "Loud")};
    const auto presets = manager->presets();
    ASSERT_EQ(presets.size(), 2U);
    EXPECT_EQ(presets[0].number(), 0);
    EXPECT_EQ(presets[0].name(), "Soft");
    EXPECT_EQ(presets[1].number(), 1);
    EXPECT_EQ(presets[1].name(), "Loud");

    manager->setCurrentPreset(presets[1]);
    EXPECT_EQ(unit->current, unit->knownPresets->at(1));
    EXPECT_EQ(manager->currentPreset()->name(), "Loud");
    manager->setCurrentPreset(std::nullopt);
    EXPECT_EQ(unit->current, nullptr);
    EXPECT_FALSE(manager->currentPreset());
}

TEST_F(AUExtensionManagerTest, WithoutAUnitSettingAPresetChangesNothing)
{
    const auto unit = std::make_shared<test::ScriptedUnit>();
    unit->knownPresets = {std::make_shared<AUAudioUnitPreset>(0, "Soft")};
    manager->audioUnit = unit;
    const auto preset = manager->presets().at(0);
    manager->audioUnit = nullptr;
    manager->setCurrentPreset(preset);
    EXPECT_FALSE(manager->currentPreset());
    EXPECT_EQ(unit->current, nullptr);
}

TEST_F(AUExtensionManagerTest, OwnsOnePlayer)
{
    ASSERT_TRUE(manager->auEngine());
    EXPECT_EQ(manager->auEngine(), manager->auEngine());
}

class ManagedTransportTest : public EnginePlayerFixture
{
};

TEST_F(ManagedTransportTest, ForwardsTheTransportAndTheEnd)
{
    const auto manager = std::make_shared<AUExtensionManager>(nullptr, player);
    linesOf([&] {
        EXPECT_TRUE(manager->togglePlayback());
        EXPECT_FALSE(manager->togglePlayback());
        EXPECT_TRUE(manager->togglePlayback());
        drainMainQueue();
    });
    EXPECT_THAT(
        linesOf([&] { manager->cleanup(); }),
        ElementsAre(
            "AUEnginePlayer: Audio session was set active.",
            "AUEnginePlayer::WARNING: Function connect() with argument 'nil' causes disconnection.",
            "AUEnginePlayer: Performed audio unit disconnection.",
            "AUEnginePlayer: The audio unit was set to 'nil'."));
    EXPECT_FALSE(engine->isRunning());
}

} // namespace
