#include "Platform/Effect View/FrameWindow.hpp"

#include <gtk/gtk.h>

#include <X11/Xlib.h>
#include <X11/keysym.h>

#include <algorithm>
#include <array>
#include <span>
#include <utility>

namespace platform::effectview
{

namespace
{

// The wheel turns knobs and is no wish for the keyboard.
constexpr std::array<unsigned int, 3> clickButtons{Button1, Button2, Button3};

// With Caps Lock and Num Lock a key is the same key.
constexpr std::array<unsigned int, 4> lockStates{0, LockMask, Mod2Mask, LockMask | Mod2Mask};
constexpr unsigned int meaningfulModifiers = ShiftMask | ControlMask | Mod1Mask | Mod4Mask;

struct Key {
    unsigned int symbol = 0;
    unsigned int modifiers = 0;
};

/// GDK's key values and its first modifiers are X's.
Key parse(const std::string &accelerator)
{
    guint symbol = 0;
    GdkModifierType modifiers{};
    gtk_accelerator_parse(accelerator.c_str(), &symbol, &modifiers);
    return {symbol, static_cast<unsigned int>(modifiers) & meaningfulModifiers};
}

unsigned long makeWindow(Display *display, unsigned long parent)
{
    const int screen = DefaultScreen(display);
    XSetWindowAttributes attributes{};
    attributes.border_pixel = 0;
    attributes.colormap = DefaultColormap(display, screen);
    // No window manager is to frame it while it is nowhere.
    attributes.override_redirect = True;
    return XCreateWindow(display, parent, 0, 0, 1, 1, 0, DefaultDepth(display, screen), InputOutput,
                         DefaultVisual(display, screen),
                         CWBorderPixel | CWColormap | CWOverrideRedirect, &attributes);
}

} // namespace

FrameWindow::FrameWindow(const std::string &display, std::vector<std::string> hostKeys,
                         std::function<void(const std::string &)> hostKey)
    : hostKeys_(std::move(hostKeys)), hostKey_(std::move(hostKey)),
      connection_(display, [this](XEvent &event) { handle(event); })
{
    Display *x = connection_.get();
    root_ = DefaultRootWindow(x);
    outer_ = makeWindow(x, root_);
    inner_ = makeWindow(x, outer_);
    XMapWindow(x, inner_);
    grabButtons();
    grabKeys();
    // Another process is about to use it.
    connection_.sync();
}

void FrameWindow::grabButtons()
{
    for (const unsigned int button : clickButtons)
        XGrabButton(connection_.get(), button, AnyModifier, inner_, False, ButtonPressMask,
                    GrabModeSync, GrabModeAsync, None, None);
}

void FrameWindow::grabKeys()
{
    for (const std::string &accelerator : hostKeys_) {
        const Key key = parse(accelerator);
        const KeyCode code = XKeysymToKeycode(connection_.get(), key.symbol);
        for (const unsigned int locks : lockStates)
            XGrabKey(connection_.get(), code, key.modifiers | locks, inner_, False, GrabModeAsync,
                     GrabModeAsync);
    }
}

void FrameWindow::reparent(unsigned long parent)
{
    giveKeyboardBack();
    hide();
    XReparentWindow(connection_.get(), outer_, parent, 0, 0);
    connection_.sync();
}

void FrameWindow::attach(unsigned long toplevel)
{
    reparent(toplevel);
    toplevel_ = toplevel;
}

void FrameWindow::detach()
{
    // In time: its surroundings are about to be destroyed on another connection.
    reparent(root_);
    toplevel_ = 0;
}

void FrameWindow::show(const Placement &placement)
{
    if (!isAttached() || (isShown_ && placement == placement_))
        return;
    Display *x = connection_.get();
    XMoveResizeWindow(x, inner_, placement.offsetX, placement.offsetY,
                      std::max(placement.view.width, 1U), std::max(placement.view.height, 1U));
    XMoveResizeWindow(x, outer_, placement.seen.x, placement.seen.y,
                      std::max(placement.seen.width, 1U), std::max(placement.seen.height, 1U));
    if (!isShown_)
        XMapRaised(x, outer_);
    placement_ = placement;
    isShown_ = true;
    connection_.flush();
}

void FrameWindow::setBackground(unsigned long colour)
{
    XColor allocated{};
    allocated.red = static_cast<unsigned short>((colour >> 16U & 0xFFU) * 0x101U);
    allocated.green = static_cast<unsigned short>((colour >> 8U & 0xFFU) * 0x101U);
    allocated.blue = static_cast<unsigned short>((colour & 0xFFU) * 0x101U);
    Display *x = connection_.get();
    if (XAllocColor(x, DefaultColormap(x, DefaultScreen(x)), &allocated) == 0)
        return;
    XSetWindowBackground(x, outer_, allocated.pixel);
    XSetWindowBackground(x, inner_, allocated.pixel);
    connection_.flush();
}

void FrameWindow::hide()
{
    if (!std::exchange(isShown_, false))
        return;
    giveKeyboardBack();
    XUnmapWindow(connection_.get(), outer_);
    connection_.flush();
}

void FrameWindow::handle(XEvent &event)
{
    if (event.type == ButtonPress) {
        // Freed before anything else: the pointer stands still meanwhile.
        XAllowEvents(connection_.get(), ReplayPointer, event.xbutton.time);
        connection_.flush();
        takeKeyboard();
    } else if (event.type == KeyPress) {
        const auto symbol = static_cast<unsigned int>(XLookupKeysym(&event.xkey, 0));
        const unsigned int modifiers = event.xkey.state & meaningfulModifiers;
        for (const std::string &accelerator : hostKeys_) {
            const Key key = parse(accelerator);
            if (key.symbol == symbol && key.modifiers == modifiers)
                hostKey_(accelerator);
        }
    }
}

unsigned long FrameWindow::viewWindow() const
{
    Window root = 0;
    Window parent = 0;
    Window *children = nullptr;
    unsigned int count = 0;
    if (XQueryTree(connection_.get(), inner_, &root, &parent, &children, &count) == 0)
        return 0;
    Window view = 0;
    // The uppermost is the last.
    if (count > 0)
        view = std::span(children, count).back();
    if (children)
        XFree(children);
    XWindowAttributes attributes{};
    const bool isSeen = view != 0 &&
                        XGetWindowAttributes(connection_.get(), view, &attributes) != 0 &&
                        attributes.map_state == IsViewable;
    return isSeen ? view : 0;
}

void FrameWindow::takeKeyboard()
{
    const unsigned long view = viewWindow();
    if (view == 0)
        return;
    Window focus = 0;
    int revert = 0;
    XGetInputFocus(connection_.get(), &focus, &revert);
    if (!std::exchange(tookKeyboard_, true))
        formerFocus_ = focus;
    XSetInputFocus(connection_.get(), view, RevertToParent, CurrentTime);
    connection_.flush();
}

void FrameWindow::giveKeyboardBack()
{
    if (!std::exchange(tookKeyboard_, false))
        return;
    Window focus = 0;
    int revert = 0;
    XGetInputFocus(connection_.get(), &focus, &revert);
    // Somebody else may have taken it meanwhile.
    if (focus == formerFocus_)
        return;
    Window root = 0;
    Window parent = 0;
    Window *children = nullptr;
    unsigned int count = 0;
    for (Window above = focus; above > PointerRoot && above != inner_ && above != root_;
         above = parent) {
        if (XQueryTree(connection_.get(), above, &root, &parent, &children, &count) == 0)
            return;
        if (children)
            XFree(children);
        if (parent == root_)
            return;
    }
    XSetInputFocus(connection_.get(), formerFocus_, RevertToParent, CurrentTime);
    connection_.flush();
}

} // namespace platform::effectview
