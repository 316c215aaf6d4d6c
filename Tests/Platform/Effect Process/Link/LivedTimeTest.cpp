#include "Platform/Effect Process/LivedTime.hpp"

#include <gtest/gtest.h>

using platform::effect::LivedTime;
using std::chrono::hours;
using std::chrono::milliseconds;

TEST(LivedTime, IsWhatHasPassedSinceTheLastLook)
{
    const auto begin = LivedTime::Clock::now();
    LivedTime time(milliseconds(100), begin);
    EXPECT_EQ(time.look(begin + milliseconds(10)), milliseconds(10));
    EXPECT_EQ(time.look(begin + milliseconds(10)), milliseconds(0));
    EXPECT_EQ(time.look(begin + milliseconds(110)), milliseconds(100));
}

TEST(LivedTime, IsShortAcrossAStop)
{
    const auto begin = LivedTime::Clock::now();
    LivedTime time(milliseconds(100), begin);
    EXPECT_EQ(time.look(begin + hours(8)), milliseconds(100));
    EXPECT_EQ(time.look(begin + hours(8) + milliseconds(30)), milliseconds(30));
}
