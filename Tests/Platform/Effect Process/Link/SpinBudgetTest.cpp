#include "Platform/Effect Process/SpinBudget.hpp"

#include <gtest/gtest.h>

using platform::effect::SpinBudget;
using std::chrono::microseconds;
using std::chrono::seconds;

TEST(SpinBudget, SeesWhatIsDoneAlready)
{
    SpinBudget budget{microseconds(0)};
    budget.learn(seconds(10));
    EXPECT_TRUE(budget.spin([] { return true; }));
}

TEST(SpinBudget, LooksAgainAndAgain)
{
    const SpinBudget budget{seconds(10)};
    int looks = 0;
    EXPECT_TRUE(budget.spin([&] { return ++looks == 1000; }));
}

TEST(SpinBudget, EndsWhenItIsSpent)
{
    const SpinBudget budget{microseconds(50)};
    EXPECT_FALSE(budget.spin([] { return false; }));
}

TEST(SpinBudget, DoesNotSpinWhereWaitsAreLong)
{
    SpinBudget budget{microseconds(50)};
    for (int i = 0; i < 100; ++i)
        budget.learn(seconds(1));
    int looks = 0;
    EXPECT_FALSE(budget.spin([&] { return ++looks > 1; }));
    EXPECT_EQ(looks, 1);
    for (int i = 0; i < 1000; ++i)
        budget.learn(microseconds(1));
    EXPECT_TRUE(budget.spin([&] { return ++looks > 10; }));
}
