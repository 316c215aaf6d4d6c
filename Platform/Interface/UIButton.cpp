#include "Platform/Interface/UIButton.hpp"

#include "Platform/Foundation/FatalError.hpp"
#include "Platform/Interface/Widget.hpp"

#include <gtkmm/button.h>

#include <utility>

std::shared_ptr<UIButton> UIButton::create(std::unique_ptr<platform::interface::Widget> widget)
{
    auto *button = dynamic_cast<Gtk::Button *>(&widget->get());
    if (!button)
        fatalError("A UIButton needs a widget that is a GTK button.");

    // The constructor is private, which std::make_shared cannot see.
    std::shared_ptr<UIButton> view(new UIButton(std::move(widget)));
    button->signal_clicked().connect([weakView = std::weak_ptr(view)] {
        if (const auto pressed = weakView.lock())
            pressed->sendActions();
    });
    return view;
}

void UIButton::addTarget(const std::shared_ptr<UIResponder> &target, Action action)
{
    targets_.push_back({target, std::move(action)});
}

void UIButton::sendActions()
{
    const auto self = std::static_pointer_cast<UIButton>(shared_from_this());
    // A copy, since an action may add others.
    const auto targets = targets_;
    for (const auto &target : targets) {
        if (const auto receiver = target.receiver.lock())
            target.action(self);
    }
}
