#include "Tests/Platform/Interface/Display.hpp"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtk/gtk.h>
#include <gtkmm/init.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <string>

namespace
{

constexpr const char *ownDisplay = "PARVANE_TEST_DISPLAY";

[[noreturn]] void becomeServer(int answer)
{
    // However the tests end, their server ends with them.
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    const std::string descriptor = std::to_string(answer);
    execlp("Xvfb", "Xvfb", "-displayfd", descriptor.c_str(), "-screen", "0", "1280x800x24",
           "-nolisten", "tcp", "-noreset", nullptr);
    _exit(127);
}

/// The server writes the number of its display when it is ready to serve.
std::string readDisplay(int answer)
{
    std::string number;
    std::array<char, 16> part{};
    while (number.find('\n') == std::string::npos) {
        const ssize_t count = read(answer, part.data(), part.size());
        if (count <= 0)
            return {};
        number.append(part.data(), static_cast<std::size_t>(count));
    }
    return ":" + number.substr(0, number.find('\n'));
}

const auto *const environment = ::testing::AddGlobalTestEnvironment(new Display);

} // namespace

void Display::SetUp()
{
    if (const char *shared = getenv(ownDisplay)) {
        setenv("DISPLAY", shared, 1);
    } else {
        std::array<int, 2> ends{};
        ASSERT_EQ(pipe(ends.data()), 0);
        server_ = fork();
        if (server_ == 0)
            becomeServer(ends[1]);
        close(ends[1]);
        const std::string display = readDisplay(ends[0]);
        close(ends[0]);
        ASSERT_FALSE(display.empty()) << "Xvfb does not start.";
        setenv("DISPLAY", display.c_str(), 1);
        setenv(ownDisplay, display.c_str(), 1);
    }
    setenv("GDK_BACKEND", "x11", 1);
    // No OpenGL: its drivers leak, and windows open sooner without.
    setenv("GSK_RENDERER", "cairo", 1);
    setenv("GDK_DEBUG", "gl-disable", 1);
    setenv("GTK_A11Y", "none", 1);
    setenv("GSETTINGS_BACKEND", "memory", 1);
    unsetenv("WAYLAND_DISPLAY");
    // The processes of death tests make a start of their own.
    if (server_ > 0)
        startInterface();
}

void Display::TearDown()
{
    if (server_ <= 0)
        return;
    kill(server_, SIGTERM);
    waitpid(server_, nullptr, 0);
}

void startInterface()
{
    gtk_init();
    Gtk::init_gtkmm_internals();
}
