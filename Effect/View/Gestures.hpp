#pragma once

#include "Effect/View/Geometry.hpp"

#include <cstddef>
#include <cstdint>
#include <optional>

namespace effect::view
{

/// A knob held by the pointer: up is more. At an end of the way the knob stays behind
/// and follows again as soon as the pointer turns round.
class Drag
{
public:
    /// The pointer's way for the knob's whole one, in points; ten times that when fine.
    static constexpr double travel = 200;

    Drag(std::size_t control, double position, double y);

    std::size_t control() const { return control_; }
    /// The knob's position, 0 to 1, once the pointer is at this height.
    double moveTo(double y, bool fine);

private:
    std::size_t control_;
    double position_;
    double y_;
};

/// Tells the second press of a double click.
class ClickCounter
{
public:
    /// Milliseconds and points that may lie between the presses.
    static constexpr std::uint32_t longest = 400;
    static constexpr double farthest = 6;

    /// Whether this press is the second one on the control. A third begins anew.
    bool isSecond(std::size_t control, Point at, std::uint32_t milliseconds);

private:
    struct Press {
        std::size_t control;
        Point at;
        std::uint32_t milliseconds;
    };

    std::optional<Press> last_;
};

} // namespace effect::view
