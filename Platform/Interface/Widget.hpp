#pragma once

#include <gtkmm/widget.h>

#include <memory>

namespace platform::interface
{

/// A reference to a GTK widget: what a view is made of. Only the platform's own
/// files include this.
class Widget
{
public:
    /// Takes a reference of its own; a widget that nobody owns yet is adopted.
    explicit Widget(Gtk::Widget &widget) : widget_(&widget) { g_object_ref_sink(widget.gobj()); }
    ~Widget() { g_object_unref(widget_->gobj()); }
    Widget(const Widget &) = delete;
    Widget &operator=(const Widget &) = delete;

    Gtk::Widget &get() const { return *widget_; }

private:
    Gtk::Widget *widget_;
};

} // namespace platform::interface
