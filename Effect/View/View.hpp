#pragma once

#include "Effect/View/Canvas.hpp"
#include "Effect/View/Host.hpp"
#include "Effect/View/Panel.hpp"
#include "Effect/View/RotorMotion.hpp"
#include "Effect/View/Window.hpp"

#include <cstdint>

namespace effect::view
{

/// The plug-in's view: panel, rotors, picture and window together. Used by one thread.
class View final : private WindowListener
{
public:
    /// Throws `std::runtime_error` where there is no window to be had.
    explicit View(const Host &host);

    ::Window window() const { return window_.id(); }

    /// The value of a port of the plug-in; ports that are not shown are passed over.
    void receive(std::uint32_t port, float value);
    void resize(PixelSize size);

    /// Hears the window and draws what has changed; false once the window is gone.
    bool idle();

private:
    void resized(PixelSize size) override;
    void exposed() override;
    void pressed(int x, int y, std::uint32_t milliseconds) override;
    void moved(int x, int y, bool fine) override;
    void released() override;
    void left() override;
    void scrolled(int x, int y, int notches, bool fine) override;
    void pressed(Key key, bool fine) override;
    void keyboardOwned(bool owned) override;

    void draw(double now);
    void drawRotors(double now, bool all);
    template <typename Paint>
    void repaint(const Box &box, Paint paint);

    Host host_;
    Panel panel_;
    RotorMotion horn_;
    RotorMotion drum_;
    Window window_;
    Fit fit_;
    Canvas canvas_;
    /// What has to be done at the next drawing.
    bool isOutgrown_ = false;
    bool isStale_ = true;
    bool isExposed_ = false;
};

} // namespace effect::view
