#include "Effect/View/Layout.hpp"
#include "Tests/Effect/View/ViewHost.hpp"
#include "Tests/Utilities/XServer.hpp"

#include <X11/keysym.h>
#include <malloc.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

using namespace effect::view;
using testing::ElementsAre;
using testing::IsEmpty;

namespace
{

class ViewTest : public testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        server = std::make_unique<test::XServer>(1600, 1000);
        ASSERT_FALSE(server->display().empty()) << "Xvfb does not start.";
        setenv("DISPLAY", server->display().c_str(), 1);
    }
    static void TearDownTestSuite() { server.reset(); }

    void SetUp() override { host.emplace(); }

    void openSettled(float scale = 1)
    {
        ASSERT_TRUE(host->open({scale}));
        host->settle();
        host->said.clear();
    }

    static Point on(std::size_t control) { return layout::controls.at(control).centre(); }
    std::vector<std::uint32_t> pictureOf(const Box &box, int scale = 1)
    {
        return host->picture(static_cast<int>(box.x) * scale, static_cast<int>(box.y) * scale,
                             static_cast<int>(box.width) * scale,
                             static_cast<int>(box.height) * scale);
    }
    bool idleUntilSaid(const std::string &line)
    {
        return host->idleUntil([this, &line] {
            return std::find(host->said.begin(), host->said.end(), line) != host->said.end();
        });
    }

    static std::unique_ptr<test::XServer> server;
    std::optional<ViewHost> host;
};

std::unique_ptr<test::XServer> ViewTest::server;

constexpr std::uint32_t depthPort = 8;
constexpr std::uint32_t hornAngle = 15;
constexpr std::uint32_t hornSpeed = 16;
constexpr std::size_t depth = 2;
constexpr std::uint32_t ground = 0x00FF00;

/// Bytes on the heap, the large blocks too. A sanitizer's heap is not seen; it looks
/// for leaks itself.
std::size_t memoryInUse()
{
    const struct mallinfo2 heap = mallinfo2();
    return heap.uordblks + heap.hblkhd;
}

std::ptrdiff_t openDescriptors()
{
    const std::filesystem::directory_iterator files("/proc/self/fd");
    return std::distance(begin(files), end(files));
}

} // namespace

TEST_F(ViewTest, IsTheOnlyOneInItsFile)
{
    EXPECT_STREQ(host->descriptor()->URI, "urn:qrvx:parvane#view");
    EXPECT_EQ(host->descriptor()->extension_data("urn:qrvx:nothing"), nullptr);
}

TEST_F(ViewTest, DoesNotOpenForAnotherPluginNorWithoutAParent)
{
    EXPECT_FALSE(host->open({}, "urn:qrvx:other"));
    EXPECT_FALSE(host->open({1, false, true}));
}

TEST_F(ViewTest, DoesNotOpenInAWindowThatIsGone)
{
    host->destroyParent();
    EXPECT_FALSE(host->open({}));
}

TEST_F(ViewTest, OpensWithNothingButAParent)
{
    ASSERT_TRUE(host->open({2, true, false}));
    host->settle();
    EXPECT_EQ(host->size(), std::make_pair(720, 408));
    host->click(64, 343);
    EXPECT_EQ(host->idle(), 0);
}

TEST_F(ViewTest, AnnouncesItsSizeAtItsScale)
{
    for (const auto &[scale, size] : {std::pair(1.0F, "720 x 408"), std::pair(1.5F, "1080 x 612"),
                                      std::pair(2.0F, "1440 x 816")}) {
        host->said.clear();
        ASSERT_TRUE(host->open({scale}));
        EXPECT_THAT(host->said, ElementsAre(size));
        EXPECT_EQ(host->size().first, std::lround(720 * scale));
        host->close();
    }
}

TEST_F(ViewTest, AsksForSizesInProportion)
{
    openSettled();
    EXPECT_EQ(host->proportions(), (std::array{720, 408, 720, 408}));
    EXPECT_GT(host->leastWidth(), 300);
    EXPECT_LT(host->leastWidth(), 720);
}

TEST_F(ViewTest, DrawsEveryControlAtBothScales)
{
    for (const int scale : {1, 2}) {
        openSettled(static_cast<float>(scale));
        for (const Box &box : layout::controls) {
            const auto picture = pictureOf(box, scale);
            EXPECT_GT(std::set(picture.begin(), picture.end()).size(), 40U);
        }
        const auto whole = host->picture(0, 0, 720 * scale, 408 * scale);
        EXPECT_EQ(std::count(whole.begin(), whole.end(), ground), 0) << "nothing left open";
        host->close();
    }
}

TEST_F(ViewTest, DrawsTheSamePictureAfterResizingBackAndForth)
{
    openSettled();
    const auto first = host->picture(0, 0, 720, 408);
    host->resizeWindow(1080, 612);
    host->settle();
    EXPECT_NE(host->picture(0, 0, 720, 408), first);
    EXPECT_EQ(host->resizeByInterface(720, 408), 0);
    ASSERT_TRUE(host->idleUntil([this] { return host->size() == std::make_pair(720, 408); }));
    host->settle();
    EXPECT_EQ(host->picture(0, 0, 720, 408), first);
    EXPECT_NE(host->resizeByInterface(0, -1), 0);
}

TEST_F(ViewTest, IsOperatedWhereItIsShownAfterResizing)
{
    openSettled();
    host->resizeWindow(1440, 900);
    host->settle();
    const Point middle = on(depth);
    // In the middle of what is left over: 42 pixels above the panel.
    host->click(static_cast<int>(middle.x * 2), static_cast<int>(middle.y * 2) + 42, 4);
    ASSERT_TRUE(idleUntilSaid("let go 8"));
    EXPECT_THAT(host->said, ElementsAre("hold 8", "8 = 0.77", "let go 8"));
}

TEST_F(ViewTest, SurvivesSizesOutOfReason)
{
    openSettled();
    for (const auto &[width, height] : {std::pair(1, 1), std::pair(3, 700), std::pair(1490, 2)}) {
        host->resizeWindow(width, height);
        ASSERT_TRUE(host->idleUntil([&, w = width] { return host->size().first == w; }));
        host->settle();
        EXPECT_EQ(host->idle(), 0);
    }
}

TEST_F(ViewTest, WritesWhileAKnobIsDragged)
{
    openSettled();
    const Point knob = on(depth);
    const int x = static_cast<int>(knob.x);
    const int y = static_cast<int>(knob.y);
    host->moveTo(x, y);
    host->button(1, true);
    ASSERT_TRUE(idleUntilSaid("hold 8"));
    const auto before = pictureOf(layout::controls[depth]);
    const auto isDrawnAnew = [&](const auto &former) {
        return host->idleUntil([&] { return pictureOf(layout::controls[depth]) != former; });
    };
    host->moveTo(x, y + 50);
    ASSERT_TRUE(idleUntilSaid("8 = 0.5"));
    ASSERT_TRUE(isDrawnAnew(before));
    host->settle();
    const auto held = pictureOf(layout::controls[depth]);
    host->moveTo(x, y - 700 < 0 ? 0 : y - 700);
    ASSERT_TRUE(idleUntilSaid("8 = 1"));
    EXPECT_TRUE(isDrawnAnew(held));
    host->button(1, false);
    ASSERT_TRUE(idleUntilSaid("let go 8"));
    EXPECT_EQ(host->said.back(), "let go 8");
}

TEST_F(ViewTest, GoesBackByDoubleClick)
{
    openSettled();
    host->send(depthPort, 0.1F);
    const Point knob = on(depth);
    host->click(static_cast<int>(knob.x), static_cast<int>(knob.y));
    host->click(static_cast<int>(knob.x), static_cast<int>(knob.y));
    ASSERT_TRUE(idleUntilSaid("8 = 0.75"));
}

TEST_F(ViewTest, TurnsWithTheWheel)
{
    openSettled();
    const Point knob = on(depth);
    host->click(static_cast<int>(knob.x), static_cast<int>(knob.y), 5);
    ASSERT_TRUE(idleUntilSaid("let go 8"));
    EXPECT_THAT(host->said, ElementsAre("hold 8", "8 = 0.73", "let go 8"));
}

TEST_F(ViewTest, TakesTheKeyboardAtAClickAndShowsTheFocusFromAKeyOn)
{
    openSettled();
    host->click(static_cast<int>(on(depth).x), static_cast<int>(on(depth).y));
    ASSERT_TRUE(host->idleUntil([this] { return host->focus() == host->view(); }));
    ASSERT_TRUE(idleUntilSaid("let go 8"));
    host->settle();
    const auto before = pictureOf(layout::controls[depth]);
    host->key(XK_Home);
    ASSERT_TRUE(idleUntilSaid("8 = 0"));
    const std::vector<std::pair<unsigned long, std::string>> presses{
        {XK_Up, "8 = 0.01"}, {XK_Page_Up, "8 = 0.11"},  {XK_Left, "8 = 0.1"},
        {XK_End, "8 = 1"},   {XK_Page_Down, "8 = 0.9"}, {XK_Delete, "8 = 0.75"}};
    for (const auto &[symbol, line] : presses) {
        host->key(symbol);
        EXPECT_TRUE(idleUntilSaid(line)) << line;
    }
    host->settle();
    EXPECT_NE(pictureOf(layout::controls[depth]), before) << "the ring";
    host->key(XK_Tab);
    host->key(XK_End);
    EXPECT_TRUE(idleUntilSaid("9 = 1"));
}

TEST_F(ViewTest, LeavesKeysToTheHostThatHasTheFocus)
{
    openSettled();
    host->focusParent();
    host->moveTo(static_cast<int>(on(depth).x), static_cast<int>(on(depth).y));
    host->settle();
    host->key(XK_End);
    host->settle();
    EXPECT_THAT(host->said, IsEmpty());
}

TEST_F(ViewTest, LeavesShortcutsAlone)
{
    openSettled();
    host->focusView();
    host->settle();
    host->hold(XK_Control_L, true);
    host->key(XK_End);
    host->hold(XK_Control_L, false);
    host->key(XK_Home);
    ASSERT_TRUE(idleUntilSaid("let go 7"));
    EXPECT_THAT(host->said, ElementsAre("hold 7", "7 = 0", "let go 7"));
}

TEST_F(ViewTest, ShowsTheHostsValuesWithoutAnswering)
{
    openSettled();
    const auto before = pictureOf(layout::controls[depth]);
    host->send(depthPort, 0.2F);
    host->settle();
    EXPECT_NE(pictureOf(layout::controls[depth]), before);
    EXPECT_THAT(host->said, IsEmpty());
    host->send(depthPort, 0.75F);
    host->settle();
    EXPECT_EQ(pictureOf(layout::controls[depth]), before);
}

TEST_F(ViewTest, PassesOverPortEventsThatMakeNoSense)
{
    openSettled();
    const auto before = host->picture(0, 0, 720, 408);
    const double wide = 0.1;
    host->sendRaw(depthPort, sizeof(wide), 0, &wide);
    host->sendRaw(depthPort, sizeof(float), 77, &wide);
    host->send(0, 0.3F);
    host->send(4711, 0.3F);
    host->settle();
    EXPECT_EQ(host->picture(0, 0, 720, 408), before);
}

TEST_F(ViewTest, TurnsTheRotorsWithTheReportedAngles)
{
    openSettled();
    const auto horn = pictureOf(layout::horn);
    const auto drum = pictureOf(layout::drum);
    host->send(hornAngle, 0.3F);
    host->settle();
    EXPECT_NE(pictureOf(layout::horn), horn);
    EXPECT_EQ(pictureOf(layout::drum), drum);
    const auto turned = pictureOf(layout::horn);
    host->send(hornSpeed, 6.7F);
    host->send(hornAngle, 0.3F);
    EXPECT_TRUE(host->idleUntil([&] { return pictureOf(layout::horn) != turned; }))
        << "it runs on by itself";
}

TEST_F(ViewTest, DrawsAgainWhatTheServerLost)
{
    openSettled();
    const auto before = host->picture(0, 0, 720, 408);
    host->clearView();
    ASSERT_NE(host->picture(0, 0, 720, 408), before);
    EXPECT_TRUE(host->idleUntil([&] { return host->picture(0, 0, 720, 408) == before; }));
}

TEST_F(ViewTest, SaysThatItsWindowIsGoneAndClosesAllTheSame)
{
    openSettled();
    host->send(hornSpeed, 6.7F);
    host->send(hornAngle, 0.3F);
    host->destroyParent();
    EXPECT_TRUE(host->idleUntil([this] { return host->idle() != 0; }));
    host->close();
}

TEST_F(ViewTest, ClosesAfterItsWindowWasDestroyedUnseen)
{
    openSettled();
    host->destroyParent();
    host->close();
}

TEST_F(ViewTest, LoadsAndClosesAHundredTimesWithoutLeaks)
{
    // What libraries keep for good is there after a few times.
    const auto once = [this] {
        host.emplace();
        ASSERT_TRUE(host->open({}));
        host->idle();
        host.reset();
    };
    for (int i = 0; i < 20; ++i) {
        once();
    }
    const std::size_t memory = memoryInUse();
    const auto descriptors = openDescriptors();
    for (int i = 0; i < 100; ++i) {
        once();
    }
    EXPECT_EQ(openDescriptors(), descriptors);
    // One picture of the panel is 1.1 MiB, one view without it 20 KiB.
    EXPECT_LT(memoryInUse(), memory + 20000);
}
