#include "Platform/Foundation/Print.hpp"
#include "Platform/Interface/ClassRegistry.hpp"
#include "Platform/Interface/UIApplication.hpp"
#include "Platform/Interface/UIWindow.hpp"
#include "Platform/Interface/Widget.hpp"
#include "Tests/Platform/Interface/Recorder.hpp"
#include "Tests/Utilities/Places.hpp"

#include <glib.h>
#include <gtkmm/window.h>

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>

namespace
{

/// What ends the program once its window has appeared.
std::function<void(UIWindow &)> ending; // NOLINT(bugprone-dynamic-static-initializers)

/// A delegate that tells each call on standard error, where a death test reads.
class TellingDelegate : public UIResponder, public UIApplicationDelegate
{
public:
    void setWindow(const std::shared_ptr<UIWindow> &value) override
    {
        window_ = value;
        const auto root = std::dynamic_pointer_cast<Recorder>(window_->rootViewController());
        root->onCall = [this](const std::string &call) {
            printError(call);
            if (call == "viewDidAppear")
                ending(*window_);
        };
        printError("window");
    }
    bool application(UIApplication &application,
                     const UIApplicationLaunchOptions &launchOptions) override
    {
        const bool known = &application == &UIApplication::shared();
        printError(known && launchOptions.empty() ? "didFinishLaunching" : "unexpected arguments");
        return true;
    }
    void applicationWillTerminate(UIApplication & /*application*/) override
    {
        printError("willTerminate");
    }

private:
    std::shared_ptr<UIWindow> window_;
};

void stopDevice()
{
    printError("device stopped");
}

void runProgram(std::function<void(UIWindow &)> end)
{
    ending = std::move(end);
    std::at_quick_exit(stopDevice);
    NSStringFromClass<Recorder>();
    Bundle::setMain(std::make_shared<Bundle>(
        URL::fileURLWithPath(test::sourcePath("Tests/Platform/Interface/Bundle"))));
    UIApplicationMain(0, nullptr, std::nullopt, NSStringFromClass<TellingDelegate>());
}

constexpr const char *wholeLife = "window\ndidFinishLaunching\nviewDidLoad\nviewWillAppear\n"
                                  "viewDidLayoutSubviews\nviewDidAppear\nwillTerminate\n"
                                  "device stopped\n";

} // namespace

class UIApplicationDeathTest : public ::testing::Test
{
protected:
    void SetUp() override { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

TEST_F(UIApplicationDeathTest, EndsInOrderOnSIGTERM)
{
    EXPECT_EXIT(runProgram([](UIWindow &) { raise(SIGTERM); }), ::testing::ExitedWithCode(0),
                wholeLife);
}

TEST_F(UIApplicationDeathTest, EndsInOrderOnSIGINT)
{
    EXPECT_EXIT(runProgram([](UIWindow &) { raise(SIGINT); }), ::testing::ExitedWithCode(0),
                wholeLife);
}

TEST_F(UIApplicationDeathTest, EndsInOrderWhenItsWindowIsClosed)
{
    const auto close = [](UIWindow &window) {
        dynamic_cast<Gtk::Window &>(window.widget().get()).close();
    };
    EXPECT_EXIT(runProgram(close), ::testing::ExitedWithCode(0), wholeLife);
}

TEST_F(UIApplicationDeathTest, NeedsADelegateThatExists)
{
    EXPECT_DEATH(UIApplicationMain(0, nullptr, std::nullopt, "Nobody"),
                 "Fatal error: The class 'Nobody' cannot take its part in the program");
    EXPECT_DEATH(UIApplicationMain(0, nullptr, std::nullopt, std::nullopt),
                 "Fatal error: The program names no class for its delegate");
}

TEST_F(UIApplicationDeathTest, NeedsItsProperties)
{
    const auto run = [] {
        Bundle::setMain(std::make_shared<Bundle>(URL::fileURLWithPath("/nonexistent")));
        UIApplicationMain(0, nullptr, std::nullopt, NSStringFromClass<TellingDelegate>());
    };
    EXPECT_DEATH(run(), "Fatal error: The resource 'Application.ini' is missing");
}

TEST_F(UIApplicationDeathTest, NeedsADisplay)
{
    const auto run = [] {
        unsetenv("DISPLAY");
        runProgram([](UIWindow &) {});
    };
    EXPECT_DEATH(run(), "Fatal error: There is no display to open a window on");
}

TEST_F(UIApplicationDeathTest, IsNotThereBeforeItsMain)
{
    EXPECT_DEATH(UIApplication::shared(), "There is no application before UIApplicationMain");
}
