#include "Platform/Interface/Lifecycle.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

using platform::interface::Lifecycle;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class LifecycleTest : public ::testing::Test
{
protected:
    std::vector<std::string> steps;
    Lifecycle lifecycle{{[this] { steps.emplace_back("didBecomeActive"); },
                         [this] { steps.emplace_back("willResignActive"); },
                         [this] { steps.emplace_back("didEnterBackground"); },
                         [this] { steps.emplace_back("willEnterForeground"); }}};

    void becomeActive()
    {
        lifecycle.update(true, false);
        steps.clear();
    }
};

TEST_F(LifecycleTest, BeginsInactive)
{
    EXPECT_EQ(lifecycle.state(), UIApplicationState::inactive);
    lifecycle.update(false, false);
    EXPECT_THAT(steps, IsEmpty());
}

TEST_F(LifecycleTest, BecomesActiveOnceWithTheKeyboard)
{
    lifecycle.update(true, false);
    lifecycle.update(true, false);
    EXPECT_THAT(steps, ElementsAre("didBecomeActive"));
    EXPECT_EQ(lifecycle.state(), UIApplicationState::active);
}

TEST_F(LifecycleTest, ResignsWhenTheKeyboardGoes)
{
    becomeActive();
    lifecycle.update(false, false);
    EXPECT_THAT(steps, ElementsAre("willResignActive"));
    EXPECT_EQ(lifecycle.state(), UIApplicationState::inactive);
}

TEST_F(LifecycleTest, MinimisedWithTheKeyboardStillResignsFirst)
{
    becomeActive();
    lifecycle.update(true, true);
    lifecycle.update(false, true);
    EXPECT_THAT(steps, ElementsAre("willResignActive", "didEnterBackground"));
    EXPECT_EQ(lifecycle.state(), UIApplicationState::background);
}

TEST_F(LifecycleTest, MinimisedAfterTheKeyboardWentResignsOnce)
{
    becomeActive();
    lifecycle.update(false, false);
    lifecycle.update(false, true);
    EXPECT_THAT(steps, ElementsAre("willResignActive", "didEnterBackground"));
}

TEST_F(LifecycleTest, ComesBackThroughTheForeground)
{
    becomeActive();
    lifecycle.update(false, true);
    steps.clear();
    lifecycle.update(true, false);
    EXPECT_THAT(steps, ElementsAre("willEnterForeground", "didBecomeActive"));
}
