#include "Effect/View/Drawing.hpp"

namespace effect::view
{

namespace
{

void selectFont(cairo_t *context, const Font &font)
{
    cairo_select_font_face(context, "Cantarell", CAIRO_FONT_SLANT_NORMAL,
                           font.isBold ? CAIRO_FONT_WEIGHT_BOLD : CAIRO_FONT_WEIGHT_NORMAL);
    cairo_set_font_size(context, font.size);
    // Letters keep their proportions at every scale.
    const std::unique_ptr<cairo_font_options_t, Destroy<cairo_font_options_destroy>> options(
        cairo_font_options_create());
    cairo_font_options_set_hint_metrics(options.get(), CAIRO_HINT_METRICS_OFF);
    cairo_font_options_set_hint_style(options.get(), CAIRO_HINT_STYLE_SLIGHT);
    cairo_font_options_set_antialias(options.get(), CAIRO_ANTIALIAS_GRAY);
    cairo_set_font_options(context, options.get());
}

double advanceOf(cairo_t *context, const std::string &text)
{
    cairo_text_extents_t extents;
    cairo_text_extents(context, text.c_str(), &extents);
    return extents.x_advance;
}

double widthOf(cairo_t *context, const Font &font, const std::string &text)
{
    if (font.spacing == 0 || text.empty()) {
        return advanceOf(context, text);
    }
    double width = -font.spacing;
    for (const char letter : text) {
        width += advanceOf(context, std::string(1, letter)) + font.spacing;
    }
    return width;
}

} // namespace

void setColour(cairo_t *context, const Colour &colour)
{
    cairo_set_source_rgba(context, colour.red, colour.green, colour.blue, colour.alpha);
}

void addStop(const Pattern &pattern, double offset, const Colour &colour)
{
    cairo_pattern_add_color_stop_rgba(pattern.get(), offset, colour.red, colour.green, colour.blue,
                                      colour.alpha);
}

void fill(cairo_t *context, const Pattern &pattern)
{
    cairo_set_source(context, pattern.get());
    cairo_fill(context);
}

void fill(cairo_t *context, const Colour &colour)
{
    setColour(context, colour);
    cairo_fill(context);
}

void stroke(cairo_t *context, const Colour &colour, double width)
{
    setColour(context, colour);
    cairo_set_line_width(context, width);
    cairo_stroke(context);
}

void circle(cairo_t *context, Point centre, double radius)
{
    cairo_new_sub_path(context);
    cairo_arc(context, centre.x, centre.y, radius, 0, fullTurn);
    cairo_close_path(context);
}

void roundedBox(cairo_t *context, const Box &box, double radius)
{
    const double right = box.x + box.width - radius;
    const double bottom = box.y + box.height - radius;
    const double left = box.x + radius;
    const double top = box.y + radius;
    cairo_new_sub_path(context);
    cairo_arc(context, right, top, radius, -fullTurn / 4, 0);
    cairo_arc(context, right, bottom, radius, 0, fullTurn / 4);
    cairo_arc(context, left, bottom, radius, fullTurn / 4, fullTurn / 2);
    cairo_arc(context, left, top, radius, fullTurn / 2, fullTurn * 3 / 4);
    cairo_close_path(context);
}

void drawText(cairo_t *context, Point at, Align align, const Font &font, const Colour &colour,
              const std::string &text)
{
    selectFont(context, font);
    setColour(context, colour);
    const double left = align == Align::left ? at.x : at.x - widthOf(context, font, text) / 2;
    cairo_move_to(context, left, at.y);
    if (font.spacing == 0) {
        cairo_show_text(context, text.c_str());
        return;
    }
    for (const char letter : text) {
        cairo_show_text(context, std::string(1, letter).c_str());
        cairo_rel_move_to(context, font.spacing, 0);
    }
}

} // namespace effect::view
