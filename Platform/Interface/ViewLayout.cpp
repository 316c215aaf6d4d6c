#include "Platform/Interface/ViewLayout.hpp"

#include "Platform/Interface/UIView.hpp"
#include "Platform/Interface/Widget.hpp"

#include <gtk/gtk.h>

#include <algorithm>
#include <cmath>
#include <tuple>

namespace platform::interface
{

namespace
{

/// Frames are drawn on whole points, so that edges and text stay crisp.
int wholePoint(CGFloat coordinate)
{
    constexpr CGFloat limit = 1 << 20;
    return static_cast<int>(std::lround(std::clamp(coordinate, -limit, limit)));
}

int minimumLength(GtkWidget *widget, GtkOrientation orientation, int forSize)
{
    int minimum = 0;
    gtk_widget_measure(widget, orientation, forSize, &minimum, nullptr, nullptr, nullptr);
    return minimum;
}

/// Gives the widget `frame`, which is within `owner`, or what it needs at least.
void give(GtkWidget *widget, GtkWidget *owner, const CGRect &frame)
{
    const int left = wholePoint(frame.origin.x);
    const int top = wholePoint(frame.origin.y);
    const int width = std::max(wholePoint(frame.origin.x + frame.size.width) - left,
                               minimumLength(widget, GTK_ORIENTATION_HORIZONTAL, -1));
    const int height = std::max(wholePoint(frame.origin.y + frame.size.height) - top,
                                minimumLength(widget, GTK_ORIENTATION_VERTICAL, width));
    graphene_point_t origin{static_cast<float>(left), static_cast<float>(top)};
    GtkWidget *parent = gtk_widget_get_parent(widget);
    if (parent != owner)
        std::ignore = gtk_widget_compute_point(owner, parent, &origin, &origin);
    gtk_widget_allocate(widget, width, height, -1, gsk_transform_translate(nullptr, &origin));
}

CGRect boundsWithin(GtkWidget *widget, GtkWidget *owner)
{
    graphene_rect_t bounds{};
    if (!gtk_widget_compute_bounds(widget, owner, &bounds))
        return {};
    return {bounds.origin.x, bounds.origin.y, bounds.size.width, bounds.size.height};
}

} // namespace

std::shared_ptr<ViewLayout> ViewLayout::install(UIView &view)
{
    // NOLINTNEXTLINE(cppcoreguidelines-owning-memory): the pointer takes it over
    auto layout = Glib::make_refptr_for_instance(new ViewLayout(view));
    view.widget().get().set_layout_manager(layout);
    return layout;
}

Gtk::SizeRequestMode ViewLayout::get_request_mode_vfunc(const Gtk::Widget & /*widget*/) const
{
    return view_ && view_->content_ ? view_->content_->get().get_request_mode()
                                    : Gtk::SizeRequestMode::CONSTANT_SIZE;
}

void ViewLayout::measure_vfunc(const Gtk::Widget & /*widget*/, Gtk::Orientation orientation,
                               int forSize, int &minimum, int &natural, int &minimumBaseline,
                               int &naturalBaseline) const
{
    minimum = natural = 0;
    minimumBaseline = naturalBaseline = -1;
    if (!view_ || !view_->content_)
        return;
    // The content's baselines mean nothing to those beside the view.
    int noBaseline = -1;
    view_->content_->get().measure(orientation, forSize, minimum, natural, noBaseline, noBaseline);
}

void ViewLayout::allocate_vfunc(const Gtk::Widget & /*widget*/, int width, int height,
                                int /*baseline*/)
{
    if (!view_)
        return;
    if (view_->placement_ != UIView::Placement::frame) {
        const CGPoint &origin = view_->frame_.origin;
        view_->applyFrame(CGRect(origin.x, origin.y, width, height));
    }
    if (view_->content_) {
        GtkWidget *content = view_->content_->get().gobj();
        give(content, gtk_widget_get_parent(content), CGRect(0, 0, width, height));
    }
    readStoryboard(*view_);
    view_->solveConstraints();
    placeSubviews(*view_);
}

void ViewLayout::readStoryboard(UIView &owner)
{
    GtkWidget *ownerWidget = owner.widget().get().gobj();
    for (const auto &view : owner.subviews_) {
        GtkWidget *widget = view->widget().get().gobj();
        if (view->placement_ == UIView::Placement::storyboard && gtk_widget_get_visible(widget))
            view->applyFrame(boundsWithin(widget, ownerWidget));
        if (!view->layout_)
            readStoryboard(*view);
    }
}

void ViewLayout::placeSubviews(UIView &owner)
{
    for (const auto &view : owner.subviews_) {
        if (view->placement_ == UIView::Placement::frame)
            give(view->widget().get().gobj(), owner.widget().get().gobj(), view->frame_);
        if (!view->layout_)
            placeSubviews(*view);
    }
}

} // namespace platform::interface
