#include "Benchmarks/Interface/ObservedProgram.hpp"
#include "Benchmarks/Interface/Screen.hpp"
#include "Benchmarks/Report/Report.hpp"

#include <fmt/core.h>

#include <X11/keysym.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

/// Measures how long it takes from the press of F1 until the manual's first page is
/// drawn; compares the host's program with a bare window that gets a web view, in
/// turn, on the display of the environment.
///
/// Usage: manual_benchmark [RUNS]

namespace
{

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

constexpr std::chrono::seconds timeToStart{2};
constexpr std::chrono::minutes timeToDraw{2};
/// What it shows for so long it shows in the end; longer as long as nobody knows what a
/// page looks like: some stay empty for seconds.
constexpr std::chrono::milliseconds rest{500};
constexpr int looksAlike = 30; // a rest apart
constexpr int mostLooks = 240;
constexpr double trifle = 0.02;
constexpr std::chrono::milliseconds between{8};
constexpr double goal = 1.2;

/// What a window shows.
using Picture = std::vector<std::uint32_t>;

struct Way {
    std::vector<std::string> command;
    std::string title;
    bench::ObservedProgram::Variables variables;
    Picture page = {}; // in the end
    std::vector<double> taken = {};
};

/// Whether two pictures are the same but for a trifle, such as a scroll bar that fades.
bool areAlike(const Picture &one, const Picture &other)
{
    if (one.size() != other.size())
        return false;
    std::size_t differing = 0;
    for (std::size_t i = 0; i < one.size(); ++i)
        differing += one[i] != other[i] ? 1 : 0;
    return static_cast<double>(differing) < trifle * static_cast<double>(one.size());
}

/// The program of a way, with its page asked for by F1.
class AskedForPage
{
public:
    AskedForPage(const bench::Screen &screen, const Way &way)
        : screen_(screen), program_(way.command, way.variables, folder_.path()),
          window_(screen.waitForWindow(way.title))
    {
        std::this_thread::sleep_for(timeToStart);
        pressed_ = Clock::now();
        screen.type(window_, XK_F1);
    }

    Picture now() const { return screen_.picture(window_); }

    /// What it looks like in the end. Counted in looks: the machine may stand still.
    Picture learn() const
    {
        Picture page = now();
        for (int look = 0, alike = 0; alike < looksAlike; ++look) {
            if (look == mostLooks)
                throw std::runtime_error("The window does not come to rest.");
            std::this_thread::sleep_for(rest);
            Picture seen = now();
            alike = areAlike(page, seen) ? alike + 1 : 0;
            if (alike == 0)
                page = std::move(seen);
        }
        return page;
    }

    /// How long it takes until the window shows the page, and goes on doing so.
    double timeUntil(const Picture &page) const
    {
        auto since = Clock::now();
        for (auto at = since; at - since < rest; at = Clock::now()) {
            if (at - pressed_ > timeToDraw)
                throw std::runtime_error("The page is not drawn.");
            if (!areAlike(now(), page))
                since = Clock::now();
            std::this_thread::sleep_for(between);
        }
        return Milliseconds(since - pressed_).count();
    }

private:
    const bench::Screen &screen_;
    bench::ScratchFolder folder_;
    bench::ObservedProgram program_;
    bench::Screen::Window window_;
    Clock::time_point pressed_;
};

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
    const std::array ways{&bare, &alike, &host};
    // This warms the caches, too.
    for (Way *way : ways)
        way->page = AskedForPage(screen, *way).learn();
    for (int run = 0; run < runs; ++run)
        for (Way *way : ways)
            way->taken.push_back(AskedForPage(screen, *way).timeUntil(way->page));
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
