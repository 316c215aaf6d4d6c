#pragma once

#include "Platform/Interface/CGGeometry.hpp"
#include "Platform/Interface/NSLayoutConstraint.hpp"
#include "Platform/Interface/UIResponder.hpp"

#include <memory>
#include <vector>

class UIViewController;
class UIWindow;

namespace platform::interface
{
class Scene;
class ViewLayout;
class Widget;
} // namespace platform::interface

/// A rectangle of the screen with what it shows. A view owns its subviews. Main
/// thread.
///
/// A view made by code, and an empty box of a storyboard, is a plain one: it takes
/// subviews, which it draws in front of its own content and does not clip. What a
/// storyboard places follows the storyboard until its frame is set.
class UIView : public UIResponder
{
public:
    /// An empty plain view.
    UIView();
    /// A view of a widget of the platform's making, whose inside is the widget's own.
    explicit UIView(std::unique_ptr<platform::interface::Widget> widget);
    ~UIView() override;

    /// Place and size within the superview, in points; kept as set, fractions
    /// included, valid at once and while hidden. A storyboard's views have none
    /// before their first layout.
    const CGRect &frame() const { return frame_; }
    /// Moves the view and gives it a size; its subviews' constraints follow at once.
    void setFrame(const CGRect &frame);
    /// The view's own rectangle: its size, at 0, 0.
    CGRect bounds() const { return {0, 0, frame_.size.width, frame_.size.height}; }

    /// While it is true the frame stands; false, the active constraints decide.
    bool translatesAutoresizingMaskIntoConstraints = true;
    ///@{
    /// The edge, to be tied to one of another view.
    NSLayoutXAxisAnchor leadingAnchor();
    NSLayoutXAxisAnchor trailingAnchor();
    NSLayoutYAxisAnchor topAnchor();
    NSLayoutYAxisAnchor bottomAnchor();
    ///@}
    /// The active constraints between this view's subviews or between them and this
    /// view, in the order of their activation.
    const std::vector<std::shared_ptr<NSLayoutConstraint>> &constraints() const
    {
        return constraints_;
    }

    /// A hidden view is not shown. A storyboard's plain view keeps its place; what
    /// else a storyboard places takes no room while hidden. When the view that has
    /// the keyboard is hidden, a neighbour takes it over, if need be the next of them to
    /// be shown.
    bool isHidden() const;
    /// Hides the view and all in it, or shows it again.
    void setHidden(bool hidden);

    /// The view that holds this one; none at the top.
    std::shared_ptr<UIView> superview() const { return superview_.lock(); }
    /// The views that this one holds, the last one in front.
    const std::vector<std::shared_ptr<UIView>> &subviews() const { return subviews_; }
    /// The window at the top; none for a view that is not in one.
    std::shared_ptr<UIWindow> window();

    /// Puts `view` in front of the other subviews, out of where it was before. Only a
    /// plain view takes subviews; others, and a view that holds this one, are a fatal
    /// error. The view's controller is told of its appearance when its parent shows.
    void addSubview(const std::shared_ptr<UIView> &view);
    /// Takes the view, and the constraints that tie it, out of its superview.
    void removeFromSuperview();
    /// Whether this view is `ancestor` or inside it.
    bool isDescendant(const UIView &ancestor) const;

    /// Has the view drawn anew.
    void setNeedsDisplay();

    // For the platform's own use: ------------------------------------------------

    /// What the view is made of.
    platform::interface::Widget &widget() const { return *widget_; }
    /// Fills a plain view, behind its subviews.
    void setContent(std::unique_ptr<platform::interface::Widget> content);
    /// Gives the keyboard to the view or to the first inside that takes it; false when
    /// there is none.
    bool takeKeyboard();

protected:
    /// A plain view in an empty box of a storyboard.
    struct Box {
        /// The box itself.
        std::unique_ptr<platform::interface::Widget> widget;
    };
    /// The view that the box becomes.
    explicit UIView(Box box);

private:
    friend class NSLayoutConstraint;
    friend class UIViewController;
    friend class UIWindow;
    friend class platform::interface::Scene;
    friend class platform::interface::ViewLayout;

    /// Who decides where the view is: its frame or constraints, the storyboard's
    /// layout, or the window, which it fills.
    enum class Placement { frame, storyboard, window };

    /// Records `view`, whose widget is inside this view's already.
    void adopt(const std::shared_ptr<UIView> &view, Placement placement);
    void disown(const UIView &view);
    /// Takes a frame, and the subviews along.
    void applyFrame(const CGRect &frame);
    void solveConstraints();
    /// Has the inside laid out again.
    void queueLayout();

    std::unique_ptr<platform::interface::Widget> widget_;
    std::unique_ptr<platform::interface::Widget> content_;
    /// Lays out what is inside; none where the widget does.
    std::shared_ptr<platform::interface::ViewLayout> layout_;
    std::weak_ptr<UIView> superview_;
    std::vector<std::shared_ptr<UIView>> subviews_;
    std::vector<std::shared_ptr<NSLayoutConstraint>> constraints_;
    /// The controller whose view this is.
    std::weak_ptr<UIViewController> controller_;
    CGRect frame_;
    Placement placement_ = Placement::frame;
    /// Whether GTK lays the view out while it is hidden.
    bool keepsPlace_ = false;
};
