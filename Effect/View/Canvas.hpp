#pragma once

#include "Effect/View/Drawing.hpp"
#include "Effect/View/Geometry.hpp"

#include <functional>

namespace effect::view
{

struct PixelSize {
    int width;
    int height;

    bool operator==(const PixelSize &) const = default;
};

struct PixelBox {
    int x;
    int y;
    int width;
    int height;
};

/// Where the panel stands in a window of some size: as large as fits in proportion, in
/// the middle.
class Fit
{
public:
    explicit Fit(PixelSize size);

    /// Pixels a point.
    double scale() const { return scale_; }
    Point pointAt(int x, int y) const;
    /// The whole pixels that the box touches.
    PixelBox pixelsOf(const Box &box) const;
    /// Makes the context's units points of the panel.
    void apply(cairo_t *context) const;

private:
    double scale_;
    double left_;
    double top_;
};

/// The window's content in memory, from which it is shown: opaque, also in a window that
/// has transparency. What never changes is drawn
/// once and lies beneath.
class Canvas
{
public:
    explicit Canvas(PixelSize size);

    /// Draws the box anew: the ground, then what `paint` adds to it.
    void repaint(const Box &box, const std::function<void(cairo_t *)> &paint);

    cairo_surface_t *surface() const { return surface_.get(); }

private:
    Fit fit_;
    Surface ground_;
    Surface surface_;
};

} // namespace effect::view
