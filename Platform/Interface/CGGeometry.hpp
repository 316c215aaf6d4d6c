#pragma once

/// Lengths and places on the screen are in points; y grows downwards.
using CGFloat = double;

struct CGPoint {
    CGFloat x = 0;
    CGFloat y = 0;

    friend bool operator==(const CGPoint &, const CGPoint &) = default;
};

struct CGSize {
    CGFloat width = 0;
    CGFloat height = 0;

    friend bool operator==(const CGSize &, const CGSize &) = default;
};

struct CGRect {
    constexpr CGRect() = default;
    constexpr CGRect(CGFloat x, CGFloat y, CGFloat width, CGFloat height)
        : origin{x, y}, size{width, height}
    {
    }

    CGPoint origin;
    CGSize size;

    friend bool operator==(const CGRect &, const CGRect &) = default;
};
