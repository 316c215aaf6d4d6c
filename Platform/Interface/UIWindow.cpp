#include "Platform/Interface/UIWindow.hpp"

#include "Platform/Interface/UIViewController.hpp"
#include "Platform/Interface/Widget.hpp"

#include <gdkmm/surface.h>
#include <gtkmm/window.h>

#include <utility>

namespace
{

/// A window belongs to whoever made it, not to a widget around it.
class WindowWidget : public platform::interface::Widget
{
public:
    explicit WindowWidget(std::unique_ptr<Gtk::Window> window)
        : Widget(*window), window_(std::move(window))
    {
    }

private:
    std::unique_ptr<Gtk::Window> window_;
};

Gtk::Window &windowOf(const UIView &view)
{
    return static_cast<Gtk::Window &>(view.widget().get());
}

} // namespace

std::shared_ptr<UIWindow> UIWindow::create(const std::string &title, int width, int height)
{
    auto gtkWindow = std::make_unique<Gtk::Window>();
    auto *window = gtkWindow.get();
    window->set_title(title);
    window->set_default_size(width, height);
    // The constructor is private, which std::make_shared cannot see.
    std::shared_ptr<UIWindow> view(
        new UIWindow(std::make_unique<WindowWidget>(std::move(gtkWindow))));
    window->signal_realize().connect([weakView = std::weak_ptr(view)] {
        if (const auto realized = weakView.lock())
            realized->watchSurface();
    });
    return view;
}

UIWindow::~UIWindow()
{
    // The root's view may outlive the window, or be shown in another.
    windowOf(*this).unset_child();
}

void UIWindow::setRootViewController(std::shared_ptr<UIViewController> controller)
{
    auto &window = windowOf(*this);
    const auto former = std::exchange(root_, std::move(controller));
    if (!window.get_visible())
        return;

    const bool formerHadAppeared = std::exchange(rootHasAppeared_, false);
    if (former && formerHadAppeared)
        former->viewWillDisappear(false);
    showRootView();
    if (former && formerHadAppeared)
        former->viewDidDisappear(false);
}

void UIWindow::makeKeyAndVisible()
{
    auto &window = windowOf(*this);
    if (!window.get_visible())
        showRootView();
    window.present();
}

void UIWindow::setCloseHandler(std::function<void()> handler)
{
    windowOf(*this).signal_close_request().connect(
        [handler = std::move(handler)] {
            handler();
            return false;
        },
        false);
}

void UIWindow::showRootView()
{
    auto &window = windowOf(*this);
    window.unset_child();
    const auto view = root_ ? root_->view() : nullptr;
    if (!view)
        return;
    root_->viewWillAppear(false);
    window.set_child(view->widget().get());
    // The first control has the keyboard, so that nobody has to look for it.
    window.child_focus(Gtk::DirectionType::TAB_FORWARD);
}

void UIWindow::watchSurface()
{
    // Connected after the window's own handler, which does the layout. The
    // surface goes with the window, and the connection with the surface.
    const std::weak_ptr self = std::static_pointer_cast<UIWindow>(shared_from_this());
    windowOf(*this).get_surface()->signal_layout().connect([self](int /*width*/, int /*height*/) {
        if (const auto window = self.lock())
            window->didLayout();
    });
}

void UIWindow::didLayout()
{
    if (!root_ || !root_->isViewLoaded())
        return;
    root_->viewDidLayoutSubviews();
    if (!std::exchange(rootHasAppeared_, true))
        root_->viewDidAppear(false);
}
