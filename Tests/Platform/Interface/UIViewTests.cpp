#include "Platform/Interface/ClassRegistry.hpp"
#include "Platform/Interface/UIStoryboard.hpp"
#include "Platform/Interface/UIView.hpp"
#include "Tests/Platform/Interface/Display.hpp"
#include "Tests/Platform/Interface/Recorder.hpp"
#include "Tests/Platform/Interface/ShownScreen.hpp"
#include "Tests/Utilities/Places.hpp"

#include <gtkmm/button.h>
#include <gtkmm/label.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using test::PlainScreen;
using test::ShownScreen;
using test::shows;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace
{

std::shared_ptr<UIView> viewWithin(const std::shared_ptr<UIView> &owner, const CGRect &frame)
{
    const auto view = std::make_shared<UIView>();
    view->setFrame(frame);
    owner->addSubview(view);
    return view;
}

void pin(UIView &view, UIView &owner)
{
    view.translatesAutoresizingMaskIntoConstraints = false;
    NSLayoutConstraint::activate({view.topAnchor().constraintEqualTo(owner.topAnchor()),
                                  view.leadingAnchor().constraintEqualTo(owner.leadingAnchor()),
                                  view.bottomAnchor().constraintEqualTo(owner.bottomAnchor()),
                                  view.trailingAnchor().constraintEqualTo(owner.trailingAnchor())});
}

} // namespace

TEST(UIView, KeepsItsFrameToTheLastFraction)
{
    const auto view = std::make_shared<UIView>();
    view->setFrame(CGRect(-250.25, 0.1, 800, 1e-3));
    EXPECT_EQ(view->frame(), CGRect(-250.25, 0.1, 800, 1e-3));
    EXPECT_EQ(view->bounds(), CGRect(0, 0, 800, 1e-3));
}

TEST(UIView, KeepsItsFrameWhileHidden)
{
    const auto owner = std::make_shared<UIView>();
    const auto view = viewWithin(owner, CGRect(1, 2, 3, 4));
    view->setHidden(true);
    view->setFrame(CGRect(5, 6, 7, 8));
    EXPECT_TRUE(view->isHidden());
    EXPECT_EQ(view->frame(), CGRect(5, 6, 7, 8));
}

TEST(UIView, HoldsSubviewsInOrder)
{
    const auto owner = std::make_shared<UIView>();
    const auto first = viewWithin(owner, {});
    const auto second = viewWithin(owner, {});
    EXPECT_THAT(owner->subviews(), ElementsAre(first, second));
    owner->addSubview(first);
    EXPECT_THAT(owner->subviews(), ElementsAre(second, first));
    EXPECT_EQ(first->superview(), owner);
    EXPECT_TRUE(first->isDescendant(*owner));
    EXPECT_FALSE(owner->isDescendant(*first));
}

TEST(UIView, LeavesItsFormerSuperview)
{
    const auto former = std::make_shared<UIView>();
    const auto owner = std::make_shared<UIView>();
    const auto view = viewWithin(former, {});
    owner->addSubview(view);
    EXPECT_THAT(former->subviews(), IsEmpty());
    EXPECT_EQ(view->superview(), owner);
    view->removeFromSuperview();
    EXPECT_EQ(view->superview(), nullptr);
    EXPECT_THAT(owner->subviews(), IsEmpty());
    view->removeFromSuperview();
}

TEST(UIView, OutlivesItsSuperview)
{
    auto owner = std::make_shared<UIView>();
    const auto view = viewWithin(owner, {});
    owner.reset();
    EXPECT_EQ(view->superview(), nullptr);
    viewWithin(std::make_shared<UIView>(), {})->addSubview(view);
}

TEST(UIView, FollowsConstraintsAtOnce)
{
    const auto owner = std::make_shared<UIView>();
    owner->setFrame(CGRect(0, 0, 640.5, 480));
    const auto view = viewWithin(owner, CGRect(1, 2, 3, 4));
    const auto inner = viewWithin(view, {});
    pin(*inner, *view);
    pin(*view, *owner);
    EXPECT_EQ(view->frame(), CGRect(0, 0, 640.5, 480));
    owner->setFrame(CGRect(7, 7, 100, 50));
    EXPECT_EQ(view->frame(), CGRect(0, 0, 100, 50));
    EXPECT_EQ(inner->frame(), CGRect(0, 0, 100, 50));
}

TEST(UIView, FollowsConstraintsToASibling)
{
    const auto owner = std::make_shared<UIView>();
    owner->setFrame(CGRect(0, 0, 300, 100));
    const auto left = viewWithin(owner, CGRect(0, 0, 80, 100));
    const auto right = viewWithin(owner, CGRect(0, 0, 10, 100));
    right->translatesAutoresizingMaskIntoConstraints = false;
    NSLayoutConstraint::activate(
        {right->leadingAnchor().constraintEqualTo(left->trailingAnchor()),
         right->trailingAnchor().constraintEqualTo(owner->trailingAnchor())});
    EXPECT_EQ(right->frame(), CGRect(80, 0, 220, 100));
    left->setFrame(CGRect(0, 0, 120, 100));
    EXPECT_EQ(right->frame(), CGRect(120, 0, 180, 100));
}

TEST(UIView, LetsTheFrameStandWhileItTranslatesTheMask)
{
    const auto owner = std::make_shared<UIView>();
    owner->setFrame(CGRect(0, 0, 300, 100));
    const auto view = viewWithin(owner, CGRect(1, 2, 3, 4));
    NSLayoutConstraint::activate({view->topAnchor().constraintEqualTo(owner->topAnchor())});
    EXPECT_EQ(view->frame(), CGRect(1, 2, 3, 4));
}

TEST(UIView, ForgetsConstraintsOfAViewThatLeaves)
{
    const auto owner = std::make_shared<UIView>();
    owner->setFrame(CGRect(0, 0, 300, 100));
    const auto view = viewWithin(owner, CGRect(1, 2, 3, 4));
    pin(*view, *owner);
    const auto constraint = owner->constraints().front();
    EXPECT_TRUE(constraint->isActive());
    view->removeFromSuperview();
    EXPECT_THAT(owner->constraints(), IsEmpty());
    EXPECT_FALSE(constraint->isActive());
}

TEST(UIView, CanBeFreedOfItsConstraints)
{
    const auto owner = std::make_shared<UIView>();
    const auto view = viewWithin(owner, CGRect(1, 2, 3, 4));
    pin(*view, *owner);
    const auto all = owner->constraints();
    NSLayoutConstraint::deactivate(all);
    owner->setFrame(CGRect(0, 0, 300, 100));
    EXPECT_EQ(view->frame().size, CGSize{});
    EXPECT_THAT(owner->constraints(), IsEmpty());
}

class ShownView : public ::testing::Test
{
protected:
    std::shared_ptr<PlainScreen> controller = std::make_shared<PlainScreen>();
    ShownScreen screen{controller};
    std::shared_ptr<UIView> root = controller->view();

    CGRect drawn(const UIView &view) const { return ShownScreen::drawnFrame(view, *root); }
    bool isDrawnAt(const UIView &view, const CGRect &frame) const
    {
        return shows([&] { return drawn(view) == frame; });
    }
};

TEST_F(ShownView, FillsItsWindow)
{
    EXPECT_EQ(root->window(), screen.window);
    EXPECT_EQ(root->bounds(), CGRect(0, 0, 400, 300));
}

TEST_F(ShownView, IsDrawnWhereItsFrameIs)
{
    const auto view = viewWithin(root, CGRect(10, 20, 100, 50));
    EXPECT_TRUE(isDrawnAt(*view, CGRect(10, 20, 100, 50)));
    view->setFrame(CGRect(30, 40, 120, 60));
    EXPECT_TRUE(isDrawnAt(*view, CGRect(30, 40, 120, 60)));
}

TEST_F(ShownView, IsDrawnOnWholePoints)
{
    const auto view = viewWithin(root, CGRect(10.4, 20.6, 100.3, 50));
    EXPECT_TRUE(isDrawnAt(*view, CGRect(10, 21, 101, 50)));
    EXPECT_EQ(view->frame(), CGRect(10.4, 20.6, 100.3, 50));
}

TEST_F(ShownView, IsDrawnOutsideItsSuperviewToo)
{
    const auto view = viewWithin(root, CGRect(-250, 0, 800, 600));
    EXPECT_TRUE(isDrawnAt(*view, CGRect(-250, 0, 800, 600)));
    EXPECT_EQ(root->bounds(), CGRect(0, 0, 400, 300)) << "The window does not grow for it.";
}

TEST_F(ShownView, FollowsTheWindowThroughItsConstraints)
{
    const auto view = viewWithin(root, {});
    pin(*view, *root);
    EXPECT_TRUE(isDrawnAt(*view, CGRect(0, 0, 400, 300)));
    screen.resize(*controller, {500, 350});
    EXPECT_TRUE(isDrawnAt(*view, CGRect(0, 0, 500, 350)));
    EXPECT_EQ(view->frame(), CGRect(0, 0, 500, 350));
}

TEST_F(ShownView, ShowsItsContentBehindItsSubviews)
{
    auto *label = Gtk::make_managed<Gtk::Label>("Content");
    const auto view = viewWithin(root, CGRect(0, 0, 200, 100));
    const auto inner = viewWithin(view, CGRect(5, 5, 10, 10));
    view->setContent(std::make_unique<platform::interface::Widget>(*label));
    EXPECT_TRUE(shows([&] { return label->get_width() == 200; }));
    EXPECT_EQ(label->get_next_sibling(), &inner->widget().get());
}

class StoryboardView : public ::testing::Test
{
protected:
    void SetUp() override
    {
        NSStringFromClass<Recorder>();
        controller = std::dynamic_pointer_cast<Recorder>(
            UIStoryboard("Places", std::make_shared<Bundle>(URL::fileURLWithPath(
                                       test::sourcePath("Tests/Platform/Interface/Bundle"))))
                .instantiateInitialViewController());
        screen = std::make_unique<ShownScreen>(controller);
    }

    std::shared_ptr<Recorder> controller;
    std::unique_ptr<ShownScreen> screen;
};

TEST_F(StoryboardView, LearnsItsFrameFromTheStoryboard)
{
    EXPECT_EQ(controller->area->frame(), CGRect(20, 40, 360, 240));
    EXPECT_EQ(controller->area->superview(), controller->view());
}

TEST_F(StoryboardView, KeepsItsPlaceWhileHidden)
{
    controller->area->setHidden(true);
    EXPECT_TRUE(shows([&] { return !controller->area->widget().get().get_mapped(); }));
    screen->resize(*controller, {500, 300});
    EXPECT_TRUE(shows([&] { return controller->area->frame() == CGRect(20, 40, 460, 240); }));
    controller->area->setHidden(false);
    EXPECT_TRUE(shows([&] { return controller->area->widget().get().get_mapped(); }));
}

TEST_F(StoryboardView, StaysWhereItsFrameIsSet)
{
    const CGRect frame(-50, 100, 500, 375);
    controller->area->setFrame(frame);
    const auto isThere = [&] {
        return ShownScreen::drawnFrame(*controller->area, *controller->view()) == frame;
    };
    EXPECT_TRUE(shows(isThere));
    screen->resize(*controller, {500, 300});
    EXPECT_TRUE(shows(isThere));
    EXPECT_EQ(controller->area->frame(), frame);
}

TEST_F(StoryboardView, TakesSubviewsIntoAnEmptyBox)
{
    controller->area->setHidden(true);
    const auto view = viewWithin(controller->area, controller->area->bounds());
    pin(*view, *controller->area);
    EXPECT_EQ(view->frame(), CGRect(0, 0, 360, 240));
    screen->resize(*controller, {500, 300});
    EXPECT_TRUE(shows([&] { return view->frame() == CGRect(0, 0, 460, 240); }))
        << "Hidden views are laid out, too.";
    controller->area->setHidden(false);
    EXPECT_TRUE(shows([&] {
        return ShownScreen::drawnFrame(*view, *controller->view()) == CGRect(20, 40, 460, 240);
    }));
}

TEST_F(StoryboardView, TakesSubviewsAroundTheWholeScreen)
{
    const auto view = viewWithin(controller->view(), CGRect(1, 2, 30, 40));
    EXPECT_TRUE(shows([&] {
        return ShownScreen::drawnFrame(*view, *controller->view()) == CGRect(1, 2, 30, 40);
    }));
}

TEST_F(StoryboardView, HidesAControlWithItsRoom)
{
    controller->first->setHidden(true);
    EXPECT_TRUE(shows([&] { return controller->area->frame().origin.y == 0; }));
}

TEST_F(StoryboardView, LosesTheKeyboardWhenHidden)
{
    auto *inside = Gtk::make_managed<Gtk::Button>("Inside");
    controller->area->setContent(std::make_unique<platform::interface::Widget>(*inside));
    ASSERT_TRUE(shows([&] { return inside->get_mapped(); }));
    ASSERT_TRUE(controller->area->takeKeyboard());
    ASSERT_EQ(screen->gtkWindow().get_focus(), inside);
    controller->area->setHidden(true);
    EXPECT_EQ(screen->gtkWindow().get_focus(), nullptr);
}

class UIViewDeathTest : public ::testing::Test
{
protected:
    void SetUp() override { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

TEST_F(UIViewDeathTest, CannotHoldItself)
{
    const auto put = [] {
        startInterface();
        const auto owner = std::make_shared<UIView>();
        const auto view = std::make_shared<UIView>();
        owner->addSubview(view);
        view->addSubview(owner);
    };
    EXPECT_DEATH(put(), "Fatal error: A view cannot be put inside itself");
}

TEST_F(UIViewDeathTest, TakesNoSubviewsIntoAWidget)
{
    const auto put = [] {
        startInterface();
        const auto owner = std::make_shared<UIView>(
            std::make_unique<platform::interface::Widget>(*Gtk::make_managed<Gtk::Label>()));
        owner->addSubview(std::make_shared<UIView>());
    };
    EXPECT_DEATH(put(), "Fatal error: A view that is filled by its own widget takes no subviews");
}

TEST_F(UIViewDeathTest, CannotBeTiedToAStranger)
{
    const auto tie = [] {
        startInterface();
        const auto one = std::make_shared<UIView>();
        const auto other = std::make_shared<UIView>();
        NSLayoutConstraint::activate({one->topAnchor().constraintEqualTo(other->topAnchor())});
    };
    EXPECT_DEATH(tie(),
                 "Fatal error: A constraint needs a view and its superview, or two siblings");
}
