#include "Platform/Interface/ClassRegistry.hpp"
#include "Platform/Interface/UIStoryboard.hpp"
#include "Platform/Interface/UIView.hpp"
#include "Platform/Interface/Widget.hpp"
#include "Tests/Platform/Interface/Display.hpp"
#include "Tests/Platform/Interface/Recorder.hpp"
#include "Tests/Utilities/Places.hpp"

#include <gtkmm/button.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using ::testing::ElementsAre;

namespace
{

std::shared_ptr<Bundle> testBundle()
{
    return std::make_shared<Bundle>(
        URL::fileURLWithPath(test::sourcePath("Tests/Platform/Interface/Bundle")));
}

} // namespace

class StoryboardTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        NSStringFromClass<Recorder>();
        const UIStoryboard storyboard("Recorder", testBundle());
        controller =
            std::dynamic_pointer_cast<Recorder>(storyboard.instantiateInitialViewController());
        ASSERT_NE(controller, nullptr);
    }

    std::shared_ptr<Recorder> controller;
};

TEST_F(StoryboardTest, LoadsTheViewAtItsFirstUseOnly)
{
    EXPECT_FALSE(controller->isViewLoaded());
    EXPECT_EQ(controller->first, nullptr);
    const auto view = controller->view();
    EXPECT_EQ(controller->view(), view);
    EXPECT_THAT(controller->calls, ElementsAre("viewDidLoad"));
}

TEST_F(StoryboardTest, ConnectsOutletsBeforeTheViewIsSaidToBeLoaded)
{
    bool connected = false;
    controller->onCall = [&](const std::string &) { connected = controller->first != nullptr; };
    controller->loadViewIfNeeded();
    EXPECT_TRUE(connected);
    EXPECT_NE(controller->second, nullptr);
    EXPECT_NE(controller->area, nullptr);
}

TEST_F(StoryboardTest, LeavesAMissingOutletEmpty)
{
    controller->loadViewIfNeeded();
    EXPECT_EQ(controller->absent, nullptr);
}

TEST_F(StoryboardTest, KeepsTheFilesOrderAndNestingOfViews)
{
    const auto view = controller->view();
    ASSERT_EQ(view->subviews().size(), 4U);
    EXPECT_EQ(view->subviews()[0], controller->first);
    EXPECT_EQ(view->subviews()[1], controller->second);
    EXPECT_EQ(view->subviews()[3], controller->area);
    EXPECT_EQ(controller->area->superview(), view);
    ASSERT_EQ(controller->area->subviews().size(), 1U);
    EXPECT_EQ(controller->area->subviews()[0]->superview(), controller->area);
    EXPECT_EQ(view->superview(), nullptr);
}

TEST_F(StoryboardTest, SendsTheActionWithTheButtonThatWasPressed)
{
    controller->loadViewIfNeeded();
    controller->first->sendActions();
    controller->second->sendActions();
    EXPECT_THAT(controller->senders, ElementsAre(controller->first, controller->second));
}

TEST_F(StoryboardTest, PressesOnceThroughTheWidget)
{
    controller->loadViewIfNeeded();
    auto &button = dynamic_cast<Gtk::Button &>(controller->second->widget().get());
    EXPECT_TRUE(button.is_sensitive());
    g_signal_emit_by_name(button.gobj(), "clicked");
    EXPECT_THAT(controller->senders, ElementsAre(controller->second));
}

TEST_F(StoryboardTest, LetsAShortcutSendAnAction)
{
    controller->loadViewIfNeeded();
    EXPECT_TRUE(controller->first->widget().get().activate_action("screen.onPress"));
    EXPECT_THAT(controller->senders, ElementsAre(controller->first));
}

TEST_F(StoryboardTest, DoesNotLetAnUnknownActionBePressed)
{
    const auto unknown = controller->view()->subviews()[2];
    EXPECT_FALSE(unknown->widget().get().is_sensitive());
}

TEST_F(StoryboardTest, SendsNothingToAControllerThatIsGone)
{
    const auto view = controller->view();
    const auto button = controller->first;
    const std::weak_ptr<Recorder> gone = controller;
    controller.reset();
    ASSERT_TRUE(gone.expired());
    button->sendActions();
}

TEST(Nib, LoadsTheNamedFileOfItsBundle)
{
    const auto controller = std::make_shared<Recorder>("Recorder", testBundle());
    controller->loadViewIfNeeded();
    EXPECT_NE(controller->first, nullptr);
    EXPECT_THAT(controller->calls, ElementsAre("viewDidLoad"));
}

TEST(Nib, GivesAnEmptyViewWithoutAName)
{
    const auto controller = std::make_shared<Recorder>(std::nullopt, nullptr);
    ASSERT_NE(controller->view(), nullptr);
    EXPECT_TRUE(controller->view()->subviews().empty());
    EXPECT_EQ(controller->first, nullptr);
}

class BadStoryboard : public ::testing::Test
{
protected:
    void SetUp() override { GTEST_FLAG_SET(death_test_style, "threadsafe"); }

    static void load(const char *name)
    {
        startInterface();
        const UIStoryboard storyboard(name, testBundle());
        storyboard.instantiateInitialViewController();
    }
};

using BadStoryboardDeathTest = BadStoryboard;

TEST_F(BadStoryboardDeathTest, TellsThatTheFileIsMissing)
{
    EXPECT_DEATH(load("Nowhere"), "Fatal error: Could not find a storyboard named 'Nowhere'");
}

TEST_F(BadStoryboardDeathTest, TellsWhereTheFileIsMalformed)
{
    EXPECT_DEATH(load("Broken"), "Fatal error: Could not load a storyboard: .*Broken.ui.*line 2");
}

TEST_F(BadStoryboardDeathTest, TellsThatThereAreTwoViews)
{
    EXPECT_DEATH(load("TwoViews"), "holds more than one top-level widget");
}

TEST_F(BadStoryboardDeathTest, TellsThatThereIsNoView)
{
    EXPECT_DEATH(load("NoView"), "holds no widget");
}

TEST_F(BadStoryboardDeathTest, TellsThatTheClassIsUnknown)
{
    EXPECT_DEATH(load("Unregistered"),
                 "the class 'NobodysController', which is no view controller");
}
