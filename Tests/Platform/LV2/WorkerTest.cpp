#include "HeldPlugin.hpp"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

using namespace testsupport;
using platform::lv2::Instance;

namespace
{

enum Report { accepted, refused, answers, ends, overlaps, restoreAnswers, lostAnswers };

/// Runs blocks until so many requests are worked off, or ten seconds have passed.
std::vector<float> runUntilDone(HeldPlugin &held, float requests)
{
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    std::vector<float> report = held.run();
    while (report[answers] + report[lostAnswers] < requests &&
           std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        report = held.run();
    }
    return report;
}

constexpr Instance::Settings offline{48000.0, 1024, true, std::nullopt};

} // namespace

TEST(Worker, AnswersEveryRequestThatItAccepted)
{
    HeldPlugin held("urn:test:worker", ownBundle("worker"));
    held.instance.setControl("requests", 3.0F);
    for (int i = 0; i < 100; ++i)
        held.run();
    held.instance.setControl("requests", 0.0F);
    const auto report = runUntilDone(held, 300.0F);
    EXPECT_EQ(report[accepted], 300.0F);
    EXPECT_EQ(report[answers], 300.0F);
    EXPECT_EQ(report[overlaps], 0.0F);
    EXPECT_GE(report[ends], 100.0F);
}

TEST(Worker, SaysWhenItHasNoRoom)
{
    HeldPlugin held("urn:test:worker", ownBundle("worker"));
    held.instance.setControl("requests", 5000.0F);
    const auto first = held.run();
    EXPECT_GT(first[accepted], 0.0F);
    EXPECT_GT(first[refused], 0.0F);
    EXPECT_EQ(first[accepted] + first[refused], 5000.0F);
    held.instance.setControl("requests", 0.0F);
    // A worker that is done with all before the next run has no room for all answers.
    const auto report = runUntilDone(held, first[accepted]);
    EXPECT_GT(report[answers], 0.0F);
    EXPECT_EQ(report[answers] + report[lostAnswers], first[accepted]);
}

TEST(Worker, WorksInPlaceWhileOffline)
{
    HeldPlugin held("urn:test:worker", ownBundle("worker"), offline);
    held.instance.setControl("requests", 2.0F);
    for (int block = 0; block < 50; ++block) {
        const auto report = held.run();
        // A block reports before its own answers arrive at its end.
        ASSERT_EQ(report[accepted], 2.0F * static_cast<float>(block + 1));
        ASSERT_EQ(report[answers], 2.0F * static_cast<float>(block));
        ASSERT_EQ(report[ends], static_cast<float>(block));
    }
}

TEST(Worker, LeavesNothingUndoneWhenItGoesOffline)
{
    HeldPlugin held("urn:test:worker", ownBundle("worker"));
    held.instance.setControl("requests", 100.0F);
    const auto first = held.run();
    held.instance.setControl("requests", 0.0F);
    held.instance.setOffline(true);
    held.run();
    EXPECT_EQ(held.run()[answers], first[accepted]);
}

TEST(Worker, ServesRestore)
{
    platform::lv2::Plugin plugin("urn:test:worker", ownBundle("worker"));
    platform::lv2::Exchange exchange(plugin.name());
    platform::lv2::State state;
    {
        Instance first(plugin, exchange, {});
        state = first.save();
        EXPECT_EQ(state.properties.size(), 1U);
    }
    Instance second(plugin, exchange, {}, &state);
    Channels out(1, 16);
    second.run(nullptr, out.data(), 16, 0);
    second.run(nullptr, out.data(), 16, 0);
    EXPECT_EQ(out[0][restoreAnswers], 1.0F);
}

TEST(Worker, EndsBeforeThePluginDoes)
{
    for (int i = 0; i < 20; ++i) {
        HeldPlugin held("urn:test:worker", ownBundle("worker"));
        held.instance.setControl("requests", 500.0F);
        held.run();
    }
}

TEST(Worker, LoadsTheSampleOfAnInstalledSampler)
{
    if (!isInstalled("eg-sampler"))
        GTEST_SKIP() << "needs lv2-examples";
    HeldPlugin held("http://lv2plug.in/plugins/eg-sampler", installedBundle("eg-sampler"), offline);
    const auto state = held.instance.save();
    EXPECT_FALSE(state.properties.empty());
    const std::array<std::uint8_t, 3> note{0x90, 60, 100};
    float loudest = 0.0F;
    for (int block = 0; block < 20; ++block) {
        held.exchange.midiInput.push(0, note);
        for (const float sample : held.run(256))
            loudest = std::max(loudest, std::abs(sample));
    }
    EXPECT_GT(loudest, 0.01F);
}
