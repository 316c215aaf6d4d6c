#include "Benchmarks/Interface/ObservedProgram.hpp"
#include "Benchmarks/Interface/Screen.hpp"
#include "Benchmarks/Report/Report.hpp"

#include <fmt/core.h>

#include <X11/keysym.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

/// Measures how long it takes from the press of F1 until the manual's first page is
/// drawn and does not change any more; compares the host's program with a bare window
/// that gets a web view, in turn, on the display of the environment.
///
/// Usage: manual_benchmark [RUNS]

namespace
{

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

constexpr std::chrono::seconds timeToStart{2};
/// The page has to be there by then, with some rest left to be sure of it.
constexpr std::chrono::seconds timeToDraw{10};
constexpr std::chrono::seconds rest{1};
constexpr double trifle = 0.02;
constexpr std::chrono::milliseconds between{8};
constexpr double goal = 1.2;

struct Way {
    std::vector<std::string> command;
    std::string title;
    bench::ObservedProgram::Variables variables;
    std::vector<double> taken = {};
};

/// What the window showed, and when.
struct Sight {
    Clock::time_point at;
    std::vector<std::uint32_t> picture;
};

/// Whether two pictures are the same but for a trifle, such as a scroll bar that fades.
bool areAlike(const Sight &one, const Sight &other)
{
    if (one.picture.size() != other.picture.size())
        return false;
    std::size_t differing = 0;
    for (std::size_t i = 0; i < one.picture.size(); ++i)
        differing += one.picture[i] != other.picture[i] ? 1 : 0;
    return static_cast<double>(differing) < trifle * static_cast<double>(one.picture.size());
}

/// Watches the window for a while; answers since when it has been as it is at the end.
Clock::time_point settled(const bench::Screen &screen, bench::Screen::Window window,
                          std::chrono::milliseconds time)
{
    std::vector<Sight> sights;
    const auto end = Clock::now() + time;
    while (Clock::now() < end) {
        sights.push_back({Clock::now(), screen.picture(window)});
        std::this_thread::sleep_for(between);
    }
    auto since = sights.back().at;
    for (auto sight = sights.rbegin(); sight != sights.rend() && areAlike(*sight, sights.back());
         ++sight)
        since = sight->at;
    return since;
}

double measure(const bench::Screen &screen, const Way &way)
{
    const bench::ScratchFolder folder;
    const bench::ObservedProgram program(way.command, way.variables, folder.path());
    const auto window = screen.waitForWindow(way.title);
    std::this_thread::sleep_for(timeToStart);
    const auto pressed = Clock::now();
    screen.type(window, XK_F1);
    const auto drawn = settled(screen, window, timeToDraw);
    if (drawn - pressed > timeToDraw - rest)
        throw std::runtime_error("The window does not come to rest.");
    return Milliseconds(drawn - pressed).count();
}

void compare(int runs)
{
    const bench::Screen screen;
    const std::string manual = std::string("file://") + MANUAL;
    Way host{{PARVANE_HOST},
             "Parvane Host",
             {{"LV2_PATH", LV2_DIRECTORY}, {"SDL_AUDIODRIVER", "dummy"}}};
    // GTK draws as it does in the host's program: where OpenGL is done in software it
    // shows no page at all.
    Way bare{{BARE_PAGE, manual}, "Bare page", {{"GSK_RENDERER", "cairo"}}};
    // Nor does that one start OpenGL for its page, nor keep what it would compile.
    Way alike{{BARE_PAGE, manual, "software"},
              "Bare page",
              {{"GSK_RENDERER", "cairo"}, {"MESA_SHADER_CACHE_DISABLE", "true"}}};
    // The first round only warms the caches.
    for (int run = -1; run < runs; ++run)
        for (Way *way : {&bare, &alike, &host}) {
            const double taken = measure(screen, *way);
            if (run >= 0)
                way->taken.push_back(taken);
        }
    fmt::print("bare page:                                 {:7.0f} ms\n", median(bare.taken));
    fmt::print("bare page that draws without OpenGL, too:  {:7.0f} ms\n", median(alike.taken));
    fmt::print("manual:                                    {:7.0f} ms\n", median(host.taken));
    const std::string what = "F1 to the manual's first page";
    printRow({what, "a bare page", goal, ratios(host.taken, bare.taken)});
    printRow({what, "a bare page without OpenGL", goal, ratios(host.taken, alike.taken)});
}

} // namespace

int main(int argc, char *argv[])
{
    try {
        compare(argc > 1 ? std::stoi(argv[1]) : 7);
    } catch (const std::exception &error) {
        fmt::print(stderr, "{}\n", error.what());
        return 1;
    }
    return 0;
}
