#include "Platform/Interface/ClassRegistry.hpp"
#include "Platform/Interface/UIStoryboard.hpp"
#include "Platform/Interface/UIStoryboardSegue.hpp"
#include "Platform/Interface/UIView.hpp"
#include "Tests/Platform/Interface/Display.hpp"
#include "Tests/Platform/Interface/Recorder.hpp"
#include "Tests/Platform/Interface/ShownScreen.hpp"
#include "Tests/Utilities/Places.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

using test::PlainScreen;
using test::ShownScreen;
using test::shows;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace
{

std::shared_ptr<Bundle> testBundle()
{
    return std::make_shared<Bundle>(
        URL::fileURLWithPath(test::sourcePath("Tests/Platform/Interface/Bundle")));
}

} // namespace

/// A screen below and one that comes up over it; both note in one list.
class Presentation : public ::testing::TestWithParam<bool>
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(shows([&] {
            return std::find(below->calls.begin(), below->calls.end(), "viewDidAppear") !=
                   below->calls.end();
        }));
        below->onCall = [this](const std::string &call) { events.push_back("below " + call); };
        above->onCall = [this](const std::string &call) { events.push_back("above " + call); };
    }

    std::shared_ptr<Recorder> makeRecorder() const
    {
        return std::make_shared<Recorder>("Recorder", testBundle());
    }

    void present(bool animated)
    {
        bool there = false;
        below->present(above, animated, [&] { there = true; });
        EXPECT_FALSE(there) << "It takes at least a layout.";
        ASSERT_TRUE(shows([&] { return there; }));
    }

    void dismiss(UIViewController &controller, bool animated)
    {
        bool gone = false;
        controller.dismiss(animated, [&] { gone = true; });
        ASSERT_TRUE(shows([&] { return gone; }));
    }

    bool isMapped(UIViewController &controller) const
    {
        return controller.view()->widget().get().get_mapped();
    }

    std::vector<std::string> events;
    std::shared_ptr<Recorder> below = makeRecorder();
    std::shared_ptr<Recorder> above = makeRecorder();
    ShownScreen screen{below};
};

INSTANTIATE_TEST_SUITE_P(Animated, Presentation, ::testing::Bool());

TEST_P(Presentation, BringsAScreenUpInOrder)
{
    present(GetParam());
    // Whether there is a layout after the last step is GTK's affair.
    while (events.back() == "above viewDidLayoutSubviews")
        events.pop_back();
    EXPECT_THAT(events, ElementsAre("above viewDidLoad", "below viewWillDisappear",
                                    "above viewWillAppear", "above viewDidLayoutSubviews",
                                    "above viewDidAppear", "below viewDidDisappear"));
    EXPECT_EQ(below->presentedViewController(), above);
    EXPECT_EQ(above->presentingViewController(), below);
    EXPECT_TRUE(isMapped(*above));
    EXPECT_FALSE(isMapped(*below)) << "What is covered is not there for keyboard and pointer.";
    EXPECT_EQ(above->view()->bounds().size, below->view()->bounds().size);
}

TEST_P(Presentation, TakesItAwayInOrder)
{
    present(GetParam());
    events.clear();
    dismiss(*above, GetParam());
    events.erase(std::remove(events.begin(), events.end(), "below viewDidLayoutSubviews"),
                 events.end());
    EXPECT_THAT(events, ElementsAre("above viewWillDisappear", "below viewWillAppear",
                                    "below viewDidAppear", "above viewDidDisappear"));
    EXPECT_EQ(below->presentedViewController(), nullptr);
    EXPECT_EQ(above->presentingViewController(), nullptr);
    EXPECT_TRUE(isMapped(*below));
    EXPECT_EQ(above->view()->window(), nullptr);
}

TEST_P(Presentation, LetsGoOfTheScreenAfterwards)
{
    present(GetParam());
    const std::weak_ptr<Recorder> gone = above;
    dismiss(*below, GetParam());
    above.reset();
    test::shows([&] { return gone.expired(); });
    EXPECT_TRUE(gone.expired());
}

TEST_P(Presentation, BringsTheSameScreenUpAgain)
{
    present(GetParam());
    dismiss(*above, GetParam());
    present(GetParam());
    EXPECT_TRUE(isMapped(*above));
}

TEST_P(Presentation, GoesOnToTheNextScreenAndBackFromBoth)
{
    present(GetParam());
    const auto third = makeRecorder();
    bool there = false;
    above->present(third, GetParam(), [&] { there = true; });
    ASSERT_TRUE(shows([&] { return there; }));
    EXPECT_TRUE(isMapped(*third));
    dismiss(*below, GetParam());
    EXPECT_EQ(below->presentedViewController(), nullptr);
    EXPECT_EQ(above->presentedViewController(), nullptr);
    EXPECT_TRUE(isMapped(*below));
    EXPECT_EQ(third->calls.back(), "viewDidDisappear");
}

TEST_P(Presentation, CanTurnBackHalfWay)
{
    bool there = false;
    below->present(above, GetParam(), [&] { there = true; });
    dismiss(*above, GetParam());
    EXPECT_TRUE(there);
    EXPECT_TRUE(isMapped(*below));
    EXPECT_EQ(above->calls.back(), "viewDidDisappear");
}

TEST_P(Presentation, IsDismissedOnce)
{
    present(GetParam());
    int gone = 0;
    above->dismiss(GetParam(), [&] { ++gone; });
    above->dismiss(GetParam(), [&] { ++gone; });
    ASSERT_TRUE(shows([&] { return gone > 0; }));
    EXPECT_EQ(gone, 1);
}

TEST_P(Presentation, GoesWithAScreenThatIsReplaced)
{
    present(GetParam());
    const auto next = makeRecorder();
    screen.window->setRootViewController(next);
    ASSERT_TRUE(shows([&] { return next->calls.back() == "viewDidAppear"; }));
    EXPECT_TRUE(isMapped(*next));
    EXPECT_EQ(above->calls.back(), "viewDidDisappear");
}

TEST_P(Presentation, GivesTheKeyboardToTheScreenAndBack)
{
    auto &second = below->second->widget().get();
    second.grab_focus();
    present(GetParam());
    EXPECT_EQ(screen.gtkWindow().get_focus(), &above->first->widget().get());
    dismiss(*above, GetParam());
    EXPECT_EQ(screen.gtkWindow().get_focus(), &second);
}

TEST_F(Presentation, RefusesASecondScreen)
{
    present(false);
    ::testing::internal::CaptureStderr();
    below->present(makeRecorder(), false);
    EXPECT_EQ(::testing::internal::GetCapturedStderr(),
              "A screen that presents another one cannot present a second.\n");
    EXPECT_EQ(below->presentedViewController(), above);
}

TEST_F(Presentation, NeedsAWindow)
{
    const auto loose = std::make_shared<PlainScreen>();
    ::testing::internal::CaptureStderr();
    loose->present(above, false);
    EXPECT_EQ(::testing::internal::GetCapturedStderr(),
              "A screen that is in no window cannot present another one.\n");
    EXPECT_EQ(loose->presentedViewController(), nullptr);
}

TEST_F(Presentation, IsPresentedByTheScreenThatAChildIsPartOf)
{
    const auto child = std::make_shared<PlainScreen>();
    below->addChild(child);
    below->view()->addSubview(child->view());
    bool there = false;
    child->present(above, false, [&] { there = true; });
    ASSERT_TRUE(shows([&] { return there; }));
    EXPECT_EQ(above->presentingViewController(), below);
    EXPECT_EQ(child->presentedViewController(), above);
    dismiss(*child, false);
    EXPECT_EQ(below->presentedViewController(), nullptr);
}

TEST_F(Presentation, DismissesNothingWhereNothingIsPresented)
{
    below->dismiss(true, [] { FAIL(); });
}

namespace
{

/// A screen that notes the segues from it.
class Crossroads : public UIViewController
{
public:
    using UIViewController::UIViewController;
    void prepare(UIStoryboardSegue &segue, const std::shared_ptr<UIResponder> &sender) override
    {
        UIViewController::prepare(segue, sender);
        identifiers.push_back(segue.identifier().value_or("none"));
        lastSender = sender;
        source = segue.source().get();
        destination = segue.destination();
        destinationWasLoaded = segue.destination()->isViewLoaded();
    }

    std::vector<std::string> identifiers;
    std::shared_ptr<UIResponder> lastSender;
    UIViewController *source = nullptr;
    std::shared_ptr<UIViewController> destination;
    bool destinationWasLoaded = true;
};

const platform::interface::ClassRegistration<Recorder> recorderRegistration;

} // namespace

class Segue : public ::testing::Test
{
protected:
    std::shared_ptr<Crossroads> controller =
        std::make_shared<Crossroads>("Crossroads", testBundle());
    ShownScreen screen{controller};

    std::shared_ptr<UIButton> button() const
    {
        return std::dynamic_pointer_cast<UIButton>(controller->view()->subviews().front());
    }
};

TEST_F(Segue, LeadsFromAControlToTheScreenItNames)
{
    EXPECT_TRUE(button()->widget().get().is_sensitive());
    g_signal_emit_by_name(button()->widget().get().gobj(), "clicked");
    EXPECT_THAT(controller->identifiers, ElementsAre("ShowRecorder"));
    EXPECT_EQ(controller->lastSender, button());
    EXPECT_EQ(controller->source, controller.get());
    EXPECT_FALSE(controller->destinationWasLoaded);
    EXPECT_NE(std::dynamic_pointer_cast<Recorder>(controller->destination), nullptr);
    EXPECT_EQ(controller->presentedViewController(), controller->destination);
}

TEST_F(Segue, LeadsFromAShortcut)
{
    EXPECT_TRUE(button()->widget().get().activate_action("segue.ShowRecorder"));
    EXPECT_THAT(controller->identifiers, ElementsAre("ShowRecorder"));
}

TEST_F(Segue, LeadsToOneScreenAtATime)
{
    button()->sendActions();
    button()->sendActions();
    EXPECT_THAT(controller->identifiers, ElementsAre("ShowRecorder"));
}

TEST_F(Segue, CanBePerformedByCode)
{
    controller->performSegue("ShowRecorder", controller);
    EXPECT_EQ(controller->lastSender, controller);
    EXPECT_NE(controller->presentedViewController(), nullptr);
}

TEST(SegueDeathTest, NeedsToBeInTheStoryboard)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto perform = [] {
        startInterface();
        const auto controller = std::make_shared<Crossroads>("Crossroads", testBundle());
        controller->loadViewIfNeeded();
        controller->performSegue("ShowNothing", nullptr);
    };
    EXPECT_DEATH(perform(), "Fatal error: The screen has no segue with identifier 'ShowNothing'");
}
