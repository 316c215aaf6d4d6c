#include "Platform/Interface/UIView.hpp"

#include "Platform/Interface/Widget.hpp"

#include <gtkmm/box.h>
#include <gtkmm/root.h>

#include <utility>

namespace
{

constexpr const char *keyboardIsOwed = "parvane-keyboard-is-owed";

bool hasKeyboard(Gtk::Widget &widget)
{
    const auto *root = widget.get_root();
    const auto *focus = root ? root->get_focus() : nullptr;
    return focus && (focus == &widget || focus->is_ancestor(widget));
}

/// Hiding what has the keyboard leaves nobody with it, and a person without a
/// mouse would have to start again from the first control. So the container
/// remembers that it owes the keyboard to the next of its children to be shown.
void hide(Gtk::Widget &widget)
{
    auto *container = widget.get_parent();
    if (container && hasKeyboard(widget))
        container->set_data(keyboardIsOwed, container);
    widget.set_visible(false);
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

} // namespace

UIView::UIView()
    : UIView(std::make_unique<platform::interface::Widget>(*Gtk::make_managed<Gtk::Box>()))
{
}

UIView::UIView(std::unique_ptr<platform::interface::Widget> widget) : widget_(std::move(widget)) {}

UIView::~UIView() = default;

bool UIView::isHidden() const
{
    return !widget_->get().get_visible();
}

void UIView::setHidden(bool hidden)
{
    if (hidden == isHidden())
        return;
    if (hidden)
        hide(widget_->get());
    else
        show(widget_->get());
}

void UIView::adopt(const std::shared_ptr<UIView> &view)
{
    view->superview_ = std::static_pointer_cast<UIView>(shared_from_this());
    subviews_.push_back(view);
}
