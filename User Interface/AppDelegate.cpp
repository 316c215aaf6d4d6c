#include "User Interface/AppDelegate.hpp"

#include <utility>

void AppDelegate::setWindow(std::shared_ptr<UIWindow> value)
{
    window = std::move(value);
}

bool AppDelegate::application(UIApplication & /*application*/,
                              const UIApplicationLaunchOptions & /*launchOptions*/)
{
    return true;
}

void AppDelegate::applicationWillResignActive(UIApplication & /*application*/) {}

void AppDelegate::applicationDidEnterBackground(UIApplication & /*application*/) {}

void AppDelegate::applicationWillEnterForeground(UIApplication & /*application*/) {}

void AppDelegate::applicationDidBecomeActive(UIApplication & /*application*/) {}

void AppDelegate::applicationWillTerminate(UIApplication & /*application*/) {}
