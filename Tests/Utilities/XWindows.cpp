#include "Tests/Utilities/XWindows.hpp"

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <fstream>
#include <set>
#include <span>
#include <stdexcept>

namespace test
{

namespace
{

struct DestroyImage {
    void operator()(XImage *image) const { XDestroyImage(image); }
};
using Image = std::unique_ptr<XImage, DestroyImage>;

Image imageOf(Display *display, Window window)
{
    XWindowAttributes attributes{};
    if (XGetWindowAttributes(display, window, &attributes) == 0 ||
        attributes.map_state != IsViewable)
        return nullptr;
    return Image(XGetImage(display, window, 0, 0, static_cast<unsigned int>(attributes.width),
                           static_cast<unsigned int>(attributes.height), AllPlanes, ZPixmap));
}

} // namespace

void XWindows::Close::operator()(_XDisplay *display) const
{
    XCloseDisplay(display);
}

XWindows::XWindows() : display_(XOpenDisplay(nullptr))
{
    if (!display_)
        throw std::runtime_error("The display does not answer.");
    // Windows go while they are looked at.
    XSetErrorHandler([](Display *, XErrorEvent *) { return 0; });
}

XWindows::Window XWindows::root() const
{
    return DefaultRootWindow(display_.get());
}

XWindows::Window XWindows::make(int width, int height)
{
    const Window window =
        XCreateSimpleWindow(display_.get(), root(), 0, 0, static_cast<unsigned int>(width),
                            static_cast<unsigned int>(height), 0, 0, 0);
    XMapWindow(display_.get(), window);
    XSync(display_.get(), False);
    return window;
}

void XWindows::destroy(Window window)
{
    XDestroyWindow(display_.get(), window);
    XSync(display_.get(), False);
}

std::vector<XWindows::Window> XWindows::children(Window parent) const
{
    ::Window above = 0;
    ::Window ofAll = 0;
    ::Window *found = nullptr;
    unsigned int count = 0;
    if (XQueryTree(display_.get(), parent, &ofAll, &above, &found, &count) == 0 || !found)
        return {};
    const std::span<::Window> windows(found, count);
    std::vector<Window> result(windows.begin(), windows.end());
    XFree(found);
    return result;
}

std::vector<XWindows::Window> XWindows::descendants(Window parent) const
{
    std::vector<Window> all = children(parent);
    for (std::size_t i = 0; i < all.size(); ++i) {
        const auto below = children(all[i]);
        all.insert(all.end(), below.begin(), below.end());
    }
    return all;
}

bool XWindows::isThere(Window window) const
{
    XWindowAttributes attributes{};
    return XGetWindowAttributes(display_.get(), window, &attributes) != 0;
}

bool XWindows::isViewable(Window window) const
{
    XWindowAttributes attributes{};
    return XGetWindowAttributes(display_.get(), window, &attributes) != 0 &&
           attributes.map_state == IsViewable;
}

int XWindows::depth(Window window) const
{
    XWindowAttributes attributes{};
    return XGetWindowAttributes(display_.get(), window, &attributes) != 0 ? attributes.depth : 0;
}

XWindows::Extent XWindows::extent(Window window) const
{
    XWindowAttributes attributes{};
    if (XGetWindowAttributes(display_.get(), window, &attributes) == 0)
        return {};
    return {attributes.x, attributes.y, attributes.width, attributes.height};
}

XWindows::Extent XWindows::onScreen(Window window) const
{
    Extent extent = this->extent(window);
    ::Window child = 0;
    XTranslateCoordinates(display_.get(), window, root(), 0, 0, &extent.x, &extent.y, &child);
    return extent;
}

std::string XWindows::text(Window window, const std::string &property) const
{
    Atom type = 0;
    int format = 0;
    unsigned long count = 0;
    unsigned long rest = 0;
    unsigned char *data = nullptr;
    const Atom name = XInternAtom(display_.get(), property.c_str(), False);
    if (XGetWindowProperty(display_.get(), window, name, 0, 65536, False, XA_STRING, &type, &format,
                           &count, &rest, &data) != Success ||
        !data)
        return {};
    const std::string value(reinterpret_cast<const char *>(data), count);
    XFree(data);
    return value;
}

XWindows::Window XWindows::focus() const
{
    ::Window window = 0;
    int revert = 0;
    XGetInputFocus(display_.get(), &window, &revert);
    return window;
}

void XWindows::sendClick(Window window, unsigned int button)
{
    XEvent event{};
    event.xbutton.type = ButtonPress;
    event.xbutton.window = window;
    event.xbutton.root = root();
    event.xbutton.button = button;
    event.xbutton.same_screen = True;
    XSendEvent(display_.get(), window, False, ButtonPressMask, &event);
    XSync(display_.get(), False);
}

std::size_t XWindows::colours(Window window) const
{
    const Image image = imageOf(display_.get(), window);
    if (!image)
        return 0;
    std::set<unsigned long> seen;
    for (int y = 0; y < image->height; ++y)
        for (int x = 0; x < image->width; ++x)
            seen.insert(XGetPixel(image.get(), x, y));
    return seen.size();
}

std::uint32_t XWindows::colour(Window window, int x, int y) const
{
    const Image image = imageOf(display_.get(), window);
    if (!image || x >= image->width || y >= image->height)
        return 0;
    return static_cast<std::uint32_t>(XGetPixel(image.get(), x, y) & 0xFFFFFFU);
}

void XWindows::savePicture(const std::string &path) const
{
    const Image image = imageOf(display_.get(), root());
    if (!image)
        return;
    std::ofstream file(path, std::ios::binary);
    file << "P6\n" << image->width << ' ' << image->height << "\n255\n";
    for (int y = 0; y < image->height; ++y)
        for (int x = 0; x < image->width; ++x) {
            const unsigned long pixel = XGetPixel(image.get(), x, y);
            file.put(static_cast<char>(pixel >> 16U));
            file.put(static_cast<char>(pixel >> 8U));
            file.put(static_cast<char>(pixel));
        }
}

} // namespace test
