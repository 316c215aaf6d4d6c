#include "Benchmarks/Interface/Screen.hpp"

#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/extensions/XTest.h>
#include <X11/keysym.h>

#include <chrono>
#include <span>
#include <stdexcept>
#include <thread>

namespace bench
{

namespace
{

constexpr std::chrono::seconds patience{60};
constexpr int step = 4;

bool isCalled(Display *display, Window window, const std::string &title)
{
    char *name = nullptr;
    XWindowAttributes attributes{};
    const bool found = XFetchName(display, window, &name) != 0 && title == name &&
                       XGetWindowAttributes(display, window, &attributes) != 0 &&
                       attributes.map_state == IsViewable;
    if (name)
        XFree(name);
    return found;
}

Window find(Display *display, Window within, const std::string &title)
{
    if (isCalled(display, within, title))
        return within;
    Window root = 0;
    Window parent = 0;
    Window *children = nullptr;
    unsigned int count = 0;
    Window found = 0;
    if (XQueryTree(display, within, &root, &parent, &children, &count) == 0)
        return 0;
    for (const Window child : std::span(children, count))
        found = found != 0 ? found : find(display, child, title);
    if (children)
        XFree(children);
    return found;
}

} // namespace

void Screen::Close::operator()(Display *display) const
{
    XCloseDisplay(display);
}

Screen::Screen() : display_(XOpenDisplay(nullptr))
{
    if (!display_)
        throw std::runtime_error("There is no display.");
    // Windows come and go between two questions.
    XSetErrorHandler([](Display *, XErrorEvent *) { return 0; });
}

Screen::Window Screen::waitForWindow(const std::string &title) const
{
    const auto end = std::chrono::steady_clock::now() + patience;
    while (std::chrono::steady_clock::now() < end) {
        if (const Window found = find(display_.get(), DefaultRootWindow(display_.get()), title))
            return found;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    throw std::runtime_error("There is no window '" + title + "'.");
}

void Screen::resize(Window window, int width, int height) const
{
    XResizeWindow(display_.get(), window, static_cast<unsigned int>(width),
                  static_cast<unsigned int>(height));
    XFlush(display_.get());
}

void Screen::type(Window window, unsigned long symbol, bool withControl) const
{
    Display *display = display_.get();
    XSetInputFocus(display, window, RevertToParent, CurrentTime);
    XSync(display, False);
    const KeyCode control = XKeysymToKeycode(display, XK_Control_L);
    const KeyCode key = XKeysymToKeycode(display, symbol);
    if (withControl)
        XTestFakeKeyEvent(display, control, True, CurrentTime);
    XTestFakeKeyEvent(display, key, True, CurrentTime);
    XTestFakeKeyEvent(display, key, False, CurrentTime);
    if (withControl)
        XTestFakeKeyEvent(display, control, False, CurrentTime);
    XFlush(display);
}

std::vector<std::uint32_t> Screen::picture(Window window) const
{
    Display *display = display_.get();
    XWindowAttributes extent{};
    int x = 0;
    int y = 0;
    Window child = 0;
    const Window root = DefaultRootWindow(display);
    if (XGetWindowAttributes(display, window, &extent) == 0 ||
        XTranslateCoordinates(display, window, root, 0, 0, &x, &y, &child) == 0)
        return {};
    // Of the root: a window's own picture leaves out children of another depth.
    XImage *image = XGetImage(display, root, x, y, static_cast<unsigned int>(extent.width),
                              static_cast<unsigned int>(extent.height), AllPlanes, ZPixmap);
    if (!image)
        return {};
    std::vector<std::uint32_t> pixels;
    for (int row = 0; row < image->height; row += step)
        for (int column = 0; column < image->width; column += step)
            pixels.push_back(static_cast<std::uint32_t>(XGetPixel(image, column, row)));
    XDestroyImage(image);
    return pixels;
}

} // namespace bench
