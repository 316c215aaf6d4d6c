#pragma once

#include "Bundle/SabotageFolder.hpp"
#include "ErrorLines.hpp"
#include "PlayingHost.hpp"
#include "ProcessCensus.hpp"

#include "Platform/Audio/DerivedDescription.hpp"
#include "Platform/Audio/RemoteAudioUnit.hpp"
#include "Platform/Foundation/PlatformError.hpp"
#include "Tests/Utilities/EnvironmentVariable.hpp"
#include "Tests/Utilities/Places.hpp"
#include "Tests/Utilities/TemporaryFolder.hpp"

#include <gmock/gmock.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>

/// Plug-ins that fail when they are told to, and a look at what is left of them.
class SabotageFixture : public testing::Test
{
protected:
#if defined(PARVANE_SANITIZED)
    // Its programs are slow to begin and slow to die.
    static constexpr int slowness = 10;
#else
    static constexpr int slowness = 1;
#endif

    /// What the user is promised, by a machine that is not held up.
    static constexpr std::chrono::milliseconds promptly{1000 * slowness};

    void SetUp() override
    {
        // Whatever is made once for a process is there before things are counted.
        sabotage.arm(0);
        playAndEnd();
        before = ProcessCensus::now();
    }

    void TearDown() override
    {
        EXPECT_EQ(ProcessCensus::now(), before);
        for (const auto &left : std::filesystem::recursive_directory_iterator(scratch.path()))
            ADD_FAILURE() << left.path() << " was left";
    }

    static std::string uri(const std::string &moment, const std::string &fault)
    {
        return "urn:test:sabotage:" + moment + ":" + fault;
    }

    static std::string name(const std::string &moment, const std::string &fault)
    {
        return "The effect 'Sabotage " + moment + " " + fault + "'";
    }

    static std::shared_ptr<RemoteAudioUnit> unit(const std::string &moment,
                                                 const std::string &fault,
                                                 const RemoteAudioUnit::Limits &limits = {})
    {
        return std::make_shared<RemoteAudioUnit>(AVAudioUnitComponent({}, uri(moment, fault)),
                                                 limits);
    }

    /// Limits that a test can wait for. They are the shorter of what is usual and of
    /// what an honest effect might need while the machine is busy.
    static RemoteAudioUnit::Limits shortLimits()
    {
        RemoteAudioUnit::Limits limits;
        limits.audio = std::chrono::milliseconds(400 * slowness);
        limits.request = std::chrono::milliseconds(400 * slowness);
        limits.instantiation = std::chrono::milliseconds(1000 * slowness);
        limits.work = std::chrono::milliseconds(400 * slowness);
        return limits;
    }

    void playAndEnd()
    {
        PlayingHost host(unit("never", "none"), test::constant(2, 4800, 0.25F));
        ASSERT_TRUE(host.sounds());
        host.stop();
        host.detachUnit();
    }

    const test::TemporaryFolder folder;
    const test::TemporaryFolder scratch;
    const SabotageFolder sabotage{folder.path()};
    const test::EnvironmentVariable folderVariable{"SABOTAGE_FOLDER", folder.path().string()};
    const test::EnvironmentVariable scratchVariable{"TMPDIR", scratch.path().string()};
    const test::EnvironmentVariable pathVariable{"LV2_PATH", test::buildPath(SABOTAGE_LV2_FOLDER)};
    ProcessCensus before;
};
