#pragma once

#include <memory>
#include <vector>

class UIView;

/// The edges of a view that constraints speak of. Leading is where reading begins:
/// the left, or the right in a language that is written from there.
enum class NSLayoutAttribute { leading, trailing, top, bottom };

/// Says that an edge of a view lies where an edge of its superview or of one of its
/// siblings lies. It holds while it is active, for views that have
/// `translatesAutoresizingMaskIntoConstraints` switched off. Main thread.
class NSLayoutConstraint
{
public:
    /// A constraint that is not active yet. It does not keep the views alive.
    NSLayoutConstraint(const std::shared_ptr<UIView> &firstItem, NSLayoutAttribute firstAttribute,
                       const std::shared_ptr<UIView> &secondItem,
                       NSLayoutAttribute secondAttribute);

    /// The views' frames follow at once. Of constraints that contradict each other
    /// the one activated first holds. Views that are neither superview and subview
    /// nor siblings are a fatal error.
    static void activate(const std::vector<std::shared_ptr<NSLayoutConstraint>> &constraints);
    /// They no longer hold; the views' frames follow at once.
    static void deactivate(const std::vector<std::shared_ptr<NSLayoutConstraint>> &constraints);
    /// Whether it holds.
    bool isActive() const;

    ///@{
    /// The view whose edge it is; null when it has gone.
    std::shared_ptr<UIView> firstItem() const { return firstItem_.lock(); }
    std::shared_ptr<UIView> secondItem() const { return secondItem_.lock(); }
    ///@}
    ///@{
    /// Which edge of that view.
    NSLayoutAttribute firstAttribute() const { return firstAttribute_; }
    NSLayoutAttribute secondAttribute() const { return secondAttribute_; }
    ///@}

private:
    std::shared_ptr<UIView> commonView() const;

    std::weak_ptr<UIView> firstItem_;
    std::weak_ptr<UIView> secondItem_;
    NSLayoutAttribute firstAttribute_;
    NSLayoutAttribute secondAttribute_;
};

namespace platform::interface
{

enum class LayoutAxis { horizontal, vertical };

/// An edge of a view, to be tied to another on the same axis.
template <LayoutAxis axis>
class LayoutAnchor
{
public:
    LayoutAnchor(std::shared_ptr<UIView> item, NSLayoutAttribute attribute)
        : item_(std::move(item)), attribute_(attribute)
    {
    }

    /// The constraint that both edges lie at the same place; not active yet.
    std::shared_ptr<NSLayoutConstraint> constraintEqualTo(const LayoutAnchor &other) const
    {
        return std::make_shared<NSLayoutConstraint>(item_, attribute_, other.item_,
                                                    other.attribute_);
    }

private:
    std::shared_ptr<UIView> item_;
    NSLayoutAttribute attribute_;
};

} // namespace platform::interface

using NSLayoutXAxisAnchor =
    platform::interface::LayoutAnchor<platform::interface::LayoutAxis::horizontal>;
using NSLayoutYAxisAnchor =
    platform::interface::LayoutAnchor<platform::interface::LayoutAxis::vertical>;
