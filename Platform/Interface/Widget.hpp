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
    explicit Widget(Gtk::Widget &widget)
        : object_(g_object_ref_sink(widget.gobj()), &g_object_unref), widget_(widget)
    {
    }
    virtual ~Widget() = default;
    Widget(const Widget &) = delete;
    Widget &operator=(const Widget &) = delete;

    Gtk::Widget &get() const { return widget_; }

private:
    std::unique_ptr<void, decltype(&g_object_unref)> object_;
    Gtk::Widget &widget_;
};

} // namespace platform::interface
