#pragma once

#include "Platform/Interface/UIView.hpp"

#include <functional>
#include <memory>
#include <string>

class UIViewController;

/// A window of the desktop that shows the view of its root view controller and
/// tells that controller of its appearance. Main thread.
class UIWindow : public UIView
{
public:
    /// A window with `title` that opens `width` by `height` points in size; not
    /// shown yet.
    static std::shared_ptr<UIWindow> create(const std::string &title, int width, int height);
    ~UIWindow() override;

    const std::shared_ptr<UIViewController> &rootViewController() const { return root_; }
    /// On a window that is shown the new view takes the old one's place at once.
    void setRootViewController(std::shared_ptr<UIViewController> controller);

    /// Shows the window, in front, with the keyboard. The root view is loaded now
    /// if it was not before.
    void makeKeyAndVisible();

    /// What happens when the person closes the window, before it goes.
    void setCloseHandler(std::function<void()> handler);

private:
    using UIView::UIView;

    void showRootView();
    void watchSurface();
    void didLayout();

    std::shared_ptr<UIViewController> root_;
    bool rootHasAppeared_ = false;
};
