#include "Platform/Effect View/XConnection.hpp"

#include "Platform/Foundation/PlatformError.hpp"

#include <X11/Xlib.h>
#include <glib-unix.h>

#include <utility>

namespace platform::effectview
{

XConnection::XConnection(const std::string &display, std::function<void(XEvent &)> handler)
    : display_(XOpenDisplay(display.c_str())), handler_(std::move(handler))
{
    if (!display_)
        throw PlatformError("The display does not answer.");
    watch_ = g_unix_fd_add(
        ConnectionNumber(display_), G_IO_IN,
        [](gint, GIOCondition, gpointer self) -> gboolean {
            static_cast<XConnection *>(self)->takeEvents();
            return G_SOURCE_CONTINUE;
        },
        this);
}

XConnection::~XConnection()
{
    g_source_remove(watch_);
    if (later_ != 0)
        g_source_remove(later_);
    XCloseDisplay(display_);
}

void XConnection::flush()
{
    XFlush(display_);
    scheduleEvents();
}

void XConnection::sync()
{
    XSync(display_, False);
    scheduleEvents();
}

void XConnection::scheduleEvents()
{
    if (later_ != 0 || XEventsQueued(display_, QueuedAlready) == 0)
        return;
    later_ = g_idle_add(
        [](gpointer self) -> gboolean {
            static_cast<XConnection *>(self)->later_ = 0;
            static_cast<XConnection *>(self)->takeEvents();
            return G_SOURCE_REMOVE;
        },
        this);
}

void XConnection::takeEvents()
{
    while (XPending(display_) > 0) {
        XEvent event{};
        XNextEvent(display_, &event);
        handler_(event);
    }
}

} // namespace platform::effectview
