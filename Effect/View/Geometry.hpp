#pragma once

namespace effect::view
{

/// A place in points, from the panel's top left corner; a point is a pixel at scale 1.
struct Point {
    double x;
    double y;
};

/// A rectangle in points.
struct Box {
    double x;
    double y;
    double width;
    double height;

    constexpr Point centre() const { return {x + width / 2, y + height / 2}; }
    constexpr bool holds(Point at) const
    {
        return at.x >= x && at.x < x + width && at.y >= y && at.y < y + height;
    }
    constexpr Box grown(double by) const
    {
        return {x - by, y - by, width + 2 * by, height + 2 * by};
    }
};

} // namespace effect::view
