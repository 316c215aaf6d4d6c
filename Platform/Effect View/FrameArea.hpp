#pragma once

#include "Platform/Effect View/FrameWindow.hpp"
#include "Platform/LV2/ViewSize.hpp"

#include <gtkmm/gestureclick.h>
#include <gtkmm/widget.h>

#include <functional>
#include <memory>
#include <optional>

namespace platform::effectview
{

/// The widget over which the effect's view stands: it asks for the view's size and
/// keeps the windows of the view where it is itself, clipped as it is, for as long
/// as it is shown.
class FrameArea : public Gtk::Widget
{
public:
    FrameArea();
    ~FrameArea() override;

    /// The window for the view; none before the area is shown for the first time, or
    /// where there is no X display.
    const std::shared_ptr<FrameWindow> &window() const { return window_; }
    /// Lets go of the window, so that the next view gets one of its own.
    void releaseWindow();

    /// The size of the view in pixels; none hides its windows.
    void setView(std::optional<lv2::ViewSize> view);
    /// A covered area hides the view, which would stand in front of the cover.
    void setCovered(bool covered);

    /// Is called after each frame that GTK draws while the area is shown.
    void setFrameHandler(std::function<void()> handler) { frameHandler_ = std::move(handler); }

protected:
    void measure_vfunc(Gtk::Orientation orientation, int forSize, int &minimum, int &natural,
                       int &minimumBaseline, int &naturalBaseline) const override;
    void on_realize() override;
    void on_unrealize() override;
    void on_map() override;
    void on_unmap() override;

private:
    void makeWindow();
    void follow();
    std::optional<FrameWindow::Placement> placement() const;

    std::shared_ptr<FrameWindow> window_;
    std::optional<lv2::ViewSize> view_;
    bool isCovered_ = false;
    std::function<void()> frameHandler_;
    unsigned long framesConnection_ = 0;
    Glib::RefPtr<Gtk::GestureClick> clicksElsewhere_;
};

} // namespace platform::effectview
