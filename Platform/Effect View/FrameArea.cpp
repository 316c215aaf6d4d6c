#include "Platform/Effect View/FrameArea.hpp"

#include "Platform/Effect View/Shortcuts.hpp"
#include "Platform/Foundation/PlatformError.hpp"
#include "Platform/Foundation/Print.hpp"

#include <gdk/x11/gdkx.h>
#include <gtkmm/native.h>
#include <gtkmm/root.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

namespace platform::effectview
{

namespace
{

/// What stays the host's while the view has the keyboard.
const std::vector<std::string> hostKeys{"F1", "<Control>q"};

/// How much of `of` is seen, within `within`: what scrolls clips what is in it.
graphene_rect_t seenPart(GtkWidget *of, GtkWidget *within)
{
    graphene_rect_t seen{};
    if (!gtk_widget_compute_bounds(of, within, &seen))
        return {};
    for (GtkWidget *above = of; above; above = gtk_widget_get_parent(above)) {
        graphene_rect_t bounds{};
        if (above != within && gtk_widget_get_overflow(above) != GTK_OVERFLOW_HIDDEN)
            continue;
        if (!gtk_widget_compute_bounds(above, within, &bounds) ||
            !graphene_rect_intersection(&seen, &bounds, &seen))
            return {};
        if (above == within)
            break;
    }
    return seen;
}

unsigned long backgroundOf(GtkWidget *widget)
{
    GdkRGBA colour{};
    if (!gtk_style_context_lookup_color(gtk_widget_get_style_context(widget), "theme_bg_color",
                                        &colour))
        return 0;
    const auto part = [](float value) {
        return static_cast<unsigned long>(std::lround(std::clamp(value, 0.0F, 1.0F) * 255.0F));
    };
    return part(colour.red) << 16U | part(colour.green) << 8U | part(colour.blue);
}

int pixels(double points, int scale)
{
    return static_cast<int>(std::lround(points * scale));
}

} // namespace

FrameArea::FrameArea()
{
    set_halign(Gtk::Align::CENTER);
    set_valign(Gtk::Align::CENTER);
}

FrameArea::~FrameArea() = default;

void FrameArea::releaseWindow()
{
    if (window_)
        window_->detach();
    window_.reset();
}

void FrameArea::setView(std::optional<lv2::ViewSize> view)
{
    if (view_ == view)
        return;
    view_ = view;
    queue_resize();
    if (!view_)
        follow();
}

void FrameArea::setCovered(bool covered)
{
    isCovered_ = covered;
    follow();
}

void FrameArea::measure_vfunc(Gtk::Orientation orientation, int /*forSize*/, int &minimum,
                              int &natural, int &minimumBaseline, int &naturalBaseline) const
{
    minimumBaseline = naturalBaseline = -1;
    minimum = natural = 0;
    if (!view_)
        return;
    const auto scale = static_cast<std::uint32_t>(get_scale_factor());
    const std::uint32_t length =
        orientation == Gtk::Orientation::HORIZONTAL ? view_->width : view_->height;
    minimum = natural = static_cast<int>((length + scale - 1) / scale);
}

void FrameArea::on_realize()
{
    Gtk::Widget::on_realize();
    // Whatever moves the area, a frame is drawn after it.
    framesConnection_ =
        g_signal_connect_swapped(gtk_widget_get_frame_clock(gobj()), "after-paint",
                                 G_CALLBACK(+[](FrameArea *self) { self->follow(); }), this);
    clicksElsewhere_ = Gtk::GestureClick::create();
    clicksElsewhere_->set_button(0);
    clicksElsewhere_->set_propagation_phase(Gtk::PropagationPhase::CAPTURE);
    clicksElsewhere_->signal_pressed().connect([this](int, double, double) {
        if (window_)
            window_->giveKeyboardBack();
    });
    dynamic_cast<Gtk::Widget &>(*get_root()).add_controller(clicksElsewhere_);
}

void FrameArea::on_unrealize()
{
    // GTK's window goes after this; the view's stays.
    if (window_)
        window_->detach();
    g_signal_handler_disconnect(gtk_widget_get_frame_clock(gobj()), framesConnection_);
    dynamic_cast<Gtk::Widget &>(*get_root()).remove_controller(clicksElsewhere_);
    clicksElsewhere_.reset();
    Gtk::Widget::on_unrealize();
}

void FrameArea::on_map()
{
    Gtk::Widget::on_map();
    makeWindow();
    queue_draw();
}

void FrameArea::on_unmap()
{
    Gtk::Widget::on_unmap();
    follow();
}

void FrameArea::makeWindow()
{
    GdkSurface *surface = gtk_native_get_surface(gtk_widget_get_native(gobj()));
    if (!GDK_IS_X11_SURFACE(surface))
        return;
    GdkDisplay *display = gdk_surface_get_display(surface);
    try {
        if (!window_)
            window_ = std::make_shared<FrameWindow>(
                gdk_display_get_name(display), hostKeys, [this](const std::string &key) {
                    window_->giveKeyboardBack();
                    activateShortcut(dynamic_cast<Gtk::Widget &>(*get_root()), key);
                });
    } catch (const PlatformError &error) {
        printError(std::string("The effect's view cannot be framed: ") + error.what());
        return;
    }
    if (window_->isAttached())
        return;
    // GTK's window is on another connection, and may still be on its way.
    gdk_display_sync(display);
    window_->attach(gdk_x11_surface_get_xid(surface));
    window_->setBackground(backgroundOf(gobj()));
}

void FrameArea::follow()
{
    if (window_) {
        if (const auto where = placement())
            window_->show(*where);
        else
            window_->hide();
    }
    if (frameHandler_ && get_mapped())
        frameHandler_();
}

std::optional<FrameWindow::Placement> FrameArea::placement() const
{
    if (isCovered_ || !view_ || !get_mapped())
        return std::nullopt;
    auto *self = const_cast<GtkWidget *>(gobj());
    GtkNative *native = gtk_widget_get_native(self);
    graphene_rect_t whole{};
    if (!native || !gtk_widget_compute_bounds(self, GTK_WIDGET(native), &whole))
        return std::nullopt;
    const graphene_rect_t seen = seenPart(self, GTK_WIDGET(native));
    if (seen.size.width <= 0 || seen.size.height <= 0)
        return std::nullopt;
    // Shadows and frames that GTK draws itself come before the widgets.
    double shiftX = 0;
    double shiftY = 0;
    gtk_native_get_surface_transform(native, &shiftX, &shiftY);
    const int scale = get_scale_factor();
    const int left = pixels(seen.origin.x + shiftX, scale);
    const int top = pixels(seen.origin.y + shiftY, scale);
    return FrameWindow::Placement{
        {left, top, static_cast<unsigned int>(std::max(pixels(seen.size.width, scale), 1)),
         static_cast<unsigned int>(std::max(pixels(seen.size.height, scale), 1))},
        pixels(whole.origin.x + shiftX, scale) - left,
        pixels(whole.origin.y + shiftY, scale) - top,
        *view_};
}

} // namespace platform::effectview
