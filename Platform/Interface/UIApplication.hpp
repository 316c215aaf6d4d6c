#pragma once

#include "Platform/Interface/Lifecycle.hpp"
#include "Platform/Interface/UIApplicationDelegate.hpp"
#include "Platform/Interface/UIResponder.hpp"

#include <memory>
#include <optional>
#include <string>

namespace platform::interface
{
class ApplicationRunner;
} // namespace platform::interface

/// The running program. Main thread.
class UIApplication : public UIResponder
{
public:
    UIApplication();
    ~UIApplication() override;

    /// The one instance; asking before `UIApplicationMain` is a fatal error.
    static UIApplication &shared();

    /// What hears of the program's life; null for nobody.
    const std::shared_ptr<UIApplicationDelegate> &delegate() const { return delegate_; }
    /// Puts another in its place, which hears what comes from now on.
    void setDelegate(std::shared_ptr<UIApplicationDelegate> delegate);
    /// Whether a window has the focus, is shown, or neither.
    UIApplicationState applicationState() const;

    /// Ends the program: `applicationWillTerminate`, then `std::quick_exit(0)`.
    /// What has to be put down in order, such as a sound device, registers with
    /// `std::at_quick_exit`. Closing the last window, SIGTERM and SIGINT all come
    /// here.
    [[noreturn]] void terminate();

private:
    friend class platform::interface::ApplicationRunner;

    std::shared_ptr<UIApplicationDelegate> delegate_;
    std::unique_ptr<platform::interface::Lifecycle> lifecycle_;
};

/// Makes the application and, by its class's name, the delegate; opens the window
/// with the main storyboard's initial view controller and runs until the program
/// ends, which it does by `UIApplication::terminate`. No principal class means
/// UIApplication. There is no command line: the arguments are not looked at.
/// A class that is not registered, a missing delegate class, absent resources and
/// a missing display are fatal errors.
// NOLINTNEXTLINE(readability-identifier-naming): the name users know
int UIApplicationMain(int argc, char *argv[], const std::optional<std::string> &principalClassName,
                      const std::optional<std::string> &delegateClassName);
