#include "Effect/View/Layout.hpp"
#include "Effect/View/Panel.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <utility>
#include <vector>

using effect::controlRanges;
using namespace effect::view;
using testing::ElementsAre;
using testing::IsEmpty;

namespace
{

constexpr std::size_t depth = 2;
constexpr std::size_t balance = 3;
constexpr std::size_t level = 8;

class PanelTest : public testing::Test, private PanelListener
{
protected:
    static Point on(std::size_t control) { return layout::controls.at(control).centre(); }

    void tab(int times)
    {
        for (int i = 0; i < times; ++i) {
            panel.press(Key::next, false);
        }
    }

    std::vector<std::string> takeCalls() { return std::exchange(calls, {}); }

    Panel panel{*this};

private:
    void touched(std::size_t control, bool held) override
    {
        calls.push_back((held ? "hold " : "let go ") + std::to_string(control));
    }
    void changed(std::size_t control, float value) override
    {
        calls.push_back(std::to_string(control) + " = " + textOf(control, value));
    }

    std::vector<std::string> calls;
};

} // namespace

TEST_F(PanelTest, BeginsWithTheStandardValues)
{
    for (std::size_t i = 0; i < controlCount; ++i) {
        EXPECT_EQ(panel.value(i), controlRanges.at(i).standard);
    }
    EXPECT_TRUE(panel.takeChanges().all());
    EXPECT_TRUE(panel.takeChanges().none());
}

TEST_F(PanelTest, DragsAKnobWithinOneGesture)
{
    const Point at = on(depth);
    panel.press(at, 0);
    panel.move({at.x, at.y - Drag::travel / 10}, false);
    panel.move({at.x + 300, at.y + Drag::travel / 4}, false);
    panel.release();
    EXPECT_THAT(takeCalls(), ElementsAre("hold 2", "2 = 85 %", "2 = 50 %", "let go 2"));
}

TEST_F(PanelTest, ReportsNoChangeWhereThereIsNone)
{
    const Point at = on(depth);
    panel.press(at, 0);
    panel.move({at.x + 50, at.y}, false);
    panel.release();
    EXPECT_THAT(takeCalls(), ElementsAre("hold 2", "let go 2"));
    panel.release();
    panel.press({layout::width / 2, 20}, 1000);
    EXPECT_THAT(takeCalls(), IsEmpty());
}

TEST_F(PanelTest, GoesBackToTheStandardValueByDoubleClick)
{
    panel.setValue(level, -20);
    panel.press(on(level), 0);
    panel.release();
    panel.press(on(level), 200);
    panel.release();
    EXPECT_THAT(takeCalls(), ElementsAre("hold 8", "let go 8", "hold 8", "8 = 0.0 dB", "let go 8"));
}

TEST_F(PanelTest, SetsTheSpeedThatIsPressed)
{
    panel.press(layout::speedMarks[2].box.centre(), 0);
    panel.release();
    EXPECT_THAT(takeCalls(), ElementsAre("hold 1", "1 = Fast", "let go 1"));
    panel.press(layout::speedMarks[0].box.centre(), 1000);
    EXPECT_EQ(panel.value(speedControl), 0);
}

TEST_F(PanelTest, SwitchesAtEveryPress)
{
    panel.press(on(enabledControl), 0);
    panel.release();
    panel.press(on(enabledControl), 100);
    panel.release();
    EXPECT_THAT(takeCalls(),
                ElementsAre("hold 0", "0 = Bypass", "let go 0", "hold 0", "0 = On", "let go 0"));
}

TEST_F(PanelTest, TurnsWithTheWheelUnderThePointer)
{
    panel.scroll(on(depth), 1, false);
    panel.scroll(on(depth), -2, false);
    panel.scroll({2, 2}, 1, false);
    EXPECT_THAT(takeCalls(),
                ElementsAre("hold 2", "2 = 77 %", "let go 2", "hold 2", "2 = 73 %", "let go 2"));
    panel.scroll(on(depth), 1, true);
    EXPECT_FLOAT_EQ(panel.value(depth), 0.732F);
}

TEST_F(PanelTest, WorksByKeyboardAlone)
{
    panel.setKeyboard(true);
    tab(1);
    ASSERT_TRUE(panel.showsFocus(depth));
    for (const Key key : {Key::up, Key::down, Key::down, Key::pageUp, Key::pageDown, Key::home,
                          Key::end, Key::reset}) {
        panel.press(key, false);
        panel.press(Key::toggle, false);
    }
    std::vector<std::string> changes;
    for (const std::string &call : takeCalls()) {
        if (call.find('=') != std::string::npos) {
            changes.push_back(call);
        }
    }
    EXPECT_THAT(changes, ElementsAre("2 = 76 %", "2 = 75 %", "2 = 74 %", "2 = 84 %", "2 = 74 %",
                                     "2 = 0 %", "2 = 100 %", "2 = 75 %"));
}

TEST_F(PanelTest, LeadsTheFocusRoundInBothDirections)
{
    panel.setKeyboard(true);
    EXPECT_TRUE(panel.showsFocus(speedControl));
    tab(static_cast<int>(controlCount) - 1);
    EXPECT_TRUE(panel.showsFocus(enabledControl));
    panel.press(Key::previous, false);
    EXPECT_TRUE(panel.showsFocus(level));
    tab(2);
    EXPECT_TRUE(panel.showsFocus(speedControl));
}

TEST_F(PanelTest, SwitchesByKey)
{
    panel.press(Key::previous, false);
    panel.press(Key::toggle, false);
    EXPECT_FALSE(panel.isEnabled());
    panel.press(Key::up, true);
    EXPECT_TRUE(panel.isEnabled()) << "a switch has no finer steps";
}

TEST_F(PanelTest, ShowsTheFocusOnlyWithTheKeyboardAndAfterAKey)
{
    EXPECT_FALSE(panel.showsFocus(speedControl));
    panel.setKeyboard(true);
    panel.press(on(balance), 0);
    panel.release();
    EXPECT_FALSE(panel.showsFocus(balance));
    panel.press(Key::up, false);
    EXPECT_TRUE(panel.showsFocus(balance)) << "the keys go where the pointer was";
    panel.setKeyboard(false);
    EXPECT_FALSE(panel.showsFocus(balance));
}

TEST_F(PanelTest, TakesTheHostsValuesIntoRange)
{
    panel.setValue(level, 100);
    EXPECT_EQ(panel.value(level), 12);
    panel.setValue(level, -std::numeric_limits<float>::infinity());
    EXPECT_EQ(panel.value(level), -24);
    panel.setValue(level, std::numeric_limits<float>::quiet_NaN());
    EXPECT_EQ(panel.value(level), -24);
    EXPECT_THAT(takeCalls(), IsEmpty()) << "what the host says is not said to the host";
}

TEST_F(PanelTest, KeepsAHeldKnobFromTheHost)
{
    panel.press(on(level), 0);
    panel.setValue(level, -10);
    panel.setValue(depth, 0.5F);
    EXPECT_EQ(panel.value(level), 0);
    EXPECT_EQ(panel.value(depth), 0.5F);
    panel.release();
    panel.setValue(level, -10);
    EXPECT_EQ(panel.value(level), -10);
}

TEST_F(PanelTest, LetsKeysAndWheelAloneWhileAKnobIsHeld)
{
    panel.press(on(level), 0);
    takeCalls();
    panel.press(Key::end, false);
    panel.press(Key::next, false);
    panel.scroll(on(level), 3, false);
    EXPECT_THAT(takeCalls(), IsEmpty());
    EXPECT_EQ(panel.value(level), 0);
}

TEST_F(PanelTest, TellsWhichControlsLookDifferent)
{
    panel.takeChanges();
    panel.setValue(depth, 0.75F);
    EXPECT_TRUE(panel.takeChanges().none()) << "the same value";
    panel.setValue(depth, 0.5F);
    EXPECT_EQ(panel.takeChanges().to_ullong(), 1U << depth);
    panel.move(on(level), false);
    EXPECT_EQ(panel.takeChanges().to_ullong(), 1U << level);
    panel.move(on(depth), false);
    EXPECT_EQ(panel.takeChanges().to_ullong(), 1U << level | 1U << depth);
    panel.leave();
    EXPECT_EQ(panel.takeChanges().to_ullong(), 1U << depth);
    panel.leave();
    EXPECT_TRUE(panel.takeChanges().none());
}

TEST(Layout, KeepsControlsApartAndOnThePanel)
{
    for (std::size_t i = 0; i < controlCount; ++i) {
        const Box &box = layout::controls.at(i);
        EXPECT_GE(box.x, 0);
        EXPECT_GE(box.y, 0);
        EXPECT_LE(box.x + box.width, layout::width);
        EXPECT_LE(box.y + box.height, layout::height);
        EXPECT_EQ(layout::controlAt(box.centre()), i);
        EXPECT_EQ(layout::controlAt({box.x, box.y}), i);
        EXPECT_NE(layout::controlAt({box.x + box.width, box.y}), i);
    }
    for (const layout::SpeedMark &mark : layout::speedMarks) {
        EXPECT_EQ(layout::controlAt(mark.box.centre()), speedControl);
    }
}
