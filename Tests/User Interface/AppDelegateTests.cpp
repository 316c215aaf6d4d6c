#include "Platform/Interface/ClassRegistry.hpp"
#include "Platform/Interface/UIApplication.hpp"
#include "Platform/Interface/UIWindow.hpp"
#include "Tests/Utilities/PrintedLines.hpp"
#include "User Interface/AppDelegate.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

TEST(AppDelegate, IsMadeByItsName)
{
    EXPECT_EQ(NSStringFromClass<AppDelegate>(), "AppDelegate");
    EXPECT_NE(std::dynamic_pointer_cast<UIApplicationDelegate>(
                  platform::interface::makeInstance("AppDelegate")),
              nullptr);
}

TEST(AppDelegate, BeginsWithoutAWindowAndKeepsThePlatforms)
{
    AppDelegate delegate;
    EXPECT_EQ(delegate.window, nullptr);
    const auto window = UIWindow::create("Window", 100, 100);
    delegate.setWindow(window);
    EXPECT_EQ(delegate.window, window);
}

TEST(AppDelegate, LetsTheProgramBeLaunched)
{
    AppDelegate delegate;
    UIApplication application;
    const test::PrintedLines printed;
    EXPECT_TRUE(delegate.application(application, {}));
    EXPECT_EQ(delegate.window, nullptr);
    EXPECT_THAT(printed.lines(), ::testing::IsEmpty());
}

TEST(AppDelegate, LeavesEachStepOfTheProgramsLifeToThePlatform)
{
    AppDelegate delegate;
    UIApplication application;
    const auto window = UIWindow::create("Window", 100, 100);
    delegate.setWindow(window);
    const test::PrintedLines printed;
    delegate.applicationDidBecomeActive(application);
    delegate.applicationWillResignActive(application);
    delegate.applicationDidEnterBackground(application);
    delegate.applicationWillEnterForeground(application);
    delegate.applicationWillTerminate(application);
    EXPECT_EQ(delegate.window, window);
    EXPECT_THAT(printed.lines(), ::testing::IsEmpty());
}
