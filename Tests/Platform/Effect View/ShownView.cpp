#include "Tests/Platform/Effect View/ShownView.hpp"

#include "Platform/Foundation/RunLoop.hpp"
#include "Platform/Interface/UIView.hpp"
#include "Platform/Interface/Widget.hpp"
#include "Tests/Utilities/MainThread.hpp"

#include <gdk/x11/gdkx.h>
#include <gtkmm/window.h>

#include <algorithm>

namespace test
{

void serveMainThreadFor(double seconds)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
    serveMainThreadUntil([&] { return std::chrono::steady_clock::now() >= end; });
}

ShownView::ShownView(RemoteAudioUnit &unit, int width, int height)
    : window(UIWindow::create("View", width, height)), view_(unit.process().view())
{
    bool answered = false;
    unit.requestViewController([&](std::shared_ptr<AUViewController> answer) {
        controller = std::move(answer);
        answered = true;
    });
    serveMainThreadUntil([&] { return answered; });
    window->setRootViewController(controller);
    window->makeKeyAndVisible();
}

ShownView::~ShownView()
{
    close();
    static_cast<Gtk::Window &>(window->widget().get()).destroy();
    window.reset();
    drainMainQueue();
}

void ShownView::close()
{
    window->setRootViewController(nullptr);
    controller.reset();
}

bool ShownView::waitUntil(const std::function<bool()> &condition) const
{
    return serveMainThreadUntil(condition);
}

bool ShownView::waitUntilOpen() const
{
    waitUntil([this] {
        const Phase now = phase();
        return now == Phase::open || now == Phase::refused || now == Phase::effectIsDown ||
               now == Phase::effectStarts;
    });
    return phase() == Phase::open;
}

void ShownView::resize(int width, int height) const
{
    static_cast<Gtk::Window &>(window->widget().get()).set_default_size(width, height);
}

void ShownView::setHidden(bool hidden) const
{
    controller->view()->setHidden(hidden);
}

XWindows::Window ShownView::toplevel() const
{
    GdkSurface *surface = gtk_native_get_surface(GTK_NATIVE(window->widget().get().gobj()));
    return surface ? gdk_x11_surface_get_xid(surface) : 0;
}

XWindows::Window ShownView::outer() const
{
    // GTK has windows of its own in there, for the keyboard: they take no output.
    const auto inside = x.children(toplevel());
    const auto found = std::find_if(inside.rbegin(), inside.rend(),
                                    [this](auto child) { return !x.children(child).empty(); });
    return found != inside.rend() ? *found : 0;
}

XWindows::Window ShownView::inner() const
{
    const auto inside = x.children(outer());
    return inside.empty() ? 0 : inside.back();
}

XWindows::Window ShownView::own() const
{
    const auto inside = x.children(inner());
    return inside.empty() ? 0 : inside.back();
}

} // namespace test
