#include "Benchmarks/Interface/ObservedProgram.hpp"
#include "Benchmarks/Interface/Screen.hpp"
#include "Benchmarks/Report/Report.hpp"

#include <fmt/core.h>

#include <X11/keysym.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

/// Measures what the effect's view costs the program while it plays: the share of a
/// processor that the main thread takes while the view moves, and the gaps in the
/// sound while the window is resized all the time, beside the same time at rest. On
/// the display of the environment.
///
/// Usage: effect_view_benchmark [SECONDS]

namespace
{

using Clock = std::chrono::steady_clock;

constexpr double shareGoal = 15; // per cent
/// A block of the effect's that came late is this many frames of nothing or more.
/// The loops have no such silence of their own.
constexpr std::size_t shortestGap = 64;
constexpr std::size_t bytesPerFrame = 2 * sizeof(float);

void sleep(double seconds)
{
    std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
}

/// How often a second the window is drawn anew.
double drawnRate(const bench::Screen &screen, bench::Screen::Window window, double seconds)
{
    int changes = 0;
    auto before = screen.picture(window);
    const auto begun = Clock::now();
    while (Clock::now() - begun < std::chrono::duration<double>(seconds)) {
        const auto now = screen.picture(window);
        changes += now != before ? 1 : 0;
        before = now;
        sleep(0.002);
    }
    return changes / seconds;
}

void resizeFor(const bench::Screen &screen, bench::Screen::Window window, double seconds)
{
    const auto begun = Clock::now();
    for (double at = 0; at < seconds;
         at = std::chrono::duration<double>(Clock::now() - begun).count()) {
        screen.resize(window, 1000 + static_cast<int>(200 * std::sin(3 * at)),
                      700 + static_cast<int>(100 * std::sin(4 * at)));
        sleep(1.0 / 60);
    }
    screen.resize(window, 900, 640);
}

/// The gaps in a part of the recording, which begins and ends at these bytes.
int gaps(const std::string &recording, std::uintmax_t begin, std::uintmax_t end)
{
    std::ifstream file(recording, std::ios::binary);
    file.seekg(static_cast<std::streamoff>(begin / bytesPerFrame * bytesPerFrame));
    std::vector<std::array<float, 2>> frames((end - begin) / bytesPerFrame);
    file.read(reinterpret_cast<char *>(frames.data()),
              static_cast<std::streamsize>(frames.size() * bytesPerFrame));
    int found = 0;
    std::size_t silent = 0;
    for (const auto &frame : frames) {
        silent = frame[0] == 0.0F && frame[1] == 0.0F ? silent + 1 : 0;
        found += silent == shortestGap ? 1 : 0;
    }
    return found;
}

void run(double seconds)
{
    const bench::Screen screen;
    const bench::ScratchFolder folder;
    const std::string recording = folder.path() + "/recording";
    const bench::ObservedProgram program({PARVANE_HOST},
                                         {{"LV2_PATH", LV2_DIRECTORY},
                                          {"SDL_AUDIODRIVER", "disk"},
                                          {"SDL_DISKAUDIOFILE", recording}},
                                         folder.path());
    const auto window = screen.waitForWindow("Parvane Host");
    program.waitFor("WARNING: Audio unit is nil (yet?).");
    sleep(0.5);
    screen.type(window, XK_space, true);
    program.waitFor("AUEnginePlayer: Audio engine starting.");
    screen.type(window, XK_e, true);
    sleep(3);

    const pid_t effect = bench::childOf(program.process(), "parvane-effect");
    const double rate = drawnRate(screen, window, 3);
    const std::array before{bench::mainThreadTime(program.process()),
                            bench::mainThreadTime(effect)};
    const auto stillFrom = std::filesystem::file_size(recording);
    sleep(seconds);
    const auto stillTo = std::filesystem::file_size(recording);
    const double share = (bench::mainThreadTime(program.process()) - before[0]) / seconds;
    const double viewShare = (bench::mainThreadTime(effect) - before[1]) / seconds;
    const int stillGaps = gaps(recording, stillFrom, stillTo);

    const double resizing = bench::mainThreadTime(program.process());
    resizeFor(screen, window, seconds);
    const auto resizedTo = std::filesystem::file_size(recording);
    const double resizingShare = (bench::mainThreadTime(program.process()) - resizing) / seconds;
    const int resizedGaps = gaps(recording, stillTo, resizedTo);

    fmt::print("the view is drawn anew {:.0f} times a second; its own process takes {:.1f} % of a "
               "processor for that\n",
               rate, 100 * viewShare);
    fmt::print("the main thread takes {:.1f} % while the window is resized\n", 100 * resizingShare);
    fmt::print("gaps at rest: {}, while resizing: {}, {} s each\n", stillGaps, resizedGaps,
               seconds);
    printRow({"Main thread's share of a processor while the view moves",
              "",
              shareGoal,
              {100 * share},
              "%"});
    printRow({"Gaps in the sound while the window is resized, more than at rest",
              "",
              0.0,
              {static_cast<double>(std::max(resizedGaps - stillGaps, 0))},
              "gaps"});
}

} // namespace

int main(int argc, char *argv[])
{
    try {
        run(argc > 1 ? std::stod(argv[1]) : 20);
    } catch (const std::exception &error) {
        fmt::print(stderr, "{}\n", error.what());
        return 1;
    }
    return 0;
}
