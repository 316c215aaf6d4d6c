#include "Platform/LV2/PluginView.hpp"

#include "Platform/Foundation/PlatformError.hpp"
#include "Tests/Platform/LV2/HeldPlugin.hpp"
#include "Tests/Utilities/EnvironmentVariable.hpp"
#include "Tests/Utilities/XServer.hpp"
#include "Tests/Utilities/XWindows.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <thread>
#include <vector>

using platform::lv2::PluginView;
using platform::lv2::ViewSize;
using testing::HasSubstr;
using testsupport::HeldPlugin;
using testsupport::ownBundle;

namespace
{

constexpr std::chrono::seconds patience{10};

platform::lv2::Plugin viewedPlugin(const std::string &kind)
{
    return {"urn:test:view:" + kind, ownBundle("view")};
}

} // namespace

/// One server for all tests of the suite: each starts in 0.1 s.
class PluginViewTest : public testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        server.emplace();
        ASSERT_FALSE(server->display().empty()) << "Xvfb does not start.";
    }
    static void TearDownTestSuite() { server.reset(); }

    void open(const std::string &kind)
    {
        held.emplace("urn:test:view:" + kind, ownBundle("view"));
        view.emplace(held->plugin, held->instance, held->exchange, *held->plugin.x11View(),
                     PluginView::Place{parent, 2});
    }

    test::XWindows::Window own() const
    {
        const auto children = x.children(parent);
        return children.empty() ? 0 : children.front();
    }
    std::string report() const { return x.text(own(), "VIEW_REPORT"); }

    /// Keeps the view going until `condition` holds.
    bool idleUntil(const std::function<bool()> &condition)
    {
        const auto end = std::chrono::steady_clock::now() + patience;
        while (!condition() && std::chrono::steady_clock::now() < end) {
            view->idle();
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
        return condition();
    }

    static inline std::optional<test::XServer> server;
    const test::EnvironmentVariable display{"DISPLAY", server->display()};
    test::XWindows x;
    const test::XWindows::Window parent = x.make(640, 480);
    std::optional<HeldPlugin> held;
    std::optional<PluginView> view;
};

TEST_F(PluginViewTest, OpensInsideItsParentAndGoesWithoutATrace)
{
    open("plain");
    EXPECT_TRUE(x.isViewable(own()));
    EXPECT_EQ(view->size(), (ViewSize{200, 100}));
    view.reset();
    EXPECT_TRUE(x.children(parent).empty());
    EXPECT_TRUE(x.isThere(parent));
}

TEST_F(PluginViewTest, TellsTheViewItsSurroundings)
{
    open("plain");
    EXPECT_THAT(report(), HasSubstr("scale=2 rate=50 instance=yes"));
}

TEST_F(PluginViewTest, TellsTheViewEveryControl)
{
    open("plain");
    EXPECT_TRUE(idleUntil([&] { return report().find("gain=1 peak=0") == 0; })) << report();
    held->instance.setControl("gain", 4);
    EXPECT_TRUE(idleUntil([&] { return report().find("gain=4") == 0; })) << report();
    held->run(16, 1);
    std::vector<float> input(16, 2.0F);
    std::vector<float> output(16);
    const float *in = input.data();
    float *out = output.data();
    held->instance.run(&in, &out, 16, 0);
    EXPECT_TRUE(idleUntil([&] { return report().find("gain=4 peak=8") == 0; })) << report();
}

TEST_F(PluginViewTest, TakesTheViewsSettings)
{
    open("plain");
    EXPECT_FALSE(view->takeHasChangedSettings());
    x.sendClick(own(), 1);
    EXPECT_TRUE(idleUntil([&] { return held->instance.controls().at("gain") == 5; }));
    EXPECT_TRUE(view->takeHasChangedSettings());
    EXPECT_FALSE(view->takeHasChangedSettings());
}

TEST_F(PluginViewTest, CarriesEventsBothWays)
{
    open("plain");
    x.sendClick(own(), 3);
    EXPECT_TRUE(idleUntil([&] {
        held->run(16, 1);
        return report().find("answer=why?") != std::string::npos;
    })) << report();
}

TEST_F(PluginViewTest, KeepsNoEventsWhileNobodyLooks)
{
    open("plain");
    view.reset();
    const LV2_Atom event{0, 1};
    for (int i = 0; i < 100; ++i) {
        ASSERT_TRUE(held->instance.traffic().send(2, event));
        held->run(16, 1);
    }
    EXPECT_FALSE(held->instance.traffic().next());
}

TEST_F(PluginViewTest, LosesEventsRatherThanWait)
{
    open("plain");
    const LV2_Atom event{0, 1};
    int sent = 0;
    while (sent < 1000000 && held->instance.traffic().send(2, event))
        ++sent;
    EXPECT_GT(sent, 1000);
    EXPECT_LT(sent, 1000000);
    // The plug-in runs on with as many as its port takes.
    EXPECT_EQ(held->run(16, 1).size(), 16U);
}

TEST_F(PluginViewTest, SeesAViewThatResizesItsOwnWindow)
{
    open("growing");
    EXPECT_TRUE(idleUntil([&] { return view->size() == ViewSize{320, 240}; }));
}

TEST_F(PluginViewTest, GivesAViewTheSizeThatItAsksFor)
{
    open("asking");
    EXPECT_TRUE(idleUntil([&] { return view->size() == ViewSize{260, 140}; }));
    EXPECT_TRUE(idleUntil([&] { return x.extent(own()).width == 260; }));
}

TEST_F(PluginViewTest, ResizesTheView)
{
    open("plain");
    view->resize({300, 150});
    EXPECT_TRUE(idleUntil([&] { return view->size() == ViewSize{300, 150}; }));
    EXPECT_EQ(x.extent(own()).height, 150);
}

TEST_F(PluginViewTest, SaysThatTheViewWantsToBeClosed)
{
    open("closing");
    EXPECT_TRUE(view->idle());
    EXPECT_TRUE(view->idle());
    EXPECT_FALSE(view->idle());
}

TEST_F(PluginViewTest, RefusesWhatRefuses)
{
    EXPECT_THROW(open("refusing"), PlatformError);
    EXPECT_THROW(open("missing"), PlatformError);
}

TEST_F(PluginViewTest, OutlivesItsParent)
{
    open("plain");
    x.destroy(parent);
    for (int i = 0; i < 10; ++i)
        view->idle();
    view.reset();
    EXPECT_EQ(held->run(16, 1).size(), 16U);
}

TEST_F(PluginViewTest, NeedsADisplay)
{
    const test::EnvironmentVariable none{"DISPLAY", ":12345"};
    EXPECT_THROW(open("plain"), PlatformError);
}

TEST(ViewDescriptionTest, IsThereForAViewThatCanBeServed)
{
    EXPECT_TRUE(viewedPlugin("plain").x11View());
    EXPECT_FALSE(viewedPlugin("demanding").x11View());
    EXPECT_FALSE(platform::lv2::Plugin("urn:test:amplifier", ownBundle("amplifier")).x11View());
}

TEST(ViewDescriptionTest, SaysHowTheViewIsToBeTreated)
{
    const auto plain = viewedPlugin("plain").x11View();
    EXPECT_EQ(plain->updateRate, 50);
    EXPECT_TRUE(plain->isResizable);
    const auto fixed = viewedPlugin("fixed").x11View();
    EXPECT_EQ(fixed->updateRate, 60);
    EXPECT_FALSE(fixed->isResizable);
    EXPECT_EQ(viewedPlugin("tall").x11View()->updateRate, 30);
}
