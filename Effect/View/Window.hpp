#pragma once

#include "Effect/View/Canvas.hpp"
#include "Effect/View/Panel.hpp"

#include <X11/Xlib.h>

#include <cstdint>
#include <memory>
#include <type_traits>

namespace effect::view
{

/// Hears what happens to a window; places in pixels, times in milliseconds.
class WindowListener
{
public:
    virtual void resized(PixelSize size) = 0;
    virtual void exposed() = 0;
    virtual void pressed(int x, int y, std::uint32_t milliseconds) = 0;
    virtual void moved(int x, int y, bool fine) = 0;
    virtual void released() = 0;
    virtual void left() = 0;
    virtual void scrolled(int x, int y, int notches, bool fine) = 0;
    virtual void pressed(Key key, bool fine) = 0;
    virtual void keyboardOwned(bool owned) = 0;

protected:
    ~WindowListener() = default;
};

/// A child window of the host's, on a connection of its own, so that nothing of the
/// host's connection is touched. Used by one thread.
class Window
{
public:
    /// Throws `std::runtime_error` without a display or without such a parent, or where
    /// its pixels are not 8 bits of red, green and blue.
    Window(::Window parent, PixelSize size);

    ::Window id() const { return id_; }
    PixelSize size() const { return size_; }
    void resize(PixelSize size);

    /// Hands out what has happened since; false once the window is gone.
    bool dispatch(WindowListener &listener);

    /// Copies that part of the image surface to the same place in the window.
    void show(cairo_surface_t *surface, const PixelBox &box);

private:
    struct Disconnect {
        void operator()(Display *display) const;
    };

    struct FreeContext {
        Display *display;
        void operator()(GC context) const;
    };

    void announceSizes();
    void handle(XEvent &event, WindowListener &listener);
    void handleButton(const XButtonEvent &event, WindowListener &listener);
    void handleKey(XKeyEvent &event, WindowListener &listener);
    void handleFocus(const XFocusChangeEvent &event, WindowListener &listener);

    std::unique_ptr<Display, Disconnect> display_;
    ::Window id_ = None;
    PixelSize size_;
    bool isGone_ = false;
    unsigned depth_ = 0;
    std::unique_ptr<std::remove_pointer_t<GC>, FreeContext> context_;
};

} // namespace effect::view
