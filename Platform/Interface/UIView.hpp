#pragma once

#include "Platform/Interface/UIResponder.hpp"

#include <memory>
#include <vector>

namespace platform::interface
{
class Scene;
class Widget;
} // namespace platform::interface

/// A rectangle of the screen with what it shows. A view owns its subviews. Main
/// thread.
class UIView : public UIResponder
{
public:
    /// An empty view.
    UIView();
    /// A view of a widget of the platform's making.
    explicit UIView(std::unique_ptr<platform::interface::Widget> widget);
    ~UIView() override;

    /// A hidden view is not shown and takes no room. When the view that has the
    /// keyboard is hidden, the next of its neighbours to be shown takes it over.
    bool isHidden() const;
    void setHidden(bool hidden);

    /// The view that holds this one; none at the top.
    std::shared_ptr<UIView> superview() const { return superview_.lock(); }
    /// The views that this one holds, in the order of the storyboard.
    const std::vector<std::shared_ptr<UIView>> &subviews() const { return subviews_; }

    /// What the view is made of; for the platform's own use.
    platform::interface::Widget &widget() const { return *widget_; }

private:
    friend class platform::interface::Scene;
    /// Records `view`, whose widget is inside this view's already.
    void adopt(const std::shared_ptr<UIView> &view);

    std::unique_ptr<platform::interface::Widget> widget_;
    std::weak_ptr<UIView> superview_;
    std::vector<std::shared_ptr<UIView>> subviews_;
};
