#pragma once

/// Lengths and places on the screen are in points; y grows downwards.
using CGFloat = double;

/// A place.
struct CGPoint {
    ///@{
    /// In points, from the left and from the top.
    CGFloat x = 0;
    CGFloat y = 0;
    ///@}

    /// Whether it is the same place, to the last bit.
    friend bool operator==(const CGPoint &, const CGPoint &) = default;
};

/// A width and a height.
struct CGSize {
    ///@{
    /// In points.
    CGFloat width = 0;
    CGFloat height = 0;
    ///@}

    /// Whether both are the same, to the last bit.
    friend bool operator==(const CGSize &, const CGSize &) = default;
};

/// A rectangle with upright sides.
struct CGRect {
    constexpr CGRect() = default;
    /// The rectangle whose upper left corner is at `x`, `y`.
    constexpr CGRect(CGFloat x, CGFloat y, CGFloat width, CGFloat height)
        : origin{x, y}, size{width, height}
    {
    }

    CGPoint origin; ///< its upper left corner
    CGSize size;    ///< its extent from there

    /// Whether place and size are the same, to the last bit.
    friend bool operator==(const CGRect &, const CGRect &) = default;
};
