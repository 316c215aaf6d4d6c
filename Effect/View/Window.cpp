#include "Effect/View/Window.hpp"

#include "Effect/View/ErrorTrap.hpp"
#include "Effect/View/Keys.hpp"
#include "Effect/View/Layout.hpp"

#include <X11/Xutil.h>

#include <algorithm>
#include <bit>
#include <stdexcept>

namespace effect::view
{

namespace
{

constexpr long pointerEvents =
    ButtonPressMask | ButtonReleaseMask | PointerMotionMask | EnterWindowMask | LeaveWindowMask;
/// Key events only while the window has the focus: they also come to the window under
/// the pointer when the focus is on one of its parents, and there they belong.
constexpr long events = ExposureMask | StructureNotifyMask | FocusChangeMask | pointerEvents;
constexpr long eventsWithKeys = events | KeyPressMask;

constexpr unsigned wheelUp = 4;
constexpr unsigned wheelDown = 5;

/// The least size that is legible.
constexpr double leastScale = 0.6;

/// Whether the window's pixels are those of cairo's images.
bool takesPixels(const XWindowAttributes &window)
{
    const Visual &visual = *window.visual;
    return (window.depth == 24 || window.depth == 32) && visual.red_mask == 0xFF0000 &&
           visual.green_mask == 0xFF00 && visual.blue_mask == 0xFF;
}

bool isFine(unsigned state)
{
    return (state & ShiftMask) != 0;
}

} // namespace

void Window::Disconnect::operator()(Display *display) const
{
    // The window and all else go with their connection.
    const ErrorTrap trap(display);
    XCloseDisplay(display);
}

void Window::FreeContext::operator()(GC context) const
{
    XFreeGC(display, context);
}

Window::Window(::Window parent, PixelSize size) : display_(XOpenDisplay(nullptr)), size_(size)
{
    if (!display_) {
        throw std::runtime_error("There is no X display.");
    }
    const ErrorTrap trap(display_.get());
    XSetWindowAttributes attributes{};
    attributes.event_mask = events;
    // Without a ground of the server's a window that grows does not flash.
    attributes.background_pixmap = None;
    attributes.bit_gravity = NorthWestGravity;
    id_ = XCreateWindow(display_.get(), parent, 0, 0, static_cast<unsigned>(size.width),
                        static_cast<unsigned>(size.height), 0, CopyFromParent, InputOutput,
                        CopyFromParent, CWEventMask | CWBackPixmap | CWBitGravity, &attributes);
    announceSizes();
    XMapWindow(display_.get(), id_);
    XWindowAttributes actual{};
    if (trap.caught() || XGetWindowAttributes(display_.get(), id_, &actual) == 0) {
        throw std::runtime_error("The parent window is none.");
    }
    if (!takesPixels(actual)) {
        throw std::runtime_error("The parent window has other colours than ours.");
    }
    depth_ = static_cast<unsigned>(actual.depth);
    context_ = {XCreateGC(display_.get(), id_, 0, nullptr), FreeContext{display_.get()}};
}

void Window::resize(PixelSize size)
{
    const ErrorTrap trap(display_.get());
    XResizeWindow(display_.get(), id_, static_cast<unsigned>(size.width),
                  static_cast<unsigned>(size.height));
    XFlush(display_.get());
}

void Window::announceSizes()
{
    XSizeHints hints{};
    hints.flags = PSize | PBaseSize | PMinSize | PAspect;
    hints.width = size_.width;
    hints.height = size_.height;
    hints.min_width = static_cast<int>(layout::width * leastScale);
    hints.min_height = static_cast<int>(layout::height * leastScale);
    hints.min_aspect = {static_cast<int>(layout::width), static_cast<int>(layout::height)};
    hints.max_aspect = hints.min_aspect;
    XSetWMNormalHints(display_.get(), id_, &hints);
}

bool Window::dispatch(WindowListener &listener)
{
    const ErrorTrap trap(display_.get());
    while (!isGone_ && XPending(display_.get()) > 0) {
        XEvent event;
        XNextEvent(display_.get(), &event);
        handle(event, listener);
    }
    return !isGone_;
}

void Window::show(cairo_surface_t *surface, const PixelBox &box)
{
    const ErrorTrap trap(display_.get());
    cairo_surface_flush(surface);
    // Only borrows the pixels, so that nothing of it has to be destroyed.
    XImage image{};
    image.width = cairo_image_surface_get_width(surface);
    image.height = cairo_image_surface_get_height(surface);
    image.format = ZPixmap;
    image.data = reinterpret_cast<char *>(cairo_image_surface_get_data(surface));
    image.byte_order = std::endian::native == std::endian::little ? LSBFirst : MSBFirst;
    image.bitmap_unit = 32;
    image.bitmap_bit_order = image.byte_order;
    image.bitmap_pad = 32;
    image.depth = static_cast<int>(depth_);
    image.bytes_per_line = cairo_image_surface_get_stride(surface);
    image.bits_per_pixel = 32;
    if (image.data == nullptr || XInitImage(&image) == 0) {
        return;
    }
    const int x = std::clamp(box.x, 0, image.width);
    const int y = std::clamp(box.y, 0, image.height);
    const int right = std::clamp(box.x + box.width, x, image.width);
    const int bottom = std::clamp(box.y + box.height, y, image.height);
    XPutImage(display_.get(), id_, context_.get(), &image, x, y, x, y,
              static_cast<unsigned>(right - x), static_cast<unsigned>(bottom - y));
    XFlush(display_.get());
}

void Window::handle(XEvent &event, WindowListener &listener)
{
    switch (event.type) {
    case ConfigureNotify: {
        const PixelSize size{event.xconfigure.width, event.xconfigure.height};
        if (size != size_) {
            size_ = size;
            listener.resized(size);
        }
        break;
    }
    case Expose:
        listener.exposed();
        break;
    case UnmapNotify:
        // The server gives no release to a window that is not there.
        listener.released();
        listener.left();
        break;
    case DestroyNotify:
        isGone_ = true;
        break;
    case ButtonPress:
        handleButton(event.xbutton, listener);
        break;
    case ButtonRelease:
        if (event.xbutton.button == Button1) {
            listener.released();
        }
        break;
    case EnterNotify:
        listener.moved(event.xcrossing.x, event.xcrossing.y, isFine(event.xcrossing.state));
        break;
    case MotionNotify:
        listener.moved(event.xmotion.x, event.xmotion.y, isFine(event.xmotion.state));
        break;
    case LeaveNotify:
        listener.left();
        break;
    case KeyPress:
        handleKey(event.xkey, listener);
        break;
    case FocusIn:
    case FocusOut:
        handleFocus(event.xfocus, listener);
        break;
    case MappingNotify:
        XRefreshKeyboardMapping(&event.xmapping);
        break;
    default:
        break;
    }
}

void Window::handleButton(const XButtonEvent &event, WindowListener &listener)
{
    if (event.button == wheelUp || event.button == wheelDown) {
        listener.scrolled(event.x, event.y, event.button == wheelUp ? 1 : -1, isFine(event.state));
    } else if (event.button == Button1) {
        XSetInputFocus(display_.get(), id_, RevertToParent, event.time);
        listener.pressed(event.x, event.y, static_cast<std::uint32_t>(event.time));
    }
}

void Window::handleKey(XKeyEvent &event, WindowListener &listener)
{
    // With these held a key is some shortcut's.
    if ((event.state & (ControlMask | Mod1Mask | Mod4Mask)) != 0) {
        return;
    }
    KeySym symbol = NoSymbol;
    XLookupString(&event, nullptr, 0, &symbol, nullptr);
    if (const auto key = keyFor(symbol)) {
        listener.pressed(*key, isFine(event.state));
    }
}

void Window::handleFocus(const XFocusChangeEvent &event, WindowListener &listener)
{
    // The pointer's own focus is a parent's.
    if (event.detail == NotifyPointer) {
        return;
    }
    const bool owned = event.type == FocusIn;
    XSelectInput(display_.get(), id_, owned ? eventsWithKeys : events);
    listener.keyboardOwned(owned);
}

} // namespace effect::view
