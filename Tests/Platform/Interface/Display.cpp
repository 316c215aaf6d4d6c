#include "Tests/Platform/Interface/Display.hpp"

#include <gtk/gtk.h>
#include <gtkmm/init.h>

#include <cstdlib>

namespace
{

constexpr const char *ownDisplay = "PARVANE_TEST_DISPLAY";

const auto *const environment = ::testing::AddGlobalTestEnvironment(new Display);

} // namespace

void Display::SetUp()
{
    if (const char *shared = getenv(ownDisplay)) {
        setenv("DISPLAY", shared, 1);
    } else {
        server_.emplace();
        ASSERT_FALSE(server_->display().empty()) << "Xvfb does not start.";
        setenv("DISPLAY", server_->display().c_str(), 1);
        setenv(ownDisplay, server_->display().c_str(), 1);
    }
    setenv("GDK_BACKEND", "x11", 1);
    // No OpenGL: its drivers leak, and windows open sooner without.
    setenv("GSK_RENDERER", "cairo", 1);
    setenv("GDK_DEBUG", "gl-disable", 1);
    setenv("GTK_A11Y", "none", 1);
    setenv("GSETTINGS_BACKEND", "memory", 1);
    unsetenv("WAYLAND_DISPLAY");
    // The processes of death tests make a start of their own.
    if (server_)
        startInterface();
}

void Display::TearDown()
{
    server_.reset();
}

void startInterface()
{
    gtk_init();
    Gtk::init_gtkmm_internals();
}
