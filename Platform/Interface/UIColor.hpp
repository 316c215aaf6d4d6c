#pragma once

#include "Platform/Interface/CGGeometry.hpp"

#include <algorithm>

/// A colour in sRGB. Components are from 0 to 1; what lies outside counts as the
/// nearer end.
class UIColor
{
public:
    /// A colour; `alpha` 0 is transparent.
    UIColor(CGFloat red, CGFloat green, CGFloat blue, CGFloat alpha)
        : red_(limited(red)), green_(limited(green)), blue_(limited(blue)), alpha_(limited(alpha))
    {
    }

    /// A grey, from 0 for black to 1 for white.
    UIColor(CGFloat white, CGFloat alpha) : UIColor(white, white, white, alpha) {}

    /// Whether all components are the same.
    friend bool operator==(const UIColor &, const UIColor &) = default;

private:
    friend class CIColor;

    /// What is not a number counts as 0.
    static CGFloat limited(CGFloat component)
    {
        return component > 0 ? std::min(component, CGFloat(1)) : 0;
    }

    CGFloat red_;
    CGFloat green_;
    CGFloat blue_;
    CGFloat alpha_;
};

/// A colour taken apart into its components.
class CIColor
{
public:
    /// The components of that colour.
    explicit CIColor(const UIColor &color)
        : red_(color.red_), green_(color.green_), blue_(color.blue_), alpha_(color.alpha_)
    {
    }

    ///@{
    /// From 0 to 1.
    CGFloat red() const { return red_; }
    CGFloat green() const { return green_; }
    CGFloat blue() const { return blue_; }
    CGFloat alpha() const { return alpha_; }
    ///@}

private:
    CGFloat red_;
    CGFloat green_;
    CGFloat blue_;
    CGFloat alpha_;
};
