#include "Platform/Effect Process/SpinBudget.hpp"

#include <gtest/gtest.h>

using platform::effect::SpinBudget;
using std::chrono::microseconds;
using std::chrono::nanoseconds;
using std::chrono::seconds;

namespace
{

/// How often a wait that is never over in time is looked at: once means that it was
/// not spun for.
int looksAtNothing(SpinBudget &budget)
{
    int looks = 0;
    EXPECT_FALSE(budget.spin([&] {
        ++looks;
        return false;
    }));
    return looks;
}

} // namespace

TEST(SpinBudget, SeesWhatIsDoneAlready)
{
    SpinBudget budget{nanoseconds(0)};
    EXPECT_TRUE(budget.spin([] { return true; }));
}

TEST(SpinBudget, LooksAgainAndAgain)
{
    SpinBudget budget{seconds(10)};
    int looks = 0;
    EXPECT_TRUE(budget.spin([&] { return ++looks == 1000; }));
}

TEST(SpinBudget, EndsWhenItIsSpent)
{
    SpinBudget budget{microseconds(50)};
    EXPECT_GT(looksAtNothing(budget), 1);
}

TEST(SpinBudget, NeverSpinsWithoutAny)
{
    SpinBudget budget{nanoseconds(0)};
    for (int i = 0; i < 1000; ++i)
        EXPECT_EQ(looksAtNothing(budget), 1);
}

TEST(SpinBudget, IsGivenUpWhereItDoesNotPayAndTriedAgainFromTimeToTime)
{
    SpinBudget budget{microseconds(1)};
    for (int i = 0; i < 20; ++i)
        looksAtNothing(budget);
    int spins = 0;
    for (int i = 0; i < 640; ++i)
        if (looksAtNothing(budget) > 1)
            ++spins;
    EXPECT_EQ(spins, 10);
}

TEST(SpinBudget, IsTakenUpAgainWhereItPays)
{
    SpinBudget poor{microseconds(1)};
    for (int i = 0; i < 20; ++i)
        looksAtNothing(poor);
    const auto isSpunFor = [&poor] {
        int looks = 0;
        return poor.spin([&] { return ++looks > 1; });
    };
    int successes = 0;
    for (int i = 0; i < 64 * 20; ++i)
        if (isSpunFor())
            ++successes;
    EXPECT_GT(successes, 64 * 10);
}
