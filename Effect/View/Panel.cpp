#include "Effect/View/Panel.hpp"

#include "Effect/View/Layout.hpp"

#include <algorithm>
#include <cmath>

namespace effect::view
{

Panel::Panel(PanelListener &listener) : listener_(listener)
{
    std::transform(controlRanges.begin(), controlRanges.end(), values_.begin(),
                   [](const ControlRange &range) { return range.standard; });
    changes_.set();
}

void Panel::setValue(std::size_t control, float value)
{
    const ControlRange &range = controlRanges.at(control);
    if (std::isnan(value) || isHeld(control)) {
        return;
    }
    const float inside = std::clamp(value, range.least, range.most);
    if (inside != values_.at(control)) {
        values_.at(control) = inside;
        changes_.set(control);
    }
}

void Panel::press(Point at, std::uint32_t milliseconds)
{
    const auto control = layout::controlAt(at);
    if (!control) {
        return;
    }
    focus(*control, false);
    if (*control == enabledControl) {
        toggle();
        return;
    }
    const auto mark = *control == speedControl ? layout::speedMarkAt(at) : std::nullopt;
    if (mark) {
        set(*control, mark->value);
    } else if (clicks_.isSecond(*control, at, milliseconds)) {
        set(*control, controlRanges.at(*control).standard);
    } else {
        drag_.emplace(*control, positionOf(*control, value(*control)), at.y);
        changes_.set(*control);
        listener_.touched(*control, true);
    }
}

void Panel::move(Point at, bool fine)
{
    if (drag_) {
        change(drag_->control(), valueAt(drag_->control(), drag_->moveTo(at.y, fine)));
    } else {
        hover(layout::controlAt(at));
    }
}

void Panel::release()
{
    if (!drag_) {
        return;
    }
    const std::size_t control = drag_->control();
    drag_.reset();
    changes_.set(control);
    listener_.touched(control, false);
}

void Panel::leave()
{
    hover(std::nullopt);
}

void Panel::scroll(Point at, int notches, bool fine)
{
    const auto control = layout::controlAt(at);
    if (control && !drag_) {
        focus(*control, false);
        step(*control, notches * parameters.at(*control).wheel, fine);
    }
}

void Panel::press(Key key, bool fine)
{
    if (drag_) {
        return;
    }
    const ControlRange &range = controlRanges.at(focused_);
    const int page = parameters.at(focused_).page;
    switch (key) {
    case Key::next:
        focus((focused_ + 1) % controlCount, true);
        return;
    case Key::previous:
        focus((focused_ + controlCount - 1) % controlCount, true);
        return;
    case Key::up:
        step(focused_, 1, fine);
        break;
    case Key::down:
        step(focused_, -1, fine);
        break;
    case Key::pageUp:
        step(focused_, page, fine);
        break;
    case Key::pageDown:
        step(focused_, -page, fine);
        break;
    case Key::home:
        set(focused_, range.least);
        break;
    case Key::end:
        set(focused_, range.most);
        break;
    case Key::toggle:
        if (focused_ == enabledControl) {
            toggle();
        }
        break;
    case Key::reset:
        set(focused_, range.standard);
        break;
    }
    focus(focused_, true);
}

void Panel::setKeyboard(bool owned)
{
    hasKeyboard_ = owned;
    changes_.set(focused_);
}

bool Panel::showsFocus(std::size_t control) const
{
    return hasKeyboard_ && focusSeen_ && focused_ == control;
}

std::bitset<controlCount> Panel::takeChanges()
{
    const auto taken = changes_;
    changes_.reset();
    return taken;
}

void Panel::hover(std::optional<std::size_t> control)
{
    if (control == hovered_) {
        return;
    }
    for (const auto &touched : {hovered_, control}) {
        if (touched) {
            changes_.set(*touched);
        }
    }
    hovered_ = control;
}

void Panel::focus(std::size_t control, bool seen)
{
    if (control != focused_ || seen != focusSeen_) {
        changes_.set(focused_);
        changes_.set(control);
        focused_ = control;
        focusSeen_ = seen;
    }
}

void Panel::change(std::size_t control, float value)
{
    if (value != values_.at(control)) {
        values_.at(control) = value;
        changes_.set(control);
        listener_.changed(control, value);
    }
}

void Panel::set(std::size_t control, float value)
{
    if (value != values_.at(control)) {
        listener_.touched(control, true);
        change(control, value);
        listener_.touched(control, false);
    }
}

void Panel::step(std::size_t control, int steps, bool fine)
{
    // A switch has no finer steps.
    set(control, stepped(control, value(control), steps, fine && control != enabledControl));
}

void Panel::toggle()
{
    set(enabledControl, isEnabled() ? 0.0F : 1.0F);
}

} // namespace effect::view
