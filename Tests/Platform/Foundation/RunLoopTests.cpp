#include "Platform/Foundation/RunLoop.hpp"

#include "Platform/Foundation/DispatchQueue.hpp"

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <string>
#include <thread>
#include <vector>

#include <glib.h>

namespace
{

TEST(RunLoop, RunUntilAsksBeforeTheFirstTurn)
{
    bool turned = false;
    DispatchQueue::main().async([&] { turned = true; });
    EXPECT_TRUE(RunLoop::main().runUntil([] { return true; }, 30));
    EXPECT_FALSE(turned);
    EXPECT_TRUE(RunLoop::main().runUntil([&] { return turned; }, 30));
}

TEST(RunLoop, RunUntilGivesUpWhenTheTimeIsOver)
{
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(RunLoop::main().runUntil([] { return false; }, 0.05));
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(50));
}

TEST(RunLoop, RunUntilWithoutTimeAsksOnce)
{
    int questions = 0;
    EXPECT_FALSE(RunLoop::main().runUntil(
        [&] {
            ++questions;
            return false;
        },
        0));
    EXPECT_EQ(questions, 1);
}

TEST(RunLoop, StopsFromAnotherThread)
{
    std::thread stopper;
    // Only once the loop runs is there something to stop.
    DispatchQueue::main().async([&] { stopper = std::thread([] { RunLoop::main().stop(); }); });
    RunLoop::main().run();
    stopper.join();
}

TEST(RunLoop, RunsAgainAfterAStop)
{
    for (int i = 0; i < 3; ++i) {
        DispatchQueue::main().async([] { RunLoop::main().stop(); });
        RunLoop::main().run();
    }
}

TEST(RunLoop, TurnsWhenTheProgramIteratesTheMainContextItself)
{
    bool hasRun = false;
    DispatchQueue::main().async([&] { hasRun = true; });
    while (!hasRun)
        g_main_context_iteration(nullptr, TRUE);
    EXPECT_TRUE(hasRun);
}

TEST(RunLoop, PriorityPutsTheMainQueueBehindMoreUrgentSources)
{
    RunLoop &loop = RunLoop::main();
    ASSERT_EQ(loop.sourcePriority(), G_PRIORITY_DEFAULT);
    loop.setSourcePriority(G_PRIORITY_HIGH_IDLE);
    EXPECT_EQ(loop.sourcePriority(), G_PRIORITY_HIGH_IDLE);

    std::vector<std::string> events;
    DispatchQueue::main().async([&] { events.emplace_back("task"); });
    g_idle_add_full(
        G_PRIORITY_DEFAULT,
        [](gpointer data) -> gboolean {
            static_cast<std::vector<std::string> *>(data)->emplace_back("urgent");
            return G_SOURCE_REMOVE;
        },
        &events, nullptr);
    EXPECT_TRUE(loop.runUntil([&] { return events.size() == 2; }, 30));
    EXPECT_EQ(events.front(), "urgent");
    loop.setSourcePriority(G_PRIORITY_DEFAULT);
}

class RunLoopDeathTest : public ::testing::Test
{
protected:
    RunLoopDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

TEST_F(RunLoopDeathTest, RunningItOnAnotherThreadIsFatal)
{
    EXPECT_DEATH(std::thread([] { RunLoop::main().run(); }).join(),
                 "Fatal error: The main run loop was run on another thread");
}

} // namespace
