#include "Platform/Interface/UIWindow.hpp"

#include "Platform/Interface/PageStack.hpp"
#include "Platform/Interface/UIViewController.hpp"
#include "Platform/Interface/Widget.hpp"

#include <gdkmm/surface.h>
#include <gtkmm/box.h>
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

/// The pages as GTK has them, and whose they are, the uppermost last.
struct UIWindow::Pages {
    platform::interface::PageStack stack;
    std::vector<std::weak_ptr<UIViewController>> controllers;
};

UIWindow::UIWindow(std::unique_ptr<platform::interface::Widget> widget,
                   std::unique_ptr<Pages> pages)
    : UIView(std::move(widget)), pages_(std::move(pages))
{
}

std::shared_ptr<UIWindow> UIWindow::create(const std::string &title, int width, int height)
{
    auto gtkWindow = std::make_unique<Gtk::Window>();
    auto *window = gtkWindow.get();
    window->set_title(title);
    window->set_default_size(width, height);
    // The screens bring header bars, which slide with them: the window's own gives way.
    auto *noTitleBar = Gtk::make_managed<Gtk::Box>();
    noTitleBar->set_visible(false);
    window->set_titlebar(*noTitleBar);
    auto pages = std::make_unique<Pages>();
    window->set_child(pages->stack.widget());
    // The constructor is private, which std::make_shared cannot see.
    std::shared_ptr<UIWindow> view(
        new UIWindow(std::make_unique<WindowWidget>(std::move(gtkWindow)), std::move(pages)));
    window->signal_realize().connect([weakView = std::weak_ptr(view)] {
        if (const auto realized = weakView.lock())
            realized->watchSurface();
    });
    return view;
}

UIWindow::~UIWindow()
{
    // The pages' views may outlive the window, or be shown in another.
    windowOf(*this).unset_child();
    pages_->stack.reset(nullptr);
}

void UIWindow::setRootViewController(std::shared_ptr<UIViewController> controller)
{
    if (controller == root_)
        return;
    const auto former = std::exchange(root_, std::move(controller));
    if (former && former->presentedViewController())
        former->dismiss(false);
    if (former)
        former->beginAppearanceTransition(false, false);
    // A window that is hidden lets go of what it showed all the same.
    if (windowOf(*this).get_visible())
        showRootView();
    else
        removePages();
    if (former)
        former->endAppearanceTransition();
}

void UIWindow::makeKeyAndVisible()
{
    if (pages_->controllers.empty())
        showRootView();
    windowOf(*this).present();
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
    const auto view = root_ ? root_->view() : nullptr;
    if (!view) {
        removePages();
        return;
    }
    disownPages();
    root_->beginAppearanceTransition(true, false);
    root_->endAppearanceWithLayout();
    addPage(root_);
    pages_->stack.reset(&view->widget().get());
    // A control has the keyboard, so that nobody has to look for one.
    root_->takeKeyboard();
}

void UIWindow::removePages()
{
    disownPages();
    pages_->stack.reset(nullptr);
}

void UIWindow::disownPages()
{
    while (!subviews().empty())
        disown(*subviews().back());
    pages_->controllers.clear();
}

void UIWindow::pushPage(const std::shared_ptr<UIViewController> &controller, bool animated,
                        std::function<void()> done)
{
    addPage(controller);
    pages_->stack.push(controller->view()->widget().get(), animated, std::move(done));
    controller->takeKeyboard();
}

void UIWindow::popPage(bool animated, std::function<void()> done)
{
    pages_->controllers.pop_back();
    disown(*subviews().back());
    pages_->stack.pop(animated, std::move(done));
}

void UIWindow::addPage(const std::shared_ptr<UIViewController> &controller)
{
    adopt(controller->view(), Placement::window);
    pages_->controllers.push_back(controller);
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
    const auto controller =
        pages_->controllers.empty() ? nullptr : pages_->controllers.back().lock();
    if (controller)
        controller->windowDidLayout();
    pages_->stack.didLayout();
}
