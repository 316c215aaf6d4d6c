#include "Platform/Interface/UIWindow.hpp"
#include "Platform/Interface/Widget.hpp"
#include "Tests/Platform/Interface/Recorder.hpp"
#include "Tests/Platform/Interface/ShownScreen.hpp"
#include "Tests/Utilities/Places.hpp"

#include <gtkmm/window.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using test::shows;
using ::testing::ElementsAre;

namespace
{

std::shared_ptr<Recorder> makeController()
{
    const auto bundle = std::make_shared<Bundle>(
        URL::fileURLWithPath(test::sourcePath("Tests/Platform/Interface/Bundle")));
    return std::make_shared<Recorder>("Recorder", bundle);
}

bool waitForAppearance(const Recorder &controller)
{
    return shows(
        [&] { return !controller.calls.empty() && controller.calls.back() == "viewDidAppear"; });
}

} // namespace

class UIWindowTest : public ::testing::Test
{
protected:
    void showController()
    {
        window->setRootViewController(controller);
        window->makeKeyAndVisible();
        ASSERT_TRUE(waitForAppearance(*controller));
    }

    Gtk::Window &gtkWindow() const { return dynamic_cast<Gtk::Window &>(window->widget().get()); }
    bool hasKeyboard(const UIView &view) const
    {
        return gtkWindow().get_focus() == &view.widget().get();
    }

    std::shared_ptr<UIWindow> window = UIWindow::create("Window", 320, 200);
    std::shared_ptr<Recorder> controller = makeController();
};

TEST_F(UIWindowTest, TellsItsControllerOfTheViewsLifeInOrder)
{
    showController();
    EXPECT_THAT(controller->calls, ElementsAre("viewDidLoad", "viewWillAppear",
                                               "viewDidLayoutSubviews", "viewDidAppear"));
}

TEST_F(UIWindowTest, LoadsNothingBeforeItIsShown)
{
    window->setRootViewController(controller);
    EXPECT_FALSE(controller->isViewLoaded());
}

TEST_F(UIWindowTest, ReplacesTheScreenWhileShown)
{
    showController();
    const auto next = makeController();
    window->setRootViewController(next);
    ASSERT_TRUE(waitForAppearance(*next));
    EXPECT_THAT(controller->calls,
                ElementsAre("viewDidLoad", "viewWillAppear", "viewDidLayoutSubviews",
                            "viewDidAppear", "viewWillDisappear", "viewDidDisappear"));
    EXPECT_EQ(next->view()->widget().get().get_root(), &gtkWindow());
    EXPECT_EQ(controller->view()->widget().get().get_root(), nullptr);
}

TEST_F(UIWindowTest, ShowsTheSameScreenAgainWhenItWasHidden)
{
    showController();
    gtkWindow().set_visible(false);
    window->makeKeyAndVisible();
    const Gtk::Widget &page = controller->view()->widget().get();
    EXPECT_TRUE(shows([&] { return page.get_mapped(); }));
    window->setRootViewController(controller);
    EXPECT_TRUE(page.get_mapped());
}

TEST_F(UIWindowTest, LetsGoOfTheFormerScreen)
{
    const auto goes = [&](const std::function<void()> &happens) {
        controller = makeController();
        showController();
        happens();
        const std::weak_ptr view = controller->view();
        const std::weak_ptr formerController = controller;
        window->setRootViewController(nullptr);
        controller.reset();
        return shows([&] { return view.expired() && formerController.expired(); });
    };
    EXPECT_TRUE(goes([] {}));
    EXPECT_TRUE(goes([&] {
        controller->view()->setHidden(true);
        controller->view()->setHidden(false);
    }));
    EXPECT_TRUE(goes([&] { controller->view()->setHidden(true); }));
    EXPECT_TRUE(goes([&] { controller->present(makeController(), true); }));
    EXPECT_TRUE(goes([&] {
        controller->present(makeController(), false);
        controller->dismiss(true);
    }));
    EXPECT_TRUE(goes([&] {
        gtkWindow().set_visible(false);
        window->makeKeyAndVisible();
    }));
    EXPECT_TRUE(goes([&] { gtkWindow().set_visible(false); }));
    EXPECT_TRUE(goes([&] {
        controller->present(makeController(), true);
        gtkWindow().set_visible(false);
        window->makeKeyAndVisible();
    }));
    EXPECT_TRUE(goes([&] {
        controller->present(makeController(), false);
        controller->dismiss(true);
        gtkWindow().set_visible(false);
    }));
}

TEST_F(UIWindowTest, CallsItsHandlerWhenItIsClosed)
{
    int closed = 0;
    window->setCloseHandler([&] { ++closed; });
    showController();
    gtkWindow().close();
    ASSERT_TRUE(shows([&] { return closed > 0; }));
    EXPECT_EQ(closed, 1);
}

TEST_F(UIWindowTest, HidesAndShowsViews)
{
    showController();
    controller->area->setHidden(true);
    EXPECT_TRUE(controller->area->isHidden());
    EXPECT_FALSE(controller->area->widget().get().is_visible());
    controller->area->setHidden(false);
    EXPECT_FALSE(controller->area->isHidden());
}

TEST_F(UIWindowTest, HandsTheKeyboardToTheViewShownInPlaceOfAHiddenOne)
{
    const auto other = controller->view()->subviews()[2];
    showController();
    other->setHidden(true);
    other->widget().get().set_sensitive(true);
    controller->second->widget().get().grab_focus();
    ASSERT_TRUE(hasKeyboard(*controller->second));

    controller->second->setHidden(true);
    other->setHidden(false);
    EXPECT_TRUE(hasKeyboard(*other));
}

TEST_F(UIWindowTest, HandsTheKeyboardToTheNeighbourOfAHiddenView)
{
    const auto other = controller->view()->subviews()[2];
    showController();
    other->widget().get().set_sensitive(true);
    controller->second->widget().get().grab_focus();
    controller->second->setHidden(true);
    EXPECT_TRUE(hasKeyboard(*other));
}

TEST_F(UIWindowTest, LeavesTheKeyboardWhereItIsWhenAnotherViewIsShown)
{
    showController();
    controller->first->widget().get().grab_focus();
    controller->second->setHidden(true);
    controller->second->setHidden(false);
    EXPECT_TRUE(hasKeyboard(*controller->first));
}

TEST_F(UIWindowTest, CanGoWhileItsControllerStays)
{
    showController();
    window.reset();
    EXPECT_NE(controller->view(), nullptr);
    controller->first->setHidden(true);
    EXPECT_TRUE(controller->first->isHidden());
}
