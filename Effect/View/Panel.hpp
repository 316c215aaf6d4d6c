#pragma once

#include "Effect/View/Gestures.hpp"
#include "Effect/View/Parameter.hpp"

#include <array>
#include <bitset>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace effect::view
{

/// Hears what the person does to the controls.
class PanelListener
{
public:
    /// A gesture on the control begins or ends; changes come between the two.
    virtual void touched(std::size_t control, bool held) = 0;
    virtual void changed(std::size_t control, float value) = 0;

protected:
    ~PanelListener() = default;
};

/// What a key means to the panel.
enum class Key { next, previous, up, down, pageUp, pageDown, home, end, toggle, reset };

/// The controls without their picture: their values, what pointer, wheel and keyboard do
/// to them, and which of them look different since. Used by one thread.
class Panel
{
public:
    explicit Panel(PanelListener &listener);

    float value(std::size_t control) const { return values_.at(control); }
    bool isEnabled() const { return value(enabledControl) > 0; }
    /// Takes the host's value, brought into range. A control in a gesture keeps its own.
    void setValue(std::size_t control, float value);

    void press(Point at, std::uint32_t milliseconds);
    void move(Point at, bool fine);
    /// Ends the gesture, also one that is broken off.
    void release();
    void leave();
    /// Notches away from the person count up.
    void scroll(Point at, int notches, bool fine);
    void press(Key key, bool fine);

    /// Whether the view has the keyboard. The focus is seen only from a key on, and
    /// until the pointer takes over.
    void setKeyboard(bool owned);
    bool showsFocus(std::size_t control) const;
    bool isHovered(std::size_t control) const { return hovered_ == control; }
    bool isHeld(std::size_t control) const { return drag_ && drag_->control() == control; }

    /// The controls that look different since the last call.
    std::bitset<controlCount> takeChanges();

private:
    void hover(std::optional<std::size_t> control);
    void focus(std::size_t control, bool seen);
    void change(std::size_t control, float value);
    /// A whole gesture of one change.
    void set(std::size_t control, float value);
    void step(std::size_t control, int steps, bool fine);
    void toggle();

    PanelListener &listener_;
    std::array<float, controlCount> values_{};
    std::optional<std::size_t> hovered_;
    std::size_t focused_ = speedControl;
    bool hasKeyboard_ = false;
    bool focusSeen_ = true;
    std::optional<Drag> drag_;
    ClickCounter clicks_;
    std::bitset<controlCount> changes_;
};

} // namespace effect::view
