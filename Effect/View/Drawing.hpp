#pragma once

#include "Effect/View/Geometry.hpp"

#include <cairo.h>

#include <memory>
#include <numbers>
#include <string>

/// What several pictures are drawn with. Contexts are in points.
namespace effect::view
{

/// Frees with a function of cairo's.
template <auto function>
struct Destroy {
    template <typename Object>
    void operator()(Object *object) const
    {
        function(object);
    }
};
using Surface = std::unique_ptr<cairo_surface_t, Destroy<cairo_surface_destroy>>;
using Context = std::unique_ptr<cairo_t, Destroy<cairo_destroy>>;
using Pattern = std::unique_ptr<cairo_pattern_t, Destroy<cairo_pattern_destroy>>;

constexpr double fullTurn = 2 * std::numbers::pi;

/// Components from 0 to 1, not premultiplied.
struct Colour {
    double red;
    double green;
    double blue;
    double alpha = 1;

    constexpr Colour faded(double by) const { return {red, green, blue, alpha * by}; }
};

/// From 0xRRGGBB.
constexpr Colour rgb(unsigned code)
{
    return {static_cast<double>(code >> 16U & 0xFFU) / 255,
            static_cast<double>(code >> 8U & 0xFFU) / 255, static_cast<double>(code & 0xFFU) / 255};
}

/// Contrast with the background is 14.9 for the text, 7.2 for names and 3.4 for marks.
namespace palette
{
constexpr Colour background = rgb(0x16181C);
constexpr Colour backgroundTop = rgb(0x202329);
constexpr Colour header = rgb(0x111316);
constexpr Colour line = rgb(0x2C3037);
constexpr Colour text = rgb(0xF0ECE4);
constexpr Colour name = rgb(0xA2A7B0);
constexpr Colour mark = rgb(0x686E79);
constexpr Colour track = rgb(0x343941);
constexpr Colour accent = rgb(0xF0A34A);
/// In place of the accent while the effect is bypassed.
constexpr Colour asleep = rgb(0x7D838D);
constexpr Colour focus = rgb(0xFFD7A1);
} // namespace palette

void setColour(cairo_t *context, const Colour &colour);
void addStop(const Pattern &pattern, double offset, const Colour &colour);

/// Fills the path with the pattern or the colour.
void fill(cairo_t *context, const Pattern &pattern);
void fill(cairo_t *context, const Colour &colour);
void stroke(cairo_t *context, const Colour &colour, double width);

/// Paths of their own.
void circle(cairo_t *context, Point centre, double radius);
void roundedBox(cairo_t *context, const Box &box, double radius);

struct Font {
    double size;
    bool isBold = false;
    /// Extra points between letters; for ASCII only.
    double spacing = 0;
};
enum class Align { left, centre };

/// Draws a line of text whose baseline goes through the point.
void drawText(cairo_t *context, Point at, Align align, const Font &font, const Colour &colour,
              const std::string &text);

} // namespace effect::view
