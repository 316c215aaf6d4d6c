#include "Effect/View/Gestures.hpp"

#include <gtest/gtest.h>

using namespace effect::view;

TEST(Drag, GoesUpWithThePointer)
{
    Drag drag(3, 0.5, 100);
    EXPECT_EQ(drag.control(), 3U);
    EXPECT_DOUBLE_EQ(drag.moveTo(100 - Drag::travel / 4, false), 0.75);
    EXPECT_DOUBLE_EQ(drag.moveTo(100 + Drag::travel / 4, false), 0.25);
}

TEST(Drag, GoesATenthOfTheWayWhenFine)
{
    Drag drag(0, 0.5, 100);
    EXPECT_DOUBLE_EQ(drag.moveTo(100 - Drag::travel / 2, true), 0.55);
}

TEST(Drag, DoesNotJumpWhenFineBeginsOrEnds)
{
    Drag drag(0, 0.5, 100);
    EXPECT_DOUBLE_EQ(drag.moveTo(80, false), 0.6);
    EXPECT_DOUBLE_EQ(drag.moveTo(80, true), 0.6);
    EXPECT_DOUBLE_EQ(drag.moveTo(60, true), 0.61);
    EXPECT_DOUBLE_EQ(drag.moveTo(60, false), 0.61);
}

TEST(Drag, FollowsAtOnceWhenThePointerTurnsRoundBeyondTheEnd)
{
    Drag drag(0, 0.9, 500);
    EXPECT_DOUBLE_EQ(drag.moveTo(0, false), 1);
    EXPECT_DOUBLE_EQ(drag.moveTo(Drag::travel / 10, false), 0.9);
}

TEST(ClickCounter, TellsTheSecondOfTwoQuickPresses)
{
    ClickCounter clicks;
    EXPECT_FALSE(clicks.isSecond(1, {10, 10}, 1000));
    EXPECT_TRUE(clicks.isSecond(1, {12, 9}, 1000 + ClickCounter::longest));
}

TEST(ClickCounter, BeginsAnewAfterADoubleClick)
{
    ClickCounter clicks;
    clicks.isSecond(1, {10, 10}, 0);
    ASSERT_TRUE(clicks.isSecond(1, {10, 10}, 100));
    EXPECT_FALSE(clicks.isSecond(1, {10, 10}, 200));
    EXPECT_TRUE(clicks.isSecond(1, {10, 10}, 300));
}

TEST(ClickCounter, TakesSlowDistantOrForeignPressesForFirstOnes)
{
    ClickCounter clicks;
    clicks.isSecond(1, {10, 10}, 0);
    EXPECT_FALSE(clicks.isSecond(1, {10, 10}, ClickCounter::longest + 1));
    EXPECT_FALSE(clicks.isSecond(2, {10, 10}, ClickCounter::longest + 2));
    EXPECT_FALSE(clicks.isSecond(2, {10, 17}, ClickCounter::longest + 3));
}

TEST(ClickCounter, SurvivesTheWrapOfTheServersClock)
{
    ClickCounter clicks;
    clicks.isSecond(1, {0, 0}, 0xFFFFFFF0U);
    EXPECT_TRUE(clicks.isSecond(1, {0, 0}, 0x00000010U));
}
