#pragma once

#include "Platform/Interface/UIView.hpp"

#include <functional>
#include <memory>
#include <string>
#include <vector>

class UIViewController;

/// A window of the desktop that shows the view of its root view controller, or of
/// what is presented over it, and tells those controllers of their appearance. Its
/// frame is drawn by the screens' own header bars. Main thread.
class UIWindow : public UIView
{
public:
    /// A window with `title` that opens `width` by `height` points in size; not
    /// shown yet.
    static std::shared_ptr<UIWindow> create(const std::string &title, int width, int height);
    ~UIWindow() override;

    /// The controller whose view fills the window; null for none.
    const std::shared_ptr<UIViewController> &rootViewController() const { return root_; }
    /// On a window that is shown the new view takes the place of all at once.
    void setRootViewController(std::shared_ptr<UIViewController> controller);

    /// Shows the window, in front, with the keyboard. The root view is loaded now
    /// if it was not before.
    void makeKeyAndVisible();

    /// What happens when the person closes the window, before it goes.
    void setCloseHandler(std::function<void()> handler);

    // For presentation: ----------------------------------------------------------

    /// Brings the controller's view up over all and calls `done` when it is there.
    void pushPage(const std::shared_ptr<UIViewController> &controller, bool animated,
                  std::function<void()> done);
    /// Takes the uppermost page away and calls `done` when it is gone.
    void popPage(bool animated, std::function<void()> done);

private:
    struct Pages;
    UIWindow(std::unique_ptr<platform::interface::Widget> widget, std::unique_ptr<Pages> pages);

    void showRootView();
    void removePages();
    void disownPages();
    void addPage(const std::shared_ptr<UIViewController> &controller);
    void watchSurface();
    void didLayout();

    std::shared_ptr<UIViewController> root_;
    std::unique_ptr<Pages> pages_;
};
