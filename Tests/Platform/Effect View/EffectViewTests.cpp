#include "Platform/Foundation/DispatchQueue.hpp"
#include "Platform/Interface/UIView.hpp"
#include "Platform/Interface/Widget.hpp"
#include "Tests/Platform/Effect View/ShownView.hpp"
#include "Tests/Utilities/EnvironmentVariable.hpp"
#include "Tests/Utilities/MainThread.hpp"
#include "Tests/Utilities/Places.hpp"

#include <fmt/format.h>
#include <gtkmm/adjustment.h>
#include <gtkmm/button.h>
#include <gtkmm/label.h>
#include <gtkmm/scrolledwindow.h>
#include <gtkmm/shortcut.h>
#include <gtkmm/shortcutcontroller.h>
#include <gtkmm/window.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <future>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

#include <unistd.h>

using Phase = test::ShownView::Phase;
using testing::HasSubstr;

namespace
{

constexpr int windowWidth = 640;
constexpr int windowHeight = 480;
constexpr std::size_t mebibyte = 1024 * 1024;

// As sanitizers do, to see who uses it still.
#ifdef PARVANE_SANITIZED
constexpr bool keepsWhatWasFreed = true;
#else
constexpr bool keepsWhatWasFreed = false;
#endif

std::size_t openFiles()
{
    const std::filesystem::directory_iterator all("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(all), end(all)));
}

std::size_t childProcesses()
{
    std::ifstream children("/proc/self/task/" + std::to_string(getpid()) + "/children");
    return static_cast<std::size_t>(std::distance(std::istream_iterator<pid_t>(children), {}));
}

/// In bytes.
std::size_t residentMemory()
{
    std::ifstream status("/proc/self/statm");
    std::size_t all = 0;
    std::size_t resident = 0;
    status >> all >> resident;
    return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

/// The first widget of that kind, at any depth, for which `is` holds.
template <typename Kind>
Kind *find(Gtk::Widget &within, const std::function<bool(Kind &)> &is)
{
    if (auto *found = dynamic_cast<Kind *>(&within); found && is(*found))
        return found;
    for (Gtk::Widget *child = within.get_first_child(); child; child = child->get_next_sibling())
        if (auto *found = find<Kind>(*child, is))
            return found;
    return nullptr;
}

} // namespace

class EffectViewTest : public testing::Test
{
protected:
    void start(const std::string &kind, const RemoteAudioUnit::Limits &limits = {})
    {
        unit.emplace(AVAudioUnitComponent({}, "urn:test:view:" + kind), limits);
        // Each block is waited for.
        unit->setRenderingOffline(true);
    }

    void show(const std::string &kind, const RemoteAudioUnit::Limits &limits = {})
    {
        start(kind, limits);
        shown.emplace(*unit, windowWidth, windowHeight);
        ASSERT_TRUE(shown->controller);
    }

    void open(const std::string &kind)
    {
        show(kind);
        ASSERT_TRUE(shown->waitUntilOpen());
        waitUntilSeen();
    }

    void waitUntilSeen()
    {
        ASSERT_TRUE(shown->waitUntil([&] { return x().isViewable(shown->own()); }));
    }

    const test::XWindows &x() const { return shown->x; }
    std::string report() const { return x().text(shown->own(), "VIEW_REPORT"); }
    bool waitFor(const std::function<bool()> &condition) const
    {
        return test::serveMainThreadUntil(condition);
    }

    /// A person's click in the middle of a window.
    void click(test::XWindows::Window window, int button = 1) const
    {
        const auto place = x().onScreen(window);
        run(fmt::format("xdotool mousemove {} {} click {}", place.x + place.width / 2,
                        place.y + place.height / 2, button));
    }
    /// Beside the main thread, which has to let go of the click.
    void run(const std::string &command) const
    {
        bool done = false;
        DispatchQueue::global().async([&] {
            EXPECT_EQ(std::system(command.c_str()), 0) << command;
            DispatchQueue::main().async([&] { done = true; });
        });
        ASSERT_TRUE(waitFor([&] { return done; }));
    }

    Gtk::Widget &widget() const { return shown->controller->view()->widget().get(); }
    Gtk::Label *label(const std::string &text) const
    {
        return find<Gtk::Label>(widget(),
                                [&](Gtk::Label &each) { return each.get_text().raw() == text; });
    }
    bool shows(const std::string &text) const
    {
        const auto *found = label(text);
        return found && found->get_mapped();
    }
    Gtk::Button *button(const std::string &name) const
    {
        return find<Gtk::Button>(widget(), [&](Gtk::Button &each) {
            return each.get_label().raw() == name && each.get_mapped();
        });
    }

    /// A sample of 1 rendered by the unit.
    float rendered()
    {
        std::vector<float> input(64, 1.0F);
        std::vector<float> output(64);
        const float *in = input.data();
        float *out = output.data();
        return unit->render({&in, &out, 64, 0}) ? output.back() : -1.0F;
    }

    const test::EnvironmentVariable path{"LV2_PATH", test::buildPath(TEST_LV2_BUNDLES)};
    std::optional<RemoteAudioUnit> unit;
    std::optional<test::ShownView> shown;
};

TEST_F(EffectViewTest, StandsInWindowsOfTheScreensOwnKind)
{
    open("fixed");
    EXPECT_EQ(x().depth(shown->outer()), x().depth(x().root()));
    EXPECT_EQ(x().depth(shown->inner()), x().depth(x().root()));
    EXPECT_EQ(shown->status().size, (platform::lv2::ViewSize{200, 100}));
    EXPECT_THAT(report(), HasSubstr("scale=1 rate=60 instance=yes"));
}

TEST_F(EffectViewTest, StandsInTheMiddleOfItsPlace)
{
    open("fixed");
    const auto place = x().onScreen(shown->outer());
    const auto around = x().onScreen(shown->toplevel());
    EXPECT_EQ(place.width, 200);
    EXPECT_EQ(place.height, 100);
    EXPECT_EQ(place.x - around.x, (around.width - 200) / 2);
    EXPECT_EQ(place.y - around.y, (around.height - 100) / 2);
}

TEST_F(EffectViewTest, FollowsItsPlace)
{
    open("fixed");
    const auto before = x().onScreen(shown->outer());
    shown->resize(windowWidth + 100, windowHeight + 60);
    EXPECT_TRUE(waitFor([&] {
        const auto now = x().onScreen(shown->outer());
        return now.x == before.x + 50 && now.y == before.y + 30;
    }));
}

TEST_F(EffectViewTest, HidesAndShowsWithItsPlace)
{
    open("fixed");
    const auto own = shown->own();
    shown->setHidden(true);
    EXPECT_TRUE(waitFor([&] { return !x().isViewable(own); }));
    EXPECT_EQ(shown->phase(), Phase::open);
    shown->setHidden(false);
    EXPECT_TRUE(waitFor([&] { return x().isViewable(own); }));
}

TEST_F(EffectViewTest, HidesWhileItsControllerDisappears)
{
    open("fixed");
    const auto own = shown->own();
    shown->controller->viewWillDisappear(true);
    EXPECT_TRUE(waitFor([&] { return !x().isViewable(own); }));
    shown->controller->viewWillAppear(true);
    shown->controller->viewDidAppear(true);
    EXPECT_TRUE(waitFor([&] { return x().isViewable(own); }));
}

TEST_F(EffectViewTest, ScrollsWhereTheViewIsLargerThanItsPlace)
{
    show("tall");
    ASSERT_TRUE(shown->waitUntilOpen());
    ASSERT_TRUE(waitFor([&] { return x().extent(shown->own()).height >= 1500; }));
    // Clipped by what is around it, of which a frame may be the window's own.
    ASSERT_TRUE(waitFor([&] {
        const int height = x().extent(shown->outer()).height;
        return height > windowHeight - 40 && height <= windowHeight;
    }));
    EXPECT_EQ(x().extent(shown->inner()).y, 0);
    auto *scroller =
        find<Gtk::ScrolledWindow>(widget(), [](Gtk::ScrolledWindow &) { return true; });
    ASSERT_TRUE(scroller);
    scroller->get_vadjustment()->set_value(300);
    EXPECT_TRUE(waitFor([&] { return x().extent(shown->inner()).y == -300; }));
}

TEST_F(EffectViewTest, GrowsWithItsPlaceInItsOwnShape)
{
    open("plain");
    EXPECT_TRUE(waitFor([&] { return x().extent(shown->own()).width == 400; }));
    EXPECT_EQ(x().extent(shown->own()).height, 200);
    shown->resize(300, 300);
    EXPECT_TRUE(waitFor([&] { return x().extent(shown->own()).width <= 300; }));
    const auto extent = x().extent(shown->own());
    EXPECT_GT(extent.width, 260);
    EXPECT_NEAR(extent.height, extent.width / 2.0, 1);
}

TEST_F(EffectViewTest, FollowsAViewThatTakesAnotherSize)
{
    open("growing");
    EXPECT_TRUE(waitFor([&] { return x().extent(shown->outer()).width == 320; }));
    EXPECT_EQ(shown->status().size, (platform::lv2::ViewSize{320, 240}));
    shown.reset();
    open("asking");
    EXPECT_TRUE(waitFor([&] { return x().extent(shown->outer()).width == 260; }));
}

TEST_F(EffectViewTest, IsHeardWhenAControlIsMoved)
{
    open("fixed");
    unit->allocateRenderResources(48000, 64);
    waitUntilSeen();
    EXPECT_EQ(rendered(), 1.0F);
    click(shown->own());
    EXPECT_TRUE(waitFor([&] { return rendered() == 5.0F; }));
    EXPECT_TRUE(waitFor([&] { return report().find("gain=5 peak=5") == 0; })) << report();
}

TEST_F(EffectViewTest, TakesTheKeyboardWhenItIsClickedAndGivesItBack)
{
    open("fixed");
    unit->allocateRenderResources(48000, 64);
    waitUntilSeen();
    const auto before = x().focus();
    click(shown->own());
    EXPECT_TRUE(waitFor([&] { return x().focus() == shown->own(); }));
    run("xdotool key a");
    EXPECT_TRUE(waitFor([&] { return rendered() == 7.0F; }));
    const auto around = x().onScreen(shown->toplevel());
    run(fmt::format("xdotool mousemove {} {} click 1", around.x + 20, around.y + 20));
    EXPECT_TRUE(waitFor([&] { return x().focus() == before; }));
}

TEST_F(EffectViewTest, LeavesTheHostItsKeysWhileItHasTheKeyboard)
{
    open("fixed");
    int helps = 0;
    const auto keys = Gtk::ShortcutController::create();
    keys->add_shortcut(Gtk::Shortcut::create(
        Gtk::ShortcutTrigger::parse_string("F1"),
        Gtk::CallbackAction::create([&](Gtk::Widget &, const Glib::VariantBase &) {
            ++helps;
            return true;
        })));
    shown->window->widget().get().add_controller(keys);
    click(shown->own());
    ASSERT_TRUE(waitFor([&] { return x().focus() == shown->own(); }));
    run("xdotool key F1");
    EXPECT_TRUE(waitFor([&] { return helps == 1; }));
    EXPECT_NE(x().focus(), shown->own());
}

TEST_F(EffectViewTest, ComesBackWithTheEffect)
{
    open("fixed");
    const auto inner = shown->inner();
    const auto own = shown->own();
    unit->allocateRenderResources(48000, 64);
    waitUntilSeen();
    // The host gets to know the settings a moment after a change. Where the blocks stand
    // still for so long, those are the former, and it takes another change.
    const auto follows = [&] {
        click(own);
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(2);
        return waitFor([&] {
            return rendered() == 5.0F && (report().find("saved=5") != std::string::npos ||
                                          std::chrono::steady_clock::now() > end);
        });
    };
    while (report().find("saved=5") == std::string::npos)
        ASSERT_TRUE(follows());
    ::kill(unit->process().processIdentifier(), SIGKILL);
    ASSERT_TRUE(waitFor([&] { return !x().isThere(own); }));
    ASSERT_TRUE(waitFor([&] { return shown->own() != 0; }));
    EXPECT_EQ(shown->inner(), inner);
    waitUntilSeen();
    EXPECT_TRUE(waitFor([&] { return rendered() == 5.0F; }));
    EXPECT_TRUE(waitFor([&] { return report().find("gain=5") == 0; })) << report();
}

TEST_F(EffectViewTest, OffersToStartAnEffectAgainThatIsLeftDown)
{
    RemoteAudioUnit::Limits limits;
    limits.faults.faults = 1;
    show("fixed", limits);
    ASSERT_TRUE(shown->waitUntilOpen());
    waitUntilSeen();
    const auto outer = shown->outer();
    ::kill(unit->process().processIdentifier(), SIGSEGV);
    ASSERT_TRUE(waitFor([&] { return shows("The effect has failed and is silent."); }));
    EXPECT_FALSE(x().isViewable(outer));
    ASSERT_TRUE(waitFor([&] { return button("Start Again") != nullptr; }));
    button("Start Again")->activate();
    ASSERT_TRUE(waitFor([&] { return unit->process().isUp(); }));
    waitUntilSeen();
    EXPECT_EQ(shown->outer(), outer);
}

TEST_F(EffectViewTest, SurvivesAViewThatTakesItsProcessDown)
{
    show("dying");
    EXPECT_TRUE(waitFor([&] { return shown->phase() == Phase::effectIsDown; }));
    EXPECT_TRUE(waitFor([&] { return button("Start Again") != nullptr; }));
    EXPECT_TRUE(x().children(shown->outer()).size() <= 1);
}

TEST_F(EffectViewTest, EndsAnEffectWhoseViewHangs)
{
    RemoteAudioUnit::Limits limits;
    limits.request = std::chrono::seconds(2);
    limits.faults.faults = 1;
    show("hanging", limits);
    EXPECT_TRUE(waitFor([&] { return shown->phase() == Phase::effectIsDown; }));
}

TEST_F(EffectViewTest, SaysSoWhenTheViewIsRefused)
{
    show("refusing");
    ASSERT_TRUE(waitFor([&] { return shows("The effect does not show its view."); }));
    EXPECT_EQ(shown->status().reason, "Its view refuses to open.");
    EXPECT_TRUE(unit->process().isUp());
    // It is asked again, and may have answered before one can look.
    int timesGone = 0;
    sigc::connection goes =
        label("The effect does not show its view.")->signal_unmap().connect([&] { ++timesGone; });
    g_signal_emit_by_name(button("Show Again")->gobj(), "clicked");
    goes.disconnect();
    EXPECT_EQ(timesGone, 1);
    EXPECT_TRUE(waitFor([&] { return shows("The effect does not show its view."); }));
}

TEST_F(EffectViewTest, SaysSoWhenTheViewClosesItself)
{
    show("closing");
    ASSERT_TRUE(waitFor([&] { return shows("The effect does not show its view."); }));
    EXPECT_EQ(shown->status().reason, "It has closed its view.");
    EXPECT_TRUE(unit->process().isUp());
}

TEST_F(EffectViewTest, OutlivesXErrorsOfTheView)
{
    testing::internal::CaptureStderr();
    open("failing");
    EXPECT_TRUE(waitFor([&] { return report().find("failed=yes") != std::string::npos; }));
    EXPECT_EQ(shown->phase(), Phase::open);
    EXPECT_THAT(testing::internal::GetCapturedStderr(),
                HasSubstr("The effect's view met an X error: BadWindow"));
}

TEST_F(EffectViewTest, StaysInItsPlaceWhenTheSampleRateChanges)
{
    open("fixed");
    const auto inner = shown->inner();
    EXPECT_THAT(report(), HasSubstr("hertz=48000"));
    unit->allocateRenderResources(44100, 64);
    EXPECT_TRUE(waitFor([&] { return report().find("hertz=44100") != std::string::npos; }));
    // It is away while the instance is replaced.
    EXPECT_TRUE(shown->waitUntil([&] { return shown->phase() == Phase::open; }));
    EXPECT_EQ(shown->inner(), inner);
    EXPECT_EQ(rendered(), 1.0F);
}

TEST_F(EffectViewTest, StaysOpenWhenItsWindowGoes)
{
    open("fixed");
    const auto own = shown->own();
    const auto controller = shown->controller;
    shown->window->setRootViewController(nullptr);
    EXPECT_TRUE(waitFor([&] { return !x().isViewable(own); }));
    EXPECT_TRUE(x().isThere(own));
    shown->window->setRootViewController(controller);
    EXPECT_TRUE(waitFor([&] { return x().isViewable(own); }));
    EXPECT_EQ(shown->own(), own);
}

TEST_F(EffectViewTest, EndsInAnyOrder)
{
    open("fixed");
    auto own = shown->own();
    unit.reset();
    EXPECT_FALSE(x().isThere(own));
    EXPECT_EQ(shown->phase(), Phase::closed);
    shown.reset();

    open("fixed");
    own = shown->own();
    const auto controller = shown->controller;
    shown.reset();
    const test::XWindows still;
    EXPECT_TRUE(still.isThere(own));
    unit.reset();
    EXPECT_FALSE(still.isThere(own));
}

TEST_F(EffectViewTest, HasOneControllerForOneView)
{
    open("fixed");
    std::shared_ptr<AUViewController> second;
    unit->requestViewController([&](auto answer) { second = answer; });
    EXPECT_TRUE(waitFor([&] { return second != nullptr; }));
    EXPECT_EQ(second, shown->controller);
}

TEST_F(EffectViewTest, IsNoneWhereThereIsNoViewThatCanBeShown)
{
    for (const char *uri : {"urn:test:amplifier", "urn:test:view:demanding"}) {
        RemoteAudioUnit plain(AVAudioUnitComponent({}, uri));
        std::optional<std::shared_ptr<AUViewController>> answer;
        plain.requestViewController([&](auto controller) { answer = controller; });
        EXPECT_FALSE(answer);
        EXPECT_TRUE(waitFor([&] { return answer.has_value(); }));
        EXPECT_FALSE(*answer);
    }
}

TEST_F(EffectViewTest, LeavesNothingBehind)
{
    start("fixed");
    std::size_t filesBefore = 0;
    std::size_t windowsBefore = 0;
    const test::XWindows outside;
    for (int round = 0; round < 22; ++round) {
        shown.emplace(*unit, windowWidth, windowHeight);
        ASSERT_TRUE(shown->waitUntilOpen());
        shown->close();
        ASSERT_TRUE(shown->waitUntil([&] { return shown->phase() == Phase::closed; }));
        shown.reset();
        test::drainMainQueue();
        // The first rounds load and keep what all others use.
        if (round == 1) {
            filesBefore = openFiles();
            windowsBefore = outside.descendants(outside.root()).size();
        }
    }
    EXPECT_LE(openFiles(), filesBefore);
    EXPECT_LE(outside.descendants(outside.root()).size(), windowsBefore);
}

TEST_F(EffectViewTest, ComesWithAnEffectThatWasBeingStartedWhenItWasAskedFor)
{
    start("fixed");
    // Whoever brings the effect back tells of its death first, and is held there.
    const auto &view = unit->process().view();
    std::promise<void> starts;
    std::promise<void> isShown;
    std::atomic_bool isTold = false;
    view->setListener([&] {
        if (view->status().phase == Phase::effectStarts && !isTold.exchange(true)) {
            starts.set_value();
            isShown.get_future().wait();
        }
    });
    ::kill(unit->process().processIdentifier(), SIGKILL);
    starts.get_future().wait();
    shown.emplace(*unit, windowWidth, windowHeight);
    EXPECT_EQ(shown->phase(), Phase::effectStarts);
    isShown.set_value();
    EXPECT_TRUE(shown->waitUntil([&] { return shown->phase() == Phase::open; }));
}

TEST_F(EffectViewTest, LeavesNothingBehindHoweverOftenTheEffectDies)
{
    constexpr int rounds = 100;
    constexpr int warmUp = 20;
    RemoteAudioUnit::Limits limits;
    limits.faults.faults = 0; // it is always started again
    start("fixed", limits);
    const test::XWindows outside;
    std::size_t filesBefore = 0;
    std::size_t windowsBefore = 0;
    std::size_t processesBefore = 0;
    std::size_t memoryBefore = 0;
    for (int round = 0; round < rounds; ++round) {
        shown.emplace(*unit, windowWidth, windowHeight);
        // The death of the last round may be noticed only now.
        ASSERT_TRUE(shown->waitUntil([&] { return shown->phase() == Phase::open; })) << round;
        // In turn while it is open and while it is being closed.
        const pid_t effect = unit->process().processIdentifier();
        if (round % 10 == 4)
            ::kill(effect, SIGKILL);
        shown->close();
        if (round % 10 == 9)
            ::kill(effect, SIGKILL);
        ASSERT_TRUE(shown->waitUntil([&] { return shown->phase() == Phase::closed; })) << round;
        shown.reset();
        test::drainMainQueue();
        ASSERT_TRUE(waitFor([&] { return unit->process().isUp(); })) << round;
        if (round == warmUp) {
            filesBefore = openFiles();
            windowsBefore = outside.descendants(outside.root()).size();
            processesBefore = childProcesses();
            memoryBefore = residentMemory();
        }
    }
    EXPECT_LE(openFiles(), filesBefore);
    EXPECT_TRUE(
        waitFor([&] { return outside.descendants(outside.root()).size() <= windowsBefore; }));
    EXPECT_LE(childProcesses(), processesBefore);
    // The pixels of a view a round would be twenty times this; the heap itself may grow
    // by an arena once.
    if (!keepsWhatWasFreed) {
        EXPECT_LE(residentMemory(), memoryBefore + 4 * mebibyte);
    }
}
