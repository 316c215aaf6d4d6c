#include "Effect/View/RotorMotion.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using effect::view::RotorMotion;

namespace
{

double distance(double one, double other)
{
    return std::abs(std::remainder(one - other, 1.0));
}

} // namespace

TEST(RotorMotion, StandsAtTheFirstAngleAtOnce)
{
    RotorMotion motion;
    motion.reportAngle(0.4, 1000);
    EXPECT_TRUE(motion.advance(1000));
    EXPECT_DOUBLE_EQ(motion.angle(), 0.4);
    EXPECT_FALSE(motion.advance(1001)) << "nothing to draw at rest";
}

TEST(RotorMotion, RunsOnBetweenReports)
{
    RotorMotion motion;
    motion.reportAngle(0.9, 5);
    motion.reportSpeed(2);
    EXPECT_TRUE(motion.advance(5));
    EXPECT_TRUE(motion.advance(5.1));
    EXPECT_NEAR(motion.angle(), 0.1, 1e-9);
    EXPECT_TRUE(motion.advance(5.2));
    EXPECT_NEAR(motion.angle(), 0.3, 1e-9);
}

TEST(RotorMotion, StaysWithTheSoundUnderJitter)
{
    RotorMotion motion;
    motion.reportSpeed(6.7);
    double worst = 0;
    // Each report is up to 8 ms late, and pictures come between them.
    for (int report = 0; report < 300; ++report) {
        const double sounded = report / 30.0;
        const double late = 0.004 * (report % 3);
        motion.reportAngle(std::fmod(6.7 * sounded, 1.0), sounded + late);
        motion.advance(sounded + late);
        motion.advance(sounded + 0.025);
        if (report > 20) {
            worst = std::max(worst, distance(motion.angle(), 6.7 * (sounded + 0.025)));
        }
    }
    EXPECT_LT(worst, 6.7 * 0.008);
}

TEST(RotorMotion, CatchesUpTheShortWay)
{
    RotorMotion motion;
    motion.reportAngle(0.95, 0);
    motion.advance(0);
    motion.reportAngle(0.05, 0.1);
    motion.advance(0.15);
    EXPECT_TRUE(motion.angle() > 0.95 || motion.angle() < 0.05) << motion.angle();
    for (int i = 0; i < 30; ++i) {
        motion.advance(0.2 + i / 30.0);
    }
    EXPECT_NEAR(motion.angle(), 0.05, 1e-3);
}

TEST(RotorMotion, StopsWhenNothingIsHeardAnyMore)
{
    RotorMotion motion;
    motion.reportAngle(0, 10);
    motion.reportSpeed(1);
    motion.advance(10);
    for (int i = 1; i <= 60; ++i) {
        motion.advance(10 + i / 30.0);
    }
    EXPECT_NEAR(motion.angle(), RotorMotion::patience, 1e-6);
    EXPECT_FALSE(motion.advance(20));
}

TEST(RotorMotion, IsDrawnAgainWhenOnlyTheSpeedIsNew)
{
    RotorMotion motion;
    motion.reportAngle(0.5, 0);
    motion.advance(0);
    motion.reportSpeed(0.8);
    EXPECT_TRUE(motion.advance(1000));
    EXPECT_EQ(motion.speed(), 0.8);
}

TEST(RotorMotion, PassesOverWhatIsNoNumber)
{
    RotorMotion motion;
    motion.reportAngle(0.25, 0);
    motion.reportSpeed(0);
    motion.advance(0);
    motion.reportAngle(std::numeric_limits<double>::quiet_NaN(), 0);
    motion.reportSpeed(std::numeric_limits<double>::infinity());
    motion.advance(1);
    EXPECT_DOUBLE_EQ(motion.angle(), 0.25);
    EXPECT_EQ(motion.speed(), 0);
}

TEST(RotorMotion, KeepsSpeedsWithinThePortsRange)
{
    RotorMotion motion;
    motion.reportSpeed(-3);
    EXPECT_EQ(motion.speed(), 0);
    motion.reportSpeed(1e30);
    EXPECT_EQ(motion.speed(), 10);
}
