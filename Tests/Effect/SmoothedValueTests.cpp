#include "Effect/SmoothedValue.hpp"

#include <gtest/gtest.h>

#include <cmath>

using effect::SmoothedValue;

TEST(SmoothedValue, FollowsTheStepResponseOfTwoLowPasses)
{
    // Ticks are short beside the time constant, as they are in use.
    SmoothedValue value(0.010, 0.0001);
    value.setTarget(1);
    for (int tick = 1; tick <= 500; ++tick) {
        value.advance();
        const double time = tick * 0.0001 / 0.010;
        ASSERT_NEAR(value.value(), 1 - (1 + time) * std::exp(-time), 0.01);
    }
}

TEST(SmoothedValue, NeverOvershoots)
{
    SmoothedValue value(0.010, 0.001);
    value.setTarget(1);
    while (!value.isSettled()) {
        value.advance();
        ASSERT_GE(value.value(), value.previous());
        ASSERT_LE(value.value(), 1.0F);
    }
}

TEST(SmoothedValue, ReachesItsTargetExactlyAndInFiniteTime)
{
    SmoothedValue value(0.010, 0.001);
    value.setTarget(0.3F);
    int ticks = 0;
    while (!value.isSettled() && ticks < 1000) {
        value.advance();
        ++ticks;
    }
    EXPECT_LT(ticks, 200);
    EXPECT_EQ(value.value(), 0.3F);
}

TEST(SmoothedValue, SettlesAtOnceWhenTold)
{
    SmoothedValue value(1, 0.001);
    value.setTarget(5);
    EXPECT_FALSE(value.isSettled());
    value.settle();
    EXPECT_TRUE(value.isSettled());
    EXPECT_EQ(value.previous(), 5.0F);
}
