#pragma once

#include "Platform/Foundation/RunLoop.hpp"
#include "Platform/Interface/UIView.hpp"
#include "Platform/Interface/UIViewController.hpp"
#include "Platform/Interface/UIWindow.hpp"
#include "Platform/Interface/Widget.hpp"

#include <gtkmm/window.h>

#include <gtest/gtest.h>

#include <functional>
#include <memory>

namespace test
{

/// Serves the main thread until `condition` holds, for a minute at most.
inline bool shows(const std::function<bool()> &condition)
{
    return RunLoop::main().runUntil(condition, 60);
}

/// A controller whose view is an empty plain one, and that knows when it has been
/// laid out.
class PlainScreen : public UIViewController
{
public:
    PlainScreen() : UIViewController(std::nullopt, nullptr) {}
    void viewDidLayoutSubviews() override { ++layouts; }
    int layouts = 0;
};

/// A window with 400 by 300 points of room on the display of the test that shows `controller`.
class ShownScreen
{
public:
    explicit ShownScreen(const std::shared_ptr<UIViewController> &controller)
        : window(UIWindow::create("Window", 400, 300))
    {
        window->setRootViewController(controller);
        window->makeKeyAndVisible();
        EXPECT_TRUE(shows([&] { return sizeOf(*controller).width > 0; }));
        // GTK draws a frame of its own around where there is no compositor.
        frame_ = {400 - sizeOf(*controller).width, 300 - sizeOf(*controller).height};
        resize(*controller, {400, 300});
    }

    /// Gives the screen another size and waits until it has it.
    void resize(UIViewController &controller, const CGSize &size) const
    {
        gtkWindow().set_default_size(static_cast<int>(size.width + frame_.width),
                                     static_cast<int>(size.height + frame_.height));
        EXPECT_TRUE(shows([&] { return sizeOf(controller) == size; }));
    }

    Gtk::Window &gtkWindow() const { return dynamic_cast<Gtk::Window &>(window->widget().get()); }

    /// Where the view's widget is drawn within that of `owner`, or nothing at all.
    static CGRect drawnFrame(const UIView &view, const UIView &owner)
    {
        graphene_rect_t rect{};
        GtkWidget *widget = view.widget().get().gobj();
        if (!gtk_widget_get_mapped(widget) ||
            !gtk_widget_compute_bounds(widget, owner.widget().get().gobj(), &rect))
            return {};
        return {rect.origin.x, rect.origin.y, rect.size.width, rect.size.height};
    }

    std::shared_ptr<UIWindow> window;

private:
    static CGSize sizeOf(UIViewController &controller) { return controller.view()->bounds().size; }

    CGSize frame_;
};

} // namespace test
