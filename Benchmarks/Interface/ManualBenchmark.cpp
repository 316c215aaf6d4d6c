#include "Benchmarks/Interface/ObservedProgram.hpp"
#include "Benchmarks/Interface/Screen.hpp"

#include <fmt/core.h>

#include <X11/keysym.h>

#include <algorithm>
#include <chrono>
#include <optional>
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

/// What has not changed for so long is finished.
constexpr std::chrono::milliseconds rest{3000};
constexpr std::chrono::seconds patience{60};
constexpr std::chrono::milliseconds between{8};

struct Way {
    std::vector<std::string> command;
    std::string title;
    bench::ObservedProgram::Variables variables;
    std::vector<double> taken = {};
};

/// Waits until the window has not changed for `quiet`; answers when it last did.
Clock::time_point lastChange(const bench::Screen &screen, bench::Screen::Window window,
                             std::chrono::milliseconds quiet, bool mustChange)
{
    const auto begun = Clock::now();
    auto last = begun;
    const auto first = screen.fingerprint(window);
    auto before = first;
    while (Clock::now() - last < quiet || (mustChange && before == first)) {
        if (Clock::now() - begun > patience)
            throw std::runtime_error("The window does not come to rest.");
        const auto now = screen.fingerprint(window);
        if (now != before)
            last = Clock::now();
        before = now;
        std::this_thread::sleep_for(between);
    }
    return last;
}

double measure(const bench::Screen &screen, const Way &way)
{
    const bench::ScratchFolder folder;
    const bench::ObservedProgram program(way.command, way.variables, folder.path());
    const auto window = screen.waitForWindow(way.title);
    lastChange(screen, window, std::chrono::milliseconds(1500), false);
    const auto pressed = Clock::now();
    screen.type(window, XK_F1);
    return Milliseconds(lastChange(screen, window, rest, true) - pressed).count();
}

double median(std::vector<double> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

void compare(int runs)
{
    const bench::Screen screen;
    const std::string manual = std::string("file://") + MANUAL;
    Way host{{PARVANE_HOST},
             "Parvane Host",
             {{"LV2_PATH", LV2_DIRECTORY}, {"SDL_AUDIODRIVER", "dummy"}}};
    Way bare{{BARE_PAGE, manual}, "Bare page", {}};
    Way bareAlike{{BARE_PAGE, manual}, "Bare page", {{"GSK_RENDERER", "cairo"}}};
    // The first round only warms the caches.
    for (int run = -1; run < runs; ++run)
        for (Way *way : {&bare, &bareAlike, &host}) {
            const double taken = measure(screen, *way);
            if (run >= 0)
                way->taken.push_back(taken);
        }
    fmt::print("bare page:                        {:7.0f} ms\n", median(bare.taken));
    fmt::print("bare page, drawn without OpenGL:  {:7.0f} ms\n", median(bareAlike.taken));
    fmt::print("manual:                           {:7.0f} ms\n", median(host.taken));
    fmt::print("| F1 to the manual's first page over a bare page | 1.2 | {:.3f} | {} |\n",
               median(host.taken) / median(bare.taken),
               median(host.taken) <= 1.2 * median(bare.taken) ? "met" : "missed");
    fmt::print("| the same, both drawn without OpenGL | 1.2 | {:.3f} | {} |\n",
               median(host.taken) / median(bareAlike.taken),
               median(host.taken) <= 1.2 * median(bareAlike.taken) ? "met" : "missed");
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
