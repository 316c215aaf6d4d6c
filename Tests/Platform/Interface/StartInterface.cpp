#include "Tests/Platform/Interface/StartInterface.hpp"

#include <gtk/gtk.h>
#include <gtkmm/init.h>

#include <cstdlib>

void useDisplay(const std::string &display)
{
    setenv("DISPLAY", display.c_str(), 1);
    setenv("GDK_BACKEND", "x11", 1);
    // No OpenGL: its drivers leak, and windows open sooner without.
    setenv("GSK_RENDERER", "cairo", 1);
    setenv("GDK_DEBUG", "gl-disable", 1);
    setenv("GTK_A11Y", "none", 1);
    setenv("GSETTINGS_BACKEND", "memory", 1);
    unsetenv("WAYLAND_DISPLAY");
}

void startInterface()
{
    gtk_init();
    Gtk::init_gtkmm_internals();
}
