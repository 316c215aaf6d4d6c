#pragma once

#include "Platform/Interface/UIApplicationDelegate.hpp"
#include "Platform/Interface/UIResponder.hpp"

#include <memory>

class UIWindow;

/// The application's delegate. It leaves everything to the main screen: playback
/// goes on in the background, and nothing is saved at the end.
class AppDelegate : public UIResponder, public UIApplicationDelegate
{
public:
    /// The main window, set by the platform.
    std::shared_ptr<UIWindow> window;

    void setWindow(const std::shared_ptr<UIWindow> &value) override;

    bool application(UIApplication &application,
                     const UIApplicationLaunchOptions &launchOptions) override;
    void applicationWillResignActive(UIApplication &application) override;
    void applicationDidEnterBackground(UIApplication &application) override;
    void applicationWillEnterForeground(UIApplication &application) override;
    void applicationDidBecomeActive(UIApplication &application) override;
    void applicationWillTerminate(UIApplication &application) override;
};
