#include "Platform/Foundation/NSTimer.hpp"
#include "Platform/Foundation/RunLoop.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <functional>
#include <memory>
#include <stdexcept>
#include <thread>
#include <vector>

#include <glib.h>

namespace
{

using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

constexpr double patience = 30;

double secondsSince(Clock::time_point start)
{
    return Seconds(Clock::now() - start).count();
}

bool runUntil(const std::function<bool()> &condition)
{
    return RunLoop::main().runUntil(condition, patience);
}

TEST(GLibTimerDriver, IsThereWithoutBeingNamed)
{
    bool called = false;
    NSTimer::scheduledTimer(0.001, false, [&](NSTimer &) { called = true; });
    while (!called)
        g_main_context_iteration(nullptr, TRUE);
    EXPECT_TRUE(called);
}

TEST(GLibTimerDriver, CallsNoTickBeforeItIsDue)
{
    const auto start = Clock::now();
    std::vector<double> times;
    const auto timer = NSTimer::scheduledTimer(
        0.01, true, [&](NSTimer &) { times.push_back(secondsSince(start)); });
    ASSERT_TRUE(runUntil([&] { return times.size() == 20; }));
    timer->invalidate();
    for (std::size_t i = 0; i < times.size(); ++i)
        EXPECT_GE(times[i], 0.01 * static_cast<double>(i + 1));
}

TEST(GLibTimerDriver, SkipsMissedTicksAndKeepsTheGrid)
{
    constexpr double interval = 0.05;
    const auto before = Clock::now();
    std::vector<double> times;
    const auto timer = NSTimer::scheduledTimer(interval, true, [&](NSTimer &) {
        times.push_back(secondsSince(before));
        if (times.size() == 1)
            std::this_thread::sleep_for(Seconds(3.5 * interval));
    });
    const double uncertainty = secondsSince(before);
    ASSERT_TRUE(runUntil([&] { return times.size() == 3; }));
    timer->invalidate();
    // The block slept over at least three points. They come as one call, the next
    // after that one is on the grid again.
    EXPECT_GE(times[1] - times[0], 3.5 * interval);
    const double point = std::floor((times[1] + 1e-9) / interval + 1) * interval;
    EXPECT_GE(times[2], point - interval * 0.5);
    EXPECT_GT(times[2], std::ceil((times[1] - uncertainty) / interval) * interval);
}

TEST(GLibTimerDriver, DoesNotDrift)
{
    constexpr double interval = 0.002;
    constexpr int count = 200;
    const auto start = Clock::now();
    int ticks = 0;
    const auto timer = NSTimer::scheduledTimer(interval, true, [&](NSTimer &) {
        ++ticks;
        std::this_thread::sleep_for(std::chrono::microseconds(500));
    });
    ASSERT_TRUE(runUntil([&] { return ticks == count; }));
    timer->invalidate();
    // Half a millisecond of work a tick must not add up: that would be 0.1 s. A
    // busy machine may still delay or skip some.
    EXPECT_GE(secondsSince(start), interval * count);
}

TEST(GLibTimerDriver, ServesManyTimersInTheOrderOfTime)
{
    constexpr std::size_t count = 3000; // more than a process may have open files
    // A timer is due between these, by the clock before and after it was made.
    struct Due {
        double earliest = 0;
        double latest = 0;
    };
    constexpr double rounding = 1e-8; // of the interval to nanoseconds
    const auto start = Clock::now();
    std::vector<Due> dues(count);
    std::vector<std::size_t> order;
    std::vector<std::shared_ptr<NSTimer>> timers;
    timers.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        const double interval = 0.05 + static_cast<double>(count - i) * 1e-5;
        dues[i].earliest = secondsSince(start) + interval - rounding;
        timers.push_back(
            NSTimer::scheduledTimer(interval, false, [&, i](NSTimer &) { order.push_back(i); }));
        dues[i].latest = secondsSince(start) + interval + rounding;
    }
    ASSERT_TRUE(runUntil([&] { return order.size() == count; }));
    for (std::size_t i = 1; i < count; ++i)
        EXPECT_LE(dues[order[i - 1]].earliest, dues[order[i]].latest);
    for (const auto &timer : timers)
        EXPECT_FALSE(timer->isValid());
}

TEST(GLibTimerDriver, ATimerEndedByAnotherIsNotCalled)
{
    bool called = false;
    const auto victim = NSTimer::scheduledTimer(0.002, true, [&](NSTimer &) { called = true; });
    NSTimer::scheduledTimer(0.001, false, [&](NSTimer &) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5)); // both are due now
        victim->invalidate();
    });
    ASSERT_TRUE(runUntil([&] { return !victim->isValid(); }));
    EXPECT_FALSE(RunLoop::main().runUntil([&] { return called; }, 0.02));
}

TEST(GLibTimerDriver, ABlockThatRunsTheLoopHoldsUpOnlyItsOwnTimer)
{
    int inner = 0;
    int depth = 0;
    int deepest = 0;
    bool finished = false;
    const auto other = NSTimer::scheduledTimer(0.001, true, [&](NSTimer &) { ++inner; });
    const auto timer = NSTimer::scheduledTimer(0.001, true, [&](NSTimer &self) {
        deepest = std::max(deepest, ++depth);
        const int before = inner;
        EXPECT_TRUE(runUntil([&] { return inner >= before + 5; }));
        --depth;
        self.invalidate();
        finished = true;
    });
    ASSERT_TRUE(runUntil([&] { return finished; }));
    other->invalidate();
    EXPECT_EQ(deepest, 1);
}

TEST(GLibTimerDriver, VeryShortIntervalsLeaveRoomForOtherSources)
{
    bool idle = false;
    int ticks = 0;
    const auto timer = NSTimer::scheduledTimer(1e-9, true, [&](NSTimer &) { ++ticks; });
    g_timeout_add(
        1,
        [](gpointer flag) -> gboolean {
            *static_cast<bool *>(flag) = true;
            return G_SOURCE_REMOVE;
        },
        &idle);
    EXPECT_TRUE(runUntil([&] { return idle && ticks > 2; }));
    timer->invalidate();
}

TEST(GLibTimerDriver, FollowsThePriorityOfTheRunLoop)
{
    std::vector<int> order;
    RunLoop::main().setSourcePriority(G_PRIORITY_HIGH_IDLE);
    NSTimer::scheduledTimer(0.001, false, [&](NSTimer &) { order.push_back(2); });
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
    g_idle_add_full(
        G_PRIORITY_DEFAULT,
        [](gpointer events) -> gboolean {
            static_cast<std::vector<int> *>(events)->push_back(1);
            return G_SOURCE_REMOVE;
        },
        &order, nullptr);
    EXPECT_TRUE(runUntil([&] { return order.size() == 2; }));
    RunLoop::main().setSourcePriority(G_PRIORITY_DEFAULT);
    EXPECT_EQ(order, (std::vector<int>{1, 2}));
}

class GLibTimerDriverDeathTest : public ::testing::Test
{
protected:
    GLibTimerDriverDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

TEST_F(GLibTimerDriverDeathTest, SchedulingOnAnotherThreadIsFatal)
{
    EXPECT_DEATH(std::thread([] { NSTimer::scheduledTimer(1, true, [](NSTimer &) {}); }).join(),
                 "Fatal error: A timer was scheduled on another thread than the main thread");
}

TEST_F(GLibTimerDriverDeathTest, AThrowingBlockIsFatal)
{
    EXPECT_DEATH(
        {
            NSTimer::scheduledTimer(0, true, [](NSTimer &) { throw std::runtime_error("lost"); });
            runUntil([] { return false; });
        },
        "Fatal error: A timer's block threw an exception: lost");
}

} // namespace
