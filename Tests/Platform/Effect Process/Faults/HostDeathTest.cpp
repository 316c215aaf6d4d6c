// The process of an effect has what is its own, and goes with its host.

#include "SabotageFixture.hpp"

#include "Platform/Effect Process/EffectProcess.hpp"
#include "Tests/Utilities/Places.hpp"

#include <array>
#include <csignal>
#include <thread>
#include <tuple>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

using testing::AnyOf;
using testing::EndsWith;
using testing::StartsWith;

namespace
{

using platform::effect::EffectProcess;

/// A process that can be waited for, whoever its parent is.
class Watched
{
public:
    explicit Watched(pid_t process)
        : process_(process), descriptor_(static_cast<int>(::syscall(SYS_pidfd_open, process, 0)))
    {
    }
    ~Watched() { ::close(descriptor_); }
    Watched(const Watched &) = delete;
    Watched &operator=(const Watched &) = delete;

    bool isThere() const { return descriptor_ >= 0; }
    bool endsWithin(std::chrono::milliseconds time) const
    {
        pollfd wait{descriptor_, POLLIN, 0};
        return ::poll(&wait, 1, static_cast<int>(time.count())) == 1;
    }
    pid_t identifier() const { return process_; }

private:
    pid_t process_;
    int descriptor_;
};

/// The program DyingHost in a process group of its own, as a shell starts it.
class DyingHost
{
public:
    DyingHost(std::string way, std::string plugin)
    {
        std::string program = test::buildPath(DYING_HOST_PROGRAM);
        std::array<int, 2> toHost{};
        std::array<int, 2> fromHost{};
        EXPECT_EQ(::pipe2(toHost.data(), O_CLOEXEC), 0);
        EXPECT_EQ(::pipe2(fromHost.data(), O_CLOEXEC), 0);
        posix_spawn_file_actions_t actions;
        ::posix_spawn_file_actions_init(&actions);
        ::posix_spawn_file_actions_adddup2(&actions, toHost[0], STDIN_FILENO);
        ::posix_spawn_file_actions_adddup2(&actions, fromHost[1], STDOUT_FILENO);
        posix_spawnattr_t attributes;
        ::posix_spawnattr_init(&attributes);
        ::posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP);
        std::array<char *, 4> arguments{program.data(), way.data(), plugin.data(), nullptr};
        EXPECT_EQ(::posix_spawn(&process_, program.c_str(), &actions, &attributes, arguments.data(),
                                environ),
                  0);
        ::posix_spawnattr_destroy(&attributes);
        ::posix_spawn_file_actions_destroy(&actions);
        ::close(toHost[0]);
        ::close(fromHost[1]);
        input_ = toHost[1];
        output_ = fromHost[0];
    }
    ~DyingHost()
    {
        goOn();
        ::close(output_);
        if (process_ > 0)
            wait();
    }
    DyingHost(const DyingHost &) = delete;
    DyingHost &operator=(const DyingHost &) = delete;

    pid_t identifier() const { return process_; }

    /// The next line that it prints.
    std::string line() const
    {
        std::string text;
        for (char c = 0; ::read(output_, &c, 1) == 1 && c != '\n';)
            text += c;
        return text;
    }

    /// What it prints first: the number of its effect's process.
    pid_t effect() const
    {
        const std::string text = line();
        return text.empty() ? -1 : std::stoi(text);
    }

    /// Its effect is watched: it may die.
    void goOn()
    {
        if (input_ >= 0)
            ::close(std::exchange(input_, -1));
    }

    /// Its status, once it has ended.
    int wait()
    {
        int status = 0;
        ::waitpid(process_, &status, 0);
        process_ = -1;
        return status;
    }

private:
    pid_t process_ = -1;
    int input_ = -1;
    int output_ = -1;
};

// Way of the host's end, and plug-in.
using Death = std::tuple<const char *, const char *>;

class HostDeathTest : public SabotageFixture, public testing::WithParamInterface<Death>
{
};

} // namespace

TEST_P(HostDeathTest, TheEffectGoesWithItsHost)
{
    const auto &[way, plugin] = GetParam();
    const ErrorLines errors; // what the dying say is not ours
    sabotage.arm(1);
    DyingHost host(way, plugin);
    const Watched effect(host.effect());
    ASSERT_TRUE(effect.isThere());
    host.goOn();
    EXPECT_EQ(sabotage.faults().size(), std::string(plugin).ends_with("loop") ? 1U : 0U);
    if (std::string(way) == "killed")
        sendSignal(host.identifier(), SIGKILL);
    host.wait();
    EXPECT_TRUE(effect.endsWithin(std::chrono::seconds(10)));
}

INSTANTIATE_TEST_SUITE_P(
    Ends, HostDeathTest,
    testing::Combine(testing::Values("killed", "quick_exit", "exit", "abort", "_exit"),
                     // Idle in its main loop, in its audio thread for ever, and in both.
                     testing::Values("urn:test:sabotage:never:none", "urn:test:sabotage:run1:loop",
                                     "urn:test:sabotage:worker:loop")),
    [](const testing::TestParamInfo<Death> &parameters) {
        std::string plugin = std::get<1>(parameters.param);
        plugin = plugin.substr(std::string("urn:test:sabotage:").size());
        plugin.replace(plugin.find(':'), 1, "_");
        return std::string(std::get<0>(parameters.param)) + "_" + plugin;
    });

using EffectIsolationTest = SabotageFixture;

TEST_F(EffectIsolationTest, InterruptingTheHostFromTheKeyboardLeavesTheEffectAlone)
{
    DyingHost host("interrupt", uri("never", "none"));
    const Watched effect(host.effect());
    ASSERT_TRUE(effect.isThere());
    host.goOn();
    // Ctrl+C goes to the whole group of the host's process.
    sendSignal(host.identifier(), SIGINT, true);
    EXPECT_EQ(host.wait(), 0);
    EXPECT_TRUE(effect.endsWithin(std::chrono::seconds(10)));
}

class HostStopTest : public SabotageFixture, public testing::WithParamInterface<bool>
{
};

TEST_P(HostStopTest, IsNoReproachToTheEffect)
{
    const bool effectIsStoppedToo = GetParam();
    const ErrorLines errors;
    DyingHost host("ask", uri("never", "none"));
    const Watched effect(host.effect());
    ASSERT_TRUE(effect.isThere());
    host.goOn();
    // Not to answer before the host is stopped.
    sendSignal(effect.identifier(), SIGSTOP);
    sendSignal(host.identifier(), SIGINT);
    EXPECT_EQ(host.line(), "asked");
    sendSignal(host.identifier(), SIGSTOP);
    if (!effectIsStoppedToo)
        sendSignal(effect.identifier(), SIGCONT);
    // Longer than the effect may take.
    std::this_thread::sleep_for(std::chrono::seconds(4));
    sendSignal(host.identifier(), SIGCONT);
    sendSignal(effect.identifier(), SIGCONT);
    EXPECT_EQ(host.line(), "answered");
    EXPECT_EQ(host.wait(), 0);
    EXPECT_TRUE(effect.endsWithin(std::chrono::seconds(10)));
    EXPECT_TRUE(errors.with("The effect '").empty());
}

INSTANTIATE_TEST_SUITE_P(Stops, HostStopTest, testing::Bool(),
                         [](const testing::TestParamInfo<bool> &isBoth) {
                             return isBoth.param ? "OfBoth" : "OfTheHostAlone";
                         });

TEST_F(EffectIsolationTest, QuittingLeavesNoFilesOfTheEffect)
{
    DyingHost host("quick_exit_with_files", uri("never", "none"));
    const Watched effect(host.effect());
    ASSERT_TRUE(effect.isThere());
    host.goOn();
    EXPECT_EQ(host.wait(), 0);
    EXPECT_TRUE(effect.endsWithin(std::chrono::seconds(10)));
    EXPECT_TRUE(std::filesystem::is_empty(scratch.path()));
}

TEST_F(EffectIsolationTest, TheNextHostRemovesTheFilesOfOneThatCouldNot)
{
    {
        DyingHost host("_exit_with_files", uri("never", "none"));
        const Watched effect(host.effect());
        ASSERT_TRUE(effect.isThere());
        host.goOn();
        EXPECT_EQ(host.wait(), 0);
        EXPECT_TRUE(effect.endsWithin(std::chrono::seconds(10)));
    }
    EXPECT_FALSE(std::filesystem::is_empty(scratch.path()));

    // Those of a host that lives stay where they are.
    const auto living = unit("never", "none");
    living->setCurrentPreset(living->factoryPresets()->at(0));
    const auto folders = [this] {
        return std::distance(std::filesystem::directory_iterator(scratch.path()),
                             std::filesystem::directory_iterator());
    };
    EXPECT_EQ(folders(), 1);
    unit("never", "none");
    EXPECT_EQ(folders(), 1);
}

TEST_F(EffectIsolationTest, TheEffectHasNoDescriptorButItsOwn)
{
    // What a host has open: this must not leak into the effect, close-on-exec or not.
    const int file = ::open("/proc/self/status", O_RDONLY);
    ASSERT_GE(file, 0);
    {
        const auto unit = SabotageFixture::unit("never", "none");
        PlayingHost host(unit, test::constant(2, 4800, 0.25F));
        ASSERT_TRUE(host.sounds());
        const auto open = openDescriptors(unit->process().processIdentifier());
        std::vector<std::string> links;
        for (const auto &[number, target] : open) {
            if (number == 0)
                EXPECT_EQ(target, "/dev/null");
            else if (number > 2)
                links.push_back(target);
        }
        // The connection, and the memory that is shared.
        EXPECT_THAT(links, testing::UnorderedElementsAre(StartsWith("socket:["),
                                                         StartsWith("/memfd:parvane effect")));
    }
    ::close(file);
}

TEST_F(EffectIsolationTest, WhatThePluginPrintsIsNotOnTheHostsStandardOutput)
{
    const auto unit = SabotageFixture::unit("never", "none");
    const std::string links =
        "/proc/" + std::to_string(unit->process().processIdentifier()) + "/fd/";
    EXPECT_EQ(std::filesystem::read_symlink(links + "1"),
              std::filesystem::read_symlink(links + "2"));
    EXPECT_EQ(std::filesystem::read_symlink(links + "2"),
              std::filesystem::read_symlink("/proc/self/fd/2"));
}

TEST_F(EffectIsolationTest, TheProgramDoesNothingByItself)
{
    const ErrorLines errors;
    for (const char *third : {" 3</dev/null", " 3<&-"}) {
        const int status = std::system((test::buildPath(EFFECT_PROGRAM) + third).c_str());
        EXPECT_EQ(WEXITSTATUS(status), 2);
    }
    EXPECT_TRUE(errors.waitFor("parvane-effect is started by parvane-host", 1));
}
