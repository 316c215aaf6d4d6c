// Opens the X11 view of each LV2 plug-in in a window of ours, one after the other:
// takes a picture, resizes, hides, shows and closes it, and prints a table.
//
//   view-conformance [--pictures FOLDER] [URI...]
//
// Without a URI all that are installed. An effect that cannot be had is told of, and
// is no view. Ends with 0 when every view went through all of it and nothing was left
// behind, and every URI has one.

#include "Platform/Foundation/PlatformError.hpp"
#include "Platform/Foundation/Print.hpp"
#include "Tests/Conformance/ChosenComponents.hpp"
#include "Tests/Platform/Effect View/ShownView.hpp"
#include "Tests/Utilities/MainThread.hpp"

#include <fmt/format.h>
#include <gtk/gtk.h>
#include <gtkmm/init.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace
{

using test::ShownView;
using Clock = std::chrono::steady_clock;

// How long a view may take to draw something, in seconds.
constexpr double timeToDraw = 0.4;

// OpenGL without a graphics card takes long to begin, on a machine that is busy all the
// more. What has drawn is not waited for.
constexpr std::chrono::seconds timeToBeginDrawing{60};

struct Finding {
    std::string verdict = {};
    platform::lv2::ViewSize size = {};
    platform::lv2::ViewSize resized = {};
    double openMilliseconds = 0;
    std::size_t colours = 0;
    bool hasView = false;
    bool isFine = false;
};

struct Order {
    std::optional<std::filesystem::path> pictures;
    std::vector<std::string> plugins;

    void savePicture(const ShownView &shown, std::string name, const std::string &suffix) const
    {
        if (!pictures)
            return;
        std::replace_if(
            name.begin(), name.end(), [](char c) { return std::isalnum(c) == 0; }, '_');
        shown.x.savePicture(*pictures / (name + suffix + ".ppm"));
    }
};

Order parse(std::span<char *> arguments)
{
    Order order;
    for (std::size_t i = 1; i < arguments.size(); ++i) {
        const std::string argument = arguments[i];
        if (argument == "--pictures" && i + 1 < arguments.size())
            order.pictures = arguments[++i];
        else
            order.plugins.push_back(argument);
    }
    return order;
}

/// What came of the steps after opening; empty when all went well.
std::string walkThrough(ShownView &shown, RemoteAudioUnit &unit, Finding &finding,
                        const std::function<void()> &whenResized)
{
    shown.resize(1100, 760);
    test::serveMainThreadFor(timeToDraw);
    if (shown.phase() != ShownView::Phase::open)
        return "gone after resizing";
    finding.resized = shown.status().size;
    whenResized();
    const auto outer = shown.outer();
    shown.setHidden(true);
    if (!shown.waitUntil([&] { return !shown.x.isViewable(outer); }))
        return "not hidden";
    shown.setHidden(false);
    if (!shown.waitUntil([&] { return shown.x.isViewable(shown.own()); }))
        return "not shown again";
    const auto faults = unit.process().processIdentifier();
    shown.close();
    if (!shown.waitUntil(
            [&] { return shown.phase() == ShownView::Phase::closed || !unit.process().isUp(); }))
        return "not closed";
    if (!unit.process().isUp() || unit.process().processIdentifier() != faults)
        return "the effect's process died";
    if (!shown.waitUntil([&] { return !shown.x.isThere(outer); }))
        return "a window is left";
    return {};
}

Finding check(const AVAudioUnitComponent &component, const Order &order)
{
    Finding finding;
    try {
        RemoteAudioUnit unit(component);
        if (!unit.process().description().hasView)
            return {"no view"};
        finding.hasView = true;
        const auto begun = Clock::now();
        ShownView shown(unit, 900, 600);
        if (!shown.controller || !shown.waitUntilOpen()) {
            finding.verdict = fmt::format("not open: {}", shown.status().reason);
            return finding;
        }
        finding.openMilliseconds =
            std::chrono::duration<double, std::milli>(Clock::now() - begun).count();
        finding.size = shown.status().size;
        const auto patience = Clock::now() + timeToBeginDrawing;
        while (finding.colours <= 1 && Clock::now() < patience) {
            test::serveMainThreadFor(timeToDraw);
            finding.colours = shown.x.colours(shown.outer());
        }
        order.savePicture(shown, component.pluginURI(), "");
        const std::string trouble = walkThrough(shown, unit, finding, [&] {
            order.savePicture(shown, component.pluginURI(), " resized");
        });
        finding.isFine = trouble.empty() && finding.colours > 1;
        finding.verdict = !trouble.empty()       ? trouble
                          : finding.colours <= 1 ? "open, but nothing is drawn"
                                                 : "ok";
    } catch (const PlatformError &error) {
        finding.verdict = std::string("no effect: ") + error.what();
    }
    return finding;
}

} // namespace

int main(int argc, char *argv[])
{
    const Order order = parse({argv, static_cast<std::size_t>(argc)});
    if (order.pictures)
        std::filesystem::create_directories(*order.pictures);
    gdk_set_allowed_backends("x11");
    if (gtk_init_check() == FALSE) {
        printError("There is no X display.");
        return 2;
    }
    Gtk::init_gtkmm_internals();

    int views = 0;
    int fine = 0;
    print("plug-in\tverdict\tsize\tafter resizing\tms to open\tcolours");
    for (const auto &component : conformance::chosenComponents(order.plugins)) {
        const std::string &uri = component.pluginURI();
        const Finding finding = check(component, order);
        if (finding.verdict == "no view")
            continue;
        views += finding.hasView ? 1 : 0;
        fine += finding.isFine ? 1 : 0;
        print(fmt::format("{}\t{}\t{}x{}\t{}x{}\t{:.0f}\t{}", uri, finding.verdict,
                          finding.size.width, finding.size.height, finding.resized.width,
                          finding.resized.height, finding.openMilliseconds, finding.colours));
    }
    print(fmt::format("{} of {} views are fine", fine, views));
    const auto expected = static_cast<int>(std::max<std::size_t>(order.plugins.size(), 1));
    return fine == views && views >= expected ? 0 : 1;
}
