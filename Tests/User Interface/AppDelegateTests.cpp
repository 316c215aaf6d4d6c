#include "Platform/Interface/ClassRegistry.hpp"
#include "Platform/Interface/UIApplication.hpp"
#include "Platform/Interface/UIWindow.hpp"
#include "User Interface/AppDelegate.hpp"

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
    EXPECT_TRUE(delegate.application(application, {}));
}
