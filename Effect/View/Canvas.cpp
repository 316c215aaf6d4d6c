#include "Effect/View/Canvas.hpp"

#include "Effect/View/Layout.hpp"
#include "Effect/View/PanelPicture.hpp"

#include <algorithm>
#include <cmath>

namespace effect::view
{

Fit::Fit(PixelSize size)
    : scale_(std::min(size.width / layout::width, size.height / layout::height)),
      left_(std::floor((size.width - layout::width * scale_) / 2)),
      top_(std::floor((size.height - layout::height * scale_) / 2))
{
}

Point Fit::pointAt(int x, int y) const
{
    return {(x - left_) / scale_, (y - top_) / scale_};
}

PixelBox Fit::pixelsOf(const Box &box) const
{
    const int x = static_cast<int>(std::floor(left_ + box.x * scale_));
    const int y = static_cast<int>(std::floor(top_ + box.y * scale_));
    return {x, y, static_cast<int>(std::ceil(left_ + (box.x + box.width) * scale_)) - x,
            static_cast<int>(std::ceil(top_ + (box.y + box.height) * scale_)) - y};
}

void Fit::apply(cairo_t *context) const
{
    cairo_translate(context, left_, top_);
    cairo_scale(context, scale_, scale_);
}

Canvas::Canvas(PixelSize size)
    : fit_(size), ground_(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, size.width, size.height)),
      surface_(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, size.width, size.height))
{
    const Context ground(cairo_create(ground_.get()));
    setColour(ground.get(), palette::background);
    cairo_paint(ground.get());
    fit_.apply(ground.get());
    drawGround(ground.get());
    const Context whole(cairo_create(surface_.get()));
    cairo_set_source_surface(whole.get(), ground_.get(), 0, 0);
    cairo_paint(whole.get());
}

void Canvas::repaint(const Box &box, const std::function<void(cairo_t *)> &paint)
{
    const Context context(cairo_create(surface_.get()));
    const PixelBox pixels = fit_.pixelsOf(box);
    cairo_rectangle(context.get(), pixels.x, pixels.y, pixels.width, pixels.height);
    cairo_clip(context.get());
    cairo_set_source_surface(context.get(), ground_.get(), 0, 0);
    cairo_paint(context.get());
    fit_.apply(context.get());
    paint(context.get());
}

} // namespace effect::view
