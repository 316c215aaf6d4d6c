#include "Platform/Interface/UIView.hpp"
#include "Platform/Interface/UIViewController.hpp"
#include "Tests/Platform/Interface/Display.hpp"
#include "Tests/Platform/Interface/ShownScreen.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

using test::ShownScreen;
using test::shows;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace
{

/// Notes its life in a list that it shares with others.
class Part : public UIViewController
{
public:
    Part(std::string name, std::vector<std::string> &events)
        : UIViewController(std::nullopt, nullptr), name_(std::move(name)), events_(events)
    {
    }

    void viewWillAppear(bool /*animated*/) override { note("will appear"); }
    void viewDidAppear(bool /*animated*/) override { note("did appear"); }
    void viewWillDisappear(bool /*animated*/) override { note("will disappear"); }
    void viewDidDisappear(bool /*animated*/) override { note("did disappear"); }
    void willMove(const std::shared_ptr<UIViewController> &parent) override
    {
        note(parent ? "will move in" : "will move out");
    }
    void didMove(const std::shared_ptr<UIViewController> &parent) override
    {
        note(parent ? "did move in" : "did move out");
    }

private:
    void note(const std::string &event) { events_.push_back(name_ + " " + event); }

    std::string name_;
    std::vector<std::string> &events_;
};

} // namespace

class Containment : public ::testing::Test
{
protected:
    std::vector<std::string> events;
    std::shared_ptr<Part> parent = std::make_shared<Part>("parent", events);
    std::shared_ptr<Part> child = std::make_shared<Part>("child", events);

    void embed() const
    {
        parent->addChild(child);
        parent->view()->addSubview(child->view());
        child->didMove(parent);
    }

    bool hears(const std::string &event) const
    {
        return shows([&] { return !events.empty() && events.back() == event; });
    }
};

TEST_F(Containment, OwnsItsChildren)
{
    parent->addChild(child);
    EXPECT_THAT(parent->children(), ElementsAre(child));
    EXPECT_EQ(child->parent(), parent);
    EXPECT_THAT(events, ElementsAre("child will move in"));
    child->removeFromParent();
    EXPECT_THAT(parent->children(), IsEmpty());
    EXPECT_EQ(child->parent(), nullptr);
    EXPECT_THAT(events, ElementsAre("child will move in", "child did move out"));
}

TEST_F(Containment, AddsAChildOnce)
{
    parent->addChild(child);
    parent->addChild(child);
    EXPECT_THAT(parent->children(), ElementsAre(child));
}

TEST_F(Containment, TakesAChildFromItsFormerParent)
{
    const auto former = std::make_shared<Part>("former", events);
    former->addChild(child);
    parent->addChild(child);
    EXPECT_THAT(former->children(), IsEmpty());
    EXPECT_EQ(child->parent(), parent);
}

TEST_F(Containment, TellsAChildOfItsParentsAppearance)
{
    embed();
    events.clear();
    const ShownScreen screen(parent);
    ASSERT_TRUE(hears("child did appear"));
    EXPECT_THAT(events, ElementsAre("parent will appear", "child will appear", "parent did appear",
                                    "child did appear"));
}

TEST_F(Containment, TellsAChildThatComesLateOfItsAppearance)
{
    const ShownScreen screen(parent);
    ASSERT_TRUE(hears("parent did appear"));
    events.clear();
    embed();
    ASSERT_TRUE(hears("child did appear"));
    EXPECT_THAT(events, ElementsAre("child will move in", "child will appear", "child did move in",
                                    "child did appear"));
}

TEST_F(Containment, TellsAChildThatGoesOfItsDisappearance)
{
    const ShownScreen screen(parent);
    embed();
    ASSERT_TRUE(hears("child did appear"));
    events.clear();
    child->willMove(nullptr);
    child->view()->removeFromSuperview();
    child->removeFromParent();
    EXPECT_THAT(events, ElementsAre("child will move out", "child will disappear",
                                    "child did disappear", "child did move out"));
}

TEST_F(Containment, TellsNothingToAChildWhoseViewIsNotInside)
{
    parent->addChild(child);
    child->loadViewIfNeeded();
    events.clear();
    const ShownScreen screen(parent);
    ASSERT_TRUE(hears("parent did appear"));
    EXPECT_THAT(events, ElementsAre("parent will appear", "parent did appear"));
}

TEST(ContainmentDeathTest, CannotHoldItself)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto add = [] {
        std::vector<std::string> events;
        const auto one = std::make_shared<Part>("one", events);
        const auto other = std::make_shared<Part>("other", events);
        one->addChild(other);
        other->addChild(one);
    };
    EXPECT_DEATH(add(), "Fatal error: A view controller cannot be its own child");
}
