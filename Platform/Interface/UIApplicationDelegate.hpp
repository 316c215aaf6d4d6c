#pragma once

#include <map>
#include <memory>
#include <string>

class UIApplication;
class UIWindow;

/// Why and with what the program was launched, by name.
using UIApplicationLaunchOptions = std::map<std::string, std::string>;

/// Takes part in the life of the program. The platform makes it by its class's
/// name. All calls come on the main thread.
class UIApplicationDelegate
{
public:
    virtual ~UIApplicationDelegate() = default;

    /// Gets the window that was made from the main storyboard, before the launch
    /// is announced.
    virtual void setWindow(const std::shared_ptr<UIWindow> & /*window*/) {}

    /// The storyboard is loaded, the window not shown yet. The answer is for
    /// launches with an address to open, which a desktop program does not get.
    virtual bool application(UIApplication & /*application*/,
                             const UIApplicationLaunchOptions & /*launchOptions*/)
    {
        return true;
    }

    /// The window is about to lose the keyboard.
    virtual void applicationWillResignActive(UIApplication & /*application*/) {}
    /// The window has been minimised.
    virtual void applicationDidEnterBackground(UIApplication & /*application*/) {}
    /// The window is about to come back.
    virtual void applicationWillEnterForeground(UIApplication & /*application*/) {}
    /// The window has got the keyboard.
    virtual void applicationDidBecomeActive(UIApplication & /*application*/) {}
    /// The program is about to end.
    virtual void applicationWillTerminate(UIApplication & /*application*/) {}
};
