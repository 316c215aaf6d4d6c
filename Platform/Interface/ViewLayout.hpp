#pragma once

#include "Platform/Interface/CGGeometry.hpp"

#include <gtkmm/layoutmanager.h>

#include <memory>

class UIView;

namespace platform::interface
{

/// Gives the widgets inside a plain view the places that the views have: the content
/// all of it, a subview its frame, also where that is outside. A scene's content is
/// laid out by GTK first; then its views learn their frames, and those whose frame
/// the program has set are moved there.
class ViewLayout : public Gtk::LayoutManager
{
public:
    /// Becomes the layout of the view's widget.
    static std::shared_ptr<ViewLayout> install(UIView &view);

    /// The view goes; its widget may stay a while.
    void forget() { view_ = nullptr; }

protected:
    Gtk::SizeRequestMode get_request_mode_vfunc(const Gtk::Widget &widget) const override;
    void measure_vfunc(const Gtk::Widget &widget, Gtk::Orientation orientation, int forSize,
                       int &minimum, int &natural, int &minimumBaseline,
                       int &naturalBaseline) const override;
    void allocate_vfunc(const Gtk::Widget &widget, int width, int height, int baseline) override;

private:
    explicit ViewLayout(UIView &view) : view_(&view) {}

    static void readStoryboard(UIView &owner);
    static void placeSubviews(UIView &owner);

    UIView *view_;
};

} // namespace platform::interface
