#include "Tests/Platform/Interface/StartInterface.hpp"

#include <gtk/gtk.h>
#include <gtkmm/init.h>

#include <cstdlib>

namespace
{

/// Pango reads the configuration of fonts on a thread of its own, and with it the
/// environment, in which a test may set variables. The first text waits for it.
void waitForFonts()
{
    PangoContext *const context = pango_font_map_create_context(pango_cairo_font_map_get_default());
    PangoLayout *const layout = pango_layout_new(context);
    pango_layout_set_text(layout, "a", 1);
    pango_layout_get_size(layout, nullptr, nullptr);
    g_object_unref(layout);
    g_object_unref(context);
}

} // namespace

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
    waitForFonts();
}
