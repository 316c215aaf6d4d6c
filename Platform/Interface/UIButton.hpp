#pragma once

#include "Platform/Interface/UIView.hpp"

#include <functional>
#include <memory>
#include <vector>

/// A control that sends its actions when it is pressed, by pointer, keyboard or
/// assistive technology. Main thread.
class UIButton : public UIView
{
public:
    /// What a press does; gets the button.
    using Action = std::function<void(const std::shared_ptr<UIButton> &)>;

    /// A button of a widget of the platform's making, which must be a GTK button.
    static std::shared_ptr<UIButton> create(std::unique_ptr<platform::interface::Widget> widget);

    /// Runs `action` at each press, after those added before, as long as `target`
    /// lives; the button does not keep it alive.
    void addTarget(const std::shared_ptr<UIResponder> &target, Action action);

    /// Runs the actions, as a press does. A hidden button runs them, too.
    void sendActions();

private:
    using UIView::UIView;

    struct Target {
        std::weak_ptr<UIResponder> receiver;
        Action action;
    };
    std::vector<Target> targets_;
};
