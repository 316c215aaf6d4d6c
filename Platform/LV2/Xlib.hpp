#pragma once

#include <X11/Xlib.h>
#include <X11/Xutil.h>

namespace platform::lv2
{

/// The functions of Xlib that are used here, loaded with the first view: an effect
/// without one starts faster.
struct Xlib {
    ///@{
    /// The function of Xlib of that name.
    decltype(&XOpenDisplay) openDisplay;
    decltype(&XCloseDisplay) closeDisplay;
    decltype(&XSetErrorHandler) setErrorHandler;
    decltype(&XSetIOErrorHandler) setIOErrorHandler;
    decltype(&XGetErrorText) getErrorText;
    decltype(&XConnectionNumber) connectionNumber;
    decltype(&XSelectInput) selectInput;
    decltype(&XQueryTree) queryTree;
    decltype(&XGetWindowAttributes) getWindowAttributes;
    decltype(&XGetWMNormalHints) getWMNormalHints;
    decltype(&XMapWindow) mapWindow;
    decltype(&XResizeWindow) resizeWindow;
    decltype(&XPending) pending;
    decltype(&XNextEvent) nextEvent;
    decltype(&XFlush) flush;
    decltype(&XSync) sync;
    decltype(&XFree) free;
    ///@}

    /// A `PlatformError` when it is not there.
    static const Xlib &shared();
};

} // namespace platform::lv2
