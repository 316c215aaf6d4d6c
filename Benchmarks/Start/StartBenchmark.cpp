#include "Benchmarks/Report/Report.hpp"

#include <X11/Xlib.h>

#include <fcntl.h>
#include <fmt/core.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

/// Measures how long a program takes from the moment before `fork` until its
/// window is mapped, and until it prints a line; compares the host's program with
/// a bare gtkmm window in interleaved runs on the display of the environment.
///
/// Usage: start_benchmark [RUNS]

namespace
{

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

constexpr std::chrono::seconds patience{30};
constexpr std::string_view connected = "AUExtensionManager: Performed audio unit connection.";

struct CloseDisplay {
    void operator()(Display *display) const { XCloseDisplay(display); }
};
using DisplayHandle = std::unique_ptr<Display, CloseDisplay>;

struct Start {
    std::optional<double> mapped;
    std::optional<double> printed;
};

/// A program that was started, with the end of the pipe it prints to.
struct Child {
    pid_t process;
    int output;
};

Child startProgram(const std::string &path)
{
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0)
        throw std::runtime_error("no pipe");
    const pid_t process = fork();
    if (process == 0) {
        dup2(ends[1], STDOUT_FILENO);
        execl(path.c_str(), path.c_str(), nullptr);
        _exit(127);
    }
    close(ends[1]);
    return {process, ends[0]};
}

void endProgram(const Child &child)
{
    kill(child.process, SIGTERM);
    waitpid(child.process, nullptr, 0);
    close(child.output);
}

/// GTK maps nothing but its windows; helpers of one pixel are left out all the same.
bool sawWindow(Display *display)
{
    bool mapped = false;
    while (XPending(display) > 0) {
        XEvent event{};
        XNextEvent(display, &event);
        if (event.type != MapNotify)
            continue;
        XWindowAttributes attributes{};
        if (XGetWindowAttributes(display, event.xmap.window, &attributes) != 0)
            mapped = mapped || attributes.width > 1;
    }
    return mapped;
}

Start measure(Display *display, const std::string &path, bool waitForLine)
{
    sawWindow(display);
    const auto begin = Clock::now();
    const Child child = startProgram(path);
    const auto elapsed = [&] { return Milliseconds(Clock::now() - begin).count(); };

    Start start;
    std::string text;
    std::array<pollfd, 2> sources{pollfd{ConnectionNumber(display), POLLIN, 0},
                                  pollfd{child.output, POLLIN, 0}};
    while (Clock::now() - begin < patience && (!start.mapped || (waitForLine && !start.printed))) {
        poll(sources.data(), sources.size(), 100);
        if (!start.mapped && sawWindow(display))
            start.mapped = elapsed();
        if ((sources[1].revents & POLLIN) != 0) {
            std::array<char, 4096> part{};
            const ssize_t count = read(child.output, part.data(), part.size());
            text.append(part.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
            if (!start.printed && text.find(connected) != std::string::npos)
                start.printed = elapsed();
        } else if (sources[1].revents != 0) {
            break; // The program has ended.
        }
    }
    endProgram(child);
    return start;
}

void compare(Display *display, int runs)
{
    std::vector<double> bare;
    std::vector<double> mapped;
    std::vector<double> printed;
    // The first pair only warms the caches.
    for (int run = -1; run < runs; ++run) {
        const auto one = measure(display, BARE_WINDOW, false);
        const auto other = measure(display, PARVANE_HOST, true);
        if (!one.mapped || !other.mapped)
            throw std::runtime_error("A program opened no window.");
        if (run < 0)
            continue;
        bare.push_back(*one.mapped);
        mapped.push_back(*other.mapped);
        if (!other.printed)
            throw std::runtime_error("The program never said that the effect is connected.");
        printed.push_back(*other.printed);
    }
    fmt::print("bare gtkmm window mapped:      {:7.1f} ms\n", median(bare));
    fmt::print("parvane-host window mapped:    {:7.1f} ms\n", median(mapped));
    fmt::print("parvane-host effect connected: {:7.1f} ms\n", median(printed));
    printRow({"Window mapped", "a bare gtkmm window", 2.0, ratios(mapped, bare)});
    printRow({"Effect connected", "a bare gtkmm window mapped", 2.5, ratios(printed, bare)});
}

} // namespace

int main(int argc, char *argv[])
{
    try {
        const DisplayHandle display(XOpenDisplay(nullptr));
        if (!display)
            throw std::runtime_error("There is no display.");
        XSetErrorHandler([](Display *, XErrorEvent *) { return 0; });
        XSelectInput(display.get(), DefaultRootWindow(display.get()), SubstructureNotifyMask);
        setenv("LV2_PATH", LV2_DIRECTORY, 1);
        compare(display.get(), argc > 1 ? std::stoi(argv[1]) : 15);
    } catch (const std::exception &error) {
        fmt::print(stderr, "{}\n", error.what());
        return 1;
    }
    return 0;
}
