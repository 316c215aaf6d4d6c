// How a view controller comes up over another one and goes away again.

#include "Platform/Foundation/Print.hpp"
#include "Platform/Interface/UIView.hpp"
#include "Platform/Interface/UIViewController.hpp"
#include "Platform/Interface/UIWindow.hpp"

#include <utility>

std::shared_ptr<UIViewController> UIViewController::screen()
{
    auto controller = std::static_pointer_cast<UIViewController>(shared_from_this());
    while (const auto above = controller->parent())
        controller = above;
    return controller;
}

std::shared_ptr<UIViewController> UIViewController::presentedViewController()
{
    return screen()->presented_;
}

std::shared_ptr<UIViewController> UIViewController::presentingViewController() const
{
    const auto owner = parent();
    return owner ? owner->presentingViewController() : presenting_.lock();
}

void UIViewController::present(const std::shared_ptr<UIViewController> &controller, bool animated,
                               std::function<void()> completion)
{
    const auto presenting = screen();
    const auto window = presenting->view_ ? presenting->view_->window() : nullptr;
    if (!window || presenting->presented_ || controller->presenting_.lock()) {
        printError(window ? "A screen that presents another one cannot present a second."
                          : "A screen that is in no window cannot present another one.");
        return;
    }
    presenting->presented_ = controller;
    controller->presenting_ = presenting;
    controller->comeUp(*window, *presenting, animated, std::move(completion));
}

void UIViewController::dismiss(bool animated, std::function<void()> completion)
{
    const auto self = screen();
    if (self->presented_)
        self->dismissPresented(animated, std::move(completion));
    else if (const auto presenting = self->presenting_.lock())
        presenting->dismissPresented(animated, std::move(completion));
}

void UIViewController::dismissPresented(bool animated, std::function<void()> completion)
{
    const auto self = std::static_pointer_cast<UIViewController>(shared_from_this());
    const auto leaving = presented_;
    // What lies over it goes first.
    if (leaving->presented_)
        leaving->dismissPresented(false, nullptr);
    const auto window = view_->window();
    if (!window || std::exchange(leaving->isBeingDismissed_, true))
        return;
    leaving->goAway(*window, *this, animated, [self, leaving, completion = std::move(completion)] {
        leaving->isBeingDismissed_ = false;
        leaving->presenting_.reset();
        self->presented_.reset();
        if (completion)
            completion();
    });
}

void UIViewController::comeUp(UIWindow &window, UIViewController &presenting, bool animated,
                              std::function<void()> done)
{
    const auto above = std::static_pointer_cast<UIViewController>(shared_from_this());
    const auto below = std::static_pointer_cast<UIViewController>(presenting.shared_from_this());
    loadViewIfNeeded();
    below->beginAppearanceTransition(false, animated);
    above->beginAppearanceTransition(true, animated);
    window.pushPage(above, animated, [above, below, done = std::move(done)] {
        above->endAppearanceTransition();
        below->endAppearanceTransition();
        if (done)
            done();
    });
}

void UIViewController::goAway(UIWindow &window, UIViewController &presenting, bool animated,
                              std::function<void()> done)
{
    const auto above = std::static_pointer_cast<UIViewController>(shared_from_this());
    const auto below = std::static_pointer_cast<UIViewController>(presenting.shared_from_this());
    above->beginAppearanceTransition(false, animated);
    below->beginAppearanceTransition(true, animated);
    window.popPage(animated, [above, below, done = std::move(done)] {
        below->endAppearanceTransition();
        above->endAppearanceTransition();
        done();
    });
}
