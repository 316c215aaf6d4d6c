#include "Platform/Interface/UIView.hpp"

#include "Platform/Foundation/FatalError.hpp"
#include "Platform/Interface/EqualEdges.hpp"
#include "Platform/Interface/UIViewController.hpp"
#include "Platform/Interface/UIWindow.hpp"
#include "Platform/Interface/ViewLayout.hpp"
#include "Platform/Interface/Widget.hpp"

#include <gtkmm/box.h>
#include <gtkmm/root.h>

#include <algorithm>
#include <functional>
#include <utility>

using platform::interface::EqualEdges;
using platform::interface::LayoutEdge;
using platform::interface::LayoutItem;
using platform::interface::ViewLayout;

namespace
{

constexpr const char *keyboardIsOwed = "parvane-keyboard-is-owed";

bool hasKeyboard(Gtk::Widget &widget)
{
    const auto *root = widget.get_root();
    const auto *focus = root ? root->get_focus() : nullptr;
    return focus && (focus == &widget || focus->is_ancestor(widget));
}

/// Gives the keyboard to the first child that is shown and takes it.
bool focusChild(Gtk::Widget &container)
{
    for (auto *child = container.get_first_child(); child; child = child->get_next_sibling()) {
        if (child->get_visible() && child->child_focus(Gtk::DirectionType::TAB_FORWARD))
            return true;
    }
    return false;
}

/// Hiding what has the keyboard leaves nobody with it, and a person without a
/// mouse would have to start again from the first control. So a neighbour takes it;
/// with none there, the container remembers that it owes the keyboard to the next of
/// its children to be shown.
void hide(Gtk::Widget &widget)
{
    auto *container = widget.get_parent();
    const bool hadKeyboard = hasKeyboard(widget);
    widget.set_visible(false);
    if (container && hadKeyboard && !focusChild(*container))
        container->set_data(keyboardIsOwed, container);
}

void show(Gtk::Widget &widget)
{
    widget.set_visible(true);
    auto *container = widget.get_parent();
    if (!container || !container->get_data(keyboardIsOwed))
        return;
    container->set_data(keyboardIsOwed, nullptr);
    widget.grab_focus();
}

/// GTK goes on laying out a child that is not to be drawn, and so it keeps its place.
void setDrawn(Gtk::Widget &widget, bool drawn)
{
    if (!drawn && hasKeyboard(widget))
        widget.get_root()->unset_focus();
    widget.set_child_visible(drawn);
    // GTK draws what is around anew only with its layout.
    if (auto *container = widget.get_parent())
        container->queue_draw();
}

LayoutEdge::Side sideOf(NSLayoutAttribute attribute, bool rightToLeft)
{
    using Side = LayoutEdge::Side;
    switch (attribute) {
    case NSLayoutAttribute::leading:
        return rightToLeft ? Side::right : Side::left;
    case NSLayoutAttribute::trailing:
        return rightToLeft ? Side::left : Side::right;
    case NSLayoutAttribute::top:
        return Side::top;
    case NSLayoutAttribute::bottom:
        break;
    }
    return Side::bottom;
}

/// Calls `action` with the controllers whose views are in the tree of `view` and not
/// in another such view.
void forEachController(const UIView &view,
                       const std::function<std::shared_ptr<UIViewController>(const UIView &)> &of,
                       const std::function<void(UIViewController &)> &action)
{
    if (const auto controller = of(view)) {
        action(*controller);
        return;
    }
    // A copy, since what is told may change the tree.
    const std::vector subviews(view.subviews().begin(), view.subviews().end());
    for (const auto &subview : subviews)
        forEachController(*subview, of, action);
}

} // namespace

UIView::UIView()
    : UIView(Box{std::make_unique<platform::interface::Widget>(*Gtk::make_managed<Gtk::Box>())})
{
}

UIView::UIView(std::unique_ptr<platform::interface::Widget> widget) : widget_(std::move(widget)) {}

UIView::UIView(Box box) : widget_(std::move(box.widget)), layout_(ViewLayout::install(*this)) {}

UIView::~UIView()
{
    if (layout_)
        layout_->forget();
}

void UIView::setFrame(const CGRect &frame)
{
    if (placement_ == Placement::storyboard)
        placement_ = Placement::frame;
    applyFrame(frame);
    if (const auto owner = superview()) {
        owner->solveConstraints();
        owner->queueLayout();
    }
}

NSLayoutXAxisAnchor UIView::leadingAnchor()
{
    return {std::static_pointer_cast<UIView>(shared_from_this()), NSLayoutAttribute::leading};
}

NSLayoutXAxisAnchor UIView::trailingAnchor()
{
    return {std::static_pointer_cast<UIView>(shared_from_this()), NSLayoutAttribute::trailing};
}

NSLayoutYAxisAnchor UIView::topAnchor()
{
    return {std::static_pointer_cast<UIView>(shared_from_this()), NSLayoutAttribute::top};
}

NSLayoutYAxisAnchor UIView::bottomAnchor()
{
    return {std::static_pointer_cast<UIView>(shared_from_this()), NSLayoutAttribute::bottom};
}

bool UIView::isHidden() const
{
    return !widget_->get().get_visible() || (keepsPlace_ && !widget_->get().get_child_visible());
}

void UIView::setHidden(bool hidden)
{
    if (hidden == isHidden())
        return;
    if (keepsPlace_)
        setDrawn(widget_->get(), !hidden);
    else if (hidden)
        hide(widget_->get());
    else
        show(widget_->get());
}

std::shared_ptr<UIWindow> UIView::window()
{
    auto top = std::static_pointer_cast<UIView>(shared_from_this());
    while (const auto above = top->superview())
        top = above;
    return std::dynamic_pointer_cast<UIWindow>(top);
}

void UIView::addSubview(const std::shared_ptr<UIView> &view)
{
    if (!layout_)
        fatalError("A view that is filled by its own widget takes no subviews.");
    if (isDescendant(*view))
        fatalError("A view cannot be put inside itself.");
    view->removeFromSuperview();
    // Inside, frames alone keep a place; what is hidden may as well be gone.
    if (std::exchange(view->keepsPlace_, false)) {
        view->widget_->get().set_visible(view->widget_->get().get_child_visible());
        view->widget_->get().set_child_visible(true);
    }
    view->widget_->get().insert_at_end(widget_->get());
    adopt(view, Placement::frame);
    queueLayout();
    forEachController(
        *view, [](const UIView &each) { return each.controller_.lock(); },
        [](UIViewController &controller) { controller.viewDidEnter(); });
}

void UIView::removeFromSuperview()
{
    const auto owner = superview();
    if (!owner)
        return;
    const auto self = std::static_pointer_cast<UIView>(shared_from_this());
    const auto controllerOf = [](const UIView &each) { return each.controller_.lock(); };
    forEachController(*this, controllerOf,
                      [](UIViewController &controller) { controller.viewWillLeave(); });
    owner->disown(*this);
    widget_->get().unparent();
    forEachController(*this, controllerOf,
                      [](UIViewController &controller) { controller.viewDidLeave(); });
}

bool UIView::isDescendant(const UIView &ancestor) const
{
    for (auto view = std::static_pointer_cast<const UIView>(shared_from_this()); view;
         view = view->superview()) {
        if (view.get() == &ancestor)
            return true;
    }
    return false;
}

void UIView::setNeedsDisplay()
{
    widget_->get().queue_draw();
}

bool UIView::takeKeyboard()
{
    auto &widget = widget_->get();
    return hasKeyboard(widget) || widget.child_focus(Gtk::DirectionType::TAB_FORWARD);
}

void UIView::setContent(std::unique_ptr<platform::interface::Widget> content)
{
    if (content_)
        content_->get().unparent();
    content_ = std::move(content);
    if (content_)
        content_->get().insert_at_start(widget_->get());
}

void UIView::adopt(const std::shared_ptr<UIView> &view, Placement placement)
{
    view->superview_ = std::static_pointer_cast<UIView>(shared_from_this());
    view->placement_ = placement;
    subviews_.push_back(view);
}

void UIView::disown(const UIView &view)
{
    std::erase_if(constraints_, [&](const auto &constraint) {
        return constraint->firstItem().get() == &view || constraint->secondItem().get() == &view;
    });
    const auto held = std::find_if(subviews_.begin(), subviews_.end(),
                                   [&](const auto &each) { return each.get() == &view; });
    (*held)->superview_.reset();
    (*held)->placement_ = Placement::frame;
    subviews_.erase(held);
}

void UIView::applyFrame(const CGRect &frame)
{
    const bool resized = frame.size != frame_.size;
    frame_ = frame;
    if (resized)
        solveConstraints();
}

void UIView::solveConstraints()
{
    if (constraints_.empty())
        return;
    // The view itself is the first item.
    std::vector<LayoutItem> items{{bounds(), true}};
    std::vector<const UIView *> views{this};
    for (const auto &subview : subviews_) {
        items.push_back({subview->frame_, subview->translatesAutoresizingMaskIntoConstraints});
        views.push_back(subview.get());
    }
    const bool rightToLeft = widget_->get().get_direction() == Gtk::TextDirection::RTL;
    const auto edge = [&](const std::shared_ptr<UIView> &view, NSLayoutAttribute attribute) {
        const auto found = std::find(views.begin(), views.end(), view.get());
        return LayoutEdge{static_cast<std::size_t>(found - views.begin()),
                          sideOf(attribute, rightToLeft)};
    };
    std::vector<EqualEdges> equalities;
    equalities.reserve(constraints_.size());
    for (const auto &constraint : constraints_)
        equalities.push_back({edge(constraint->firstItem(), constraint->firstAttribute()),
                              edge(constraint->secondItem(), constraint->secondAttribute())});
    platform::interface::solve(items, equalities);

    for (std::size_t index = 0; index < subviews_.size(); ++index) {
        UIView &subview = *subviews_[index];
        if (subview.translatesAutoresizingMaskIntoConstraints)
            continue;
        subview.placement_ = Placement::frame;
        subview.applyFrame(items[index + 1].frame);
    }
}

void UIView::queueLayout()
{
    // Inside what GTK lays out, the next view above that is ours moves the others.
    auto owner = std::static_pointer_cast<UIView>(shared_from_this());
    while (owner && !owner->layout_)
        owner = owner->superview();
    if (owner)
        owner->widget_->get().queue_allocate();
}
