#pragma once

#include "Platform/Audio/RemoteAudioUnit.hpp"
#include "Platform/Interface/AUViewController.hpp"
#include "Platform/Interface/UIWindow.hpp"
#include "Tests/Utilities/XWindows.hpp"

#include <functional>
#include <memory>
#include <string>

namespace test
{

/// The view of a unit in a window of ours, seen with the eyes of the display.
class ShownView
{
public:
    using Phase = platform::effect::EffectView::Phase;

    /// Asks the unit for its view controller and shows it in a new window of that
    /// size; `controller` is none when the unit has none.
    ShownView(RemoteAudioUnit &unit, int width, int height);
    /// Closes view and window.
    ~ShownView();
    ShownView(const ShownView &) = delete;
    ShownView &operator=(const ShownView &) = delete;

    std::shared_ptr<AUViewController> controller;
    std::shared_ptr<UIWindow> window;

    Phase phase() const { return view_->status().phase; }
    platform::effect::EffectView::Status status() const { return view_->status(); }
    /// Waits until the view is open; false when it does not open.
    bool waitUntilOpen() const;
    bool waitUntil(const std::function<bool()> &condition) const;

    void resize(int width, int height) const;
    void setHidden(bool hidden) const;
    /// Takes the view out of the window and lets go of it.
    void close();

    /// The window's own X window.
    XWindows::Window toplevel() const;
    /// What is seen of the view; the view's parent; the view's own window. 0 without.
    XWindows::Window outer() const;
    XWindows::Window inner() const;
    XWindows::Window own() const;

    XWindows x;

private:
    const std::shared_ptr<platform::effect::EffectView> view_;
};

/// Serves the main thread for so many seconds.
void serveMainThreadFor(double seconds);

} // namespace test
