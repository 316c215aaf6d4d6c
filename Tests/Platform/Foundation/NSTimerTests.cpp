#include "Platform/Foundation/NSTimer.hpp"

#include "Tests/Platform/Foundation/HandDrivenTimers.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>

namespace
{

class NSTimerTest : public ::testing::Test
{
protected:
    NSTimerTest() { TimerDriver::install(clock); }
    ~NSTimerTest() override { TimerDriver::install(nullptr); }

    std::shared_ptr<HandDrivenTimers> clock = std::make_shared<HandDrivenTimers>();
    int ticks = 0;
};

TEST_F(NSTimerTest, RepeatsAtItsInterval)
{
    const auto timer = NSTimer::scheduledTimer(0.005, true, [&](NSTimer &) { ++ticks; });
    clock->advance(0.0049);
    EXPECT_EQ(ticks, 0);
    clock->advance(0.0001);
    EXPECT_EQ(ticks, 1);
    clock->advance(1);
    EXPECT_EQ(ticks, 201);
    EXPECT_TRUE(timer->isValid());
    timer->invalidate();
}

TEST_F(NSTimerTest, WithoutRepeatingCallsOnceAndIsInvalidDuringTheCall)
{
    bool validInBlock = true;
    const auto timer = NSTimer::scheduledTimer(1, false, [&](NSTimer &self) {
        ++ticks;
        validInBlock = self.isValid();
    });
    EXPECT_TRUE(timer->isValid());
    clock->advance(5);
    EXPECT_EQ(ticks, 1);
    EXPECT_FALSE(validInBlock);
    EXPECT_FALSE(timer->isValid());
    EXPECT_EQ(clock->running(), 0U);
}

TEST_F(NSTimerTest, PassesItselfToTheBlock)
{
    const NSTimer *seen = nullptr;
    const auto timer = NSTimer::scheduledTimer(1, true, [&](NSTimer &self) { seen = &self; });
    clock->advance(1);
    EXPECT_EQ(seen, timer.get());
    timer->invalidate();
}

TEST_F(NSTimerTest, InvalidationEndsTheCalls)
{
    const auto timer = NSTimer::scheduledTimer(1, true, [&](NSTimer &) { ++ticks; });
    clock->advance(1);
    timer->invalidate();
    timer->invalidate();
    EXPECT_FALSE(timer->isValid());
    clock->advance(10);
    EXPECT_EQ(ticks, 1);
}

TEST_F(NSTimerTest, AValidTimerKeepsItselfAndItsBlockAlive)
{
    const auto owner = std::make_shared<int>(0);
    std::weak_ptr<NSTimer> timer =
        NSTimer::scheduledTimer(1, true, [&, owner](NSTimer &) { ++ticks; });
    EXPECT_EQ(owner.use_count(), 2);
    clock->advance(3);
    EXPECT_EQ(ticks, 3);
    timer.lock()->invalidate();
    EXPECT_EQ(owner.use_count(), 1);
    EXPECT_TRUE(timer.expired());
}

TEST_F(NSTimerTest, TheBlockMayInvalidateItsOwnTimerAndGoOn)
{
    const auto owner = std::make_shared<int>(0);
    int afterwards = 0;
    std::weak_ptr<NSTimer> timer =
        NSTimer::scheduledTimer(1, true, [&afterwards, owner](NSTimer &self) {
            self.invalidate();
            afterwards = *owner + 1; // reads what the block holds
        });
    clock->advance(3);
    EXPECT_EQ(afterwards, 1);
    EXPECT_EQ(owner.use_count(), 1);
    EXPECT_TRUE(timer.expired());
}

TEST_F(NSTimerTest, ABlockMayEndAnotherTimerThatIsDue)
{
    int otherTicks = 0;
    std::shared_ptr<NSTimer> other;
    const auto timer = NSTimer::scheduledTimer(1, true, [&](NSTimer &self) {
        other->invalidate();
        self.invalidate();
    });
    other = NSTimer::scheduledTimer(1, true, [&](NSTimer &) { ++otherTicks; });
    clock->advance(5);
    EXPECT_EQ(otherTicks, 0);
}

TEST_F(NSTimerTest, ABlockMayStartAnotherTimer)
{
    std::shared_ptr<NSTimer> next;
    NSTimer::scheduledTimer(1, false, [&](NSTimer &) {
        next = NSTimer::scheduledTimer(1, false, [&](NSTimer &) { ++ticks; });
    });
    clock->advance(1.5);
    EXPECT_EQ(ticks, 0);
    clock->advance(0.5);
    EXPECT_EQ(ticks, 1);
}

TEST_F(NSTimerTest, AnIntervalThatIsNoneMeansATenthOfAMillisecond)
{
    for (const double interval : {0.0, -0.0, -1.0, -std::numeric_limits<double>::infinity(),
                                  std::numeric_limits<double>::quiet_NaN()}) {
        NSTimer::scheduledTimer(interval, false, [](NSTimer &) {});
        EXPECT_EQ(clock->intervals.back(), 0.0001) << interval;
    }
    clock->advance(0.0001);
    EXPECT_EQ(clock->running(), 0U);
}

TEST_F(NSTimerTest, AnEndlessIntervalStaysFinite)
{
    const auto timer =
        NSTimer::scheduledTimer(std::numeric_limits<double>::infinity(), true, [](NSTimer &) {});
    EXPECT_TRUE(std::isfinite(clock->intervals.back()));
    timer->invalidate();
}

TEST_F(NSTimerTest, AnEmptyBlockIsHarmless)
{
    const auto timer = NSTimer::scheduledTimer(1, true, nullptr);
    clock->advance(2);
    EXPECT_TRUE(timer->isValid());
    timer->invalidate();
}

} // namespace
