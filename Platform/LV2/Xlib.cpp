#include "Platform/LV2/Xlib.hpp"

#include "Platform/Foundation/PlatformError.hpp"

#include <string>

#include <dlfcn.h>

namespace platform::lv2
{

namespace
{

/// Finds each function under its name, as what it is.
class Library
{
public:
    Library() : handle_(::dlopen("libX11.so.6", RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE))
    {
        if (!handle_)
            throw PlatformError(std::string("The X library cannot be loaded: ") + ::dlerror());
    }

    template <typename Function>
    void find(Function &function, const char *name) const
    {
        function = reinterpret_cast<Function>(::dlsym(handle_, name));
        if (!function)
            throw PlatformError(std::string("The X library lacks ") + name + ".");
    }

private:
    void *handle_;
};

Xlib load()
{
    const Library library;
    Xlib x{};
    library.find(x.openDisplay, "XOpenDisplay");
    library.find(x.closeDisplay, "XCloseDisplay");
    library.find(x.setErrorHandler, "XSetErrorHandler");
    library.find(x.setIOErrorHandler, "XSetIOErrorHandler");
    library.find(x.getErrorText, "XGetErrorText");
    library.find(x.connectionNumber, "XConnectionNumber");
    library.find(x.selectInput, "XSelectInput");
    library.find(x.queryTree, "XQueryTree");
    library.find(x.getWindowAttributes, "XGetWindowAttributes");
    library.find(x.getWMNormalHints, "XGetWMNormalHints");
    library.find(x.mapWindow, "XMapWindow");
    library.find(x.resizeWindow, "XResizeWindow");
    library.find(x.pending, "XPending");
    library.find(x.nextEvent, "XNextEvent");
    library.find(x.flush, "XFlush");
    library.find(x.sync, "XSync");
    library.find(x.free, "XFree");
    return x;
}

} // namespace

const Xlib &Xlib::shared()
{
    static const Xlib x = load();
    return x;
}

} // namespace platform::lv2
