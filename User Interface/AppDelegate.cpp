#include "User Interface/AppDelegate.hpp"

void AppDelegate::setWindow(const std::shared_ptr<UIWindow> &value)
{
    window = value;
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
