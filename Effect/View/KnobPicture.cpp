#include "Effect/View/KnobPicture.hpp"

#include <algorithm>
#include <cmath>

namespace effect::view
{

namespace
{

constexpr double firstAngle = fullTurn * 3 / 8;
constexpr double wholeWay = fullTurn * 3 / 4;

double angleAt(double position)
{
    return firstAngle + position * wholeWay;
}

Point onCircle(Point centre, double radius, double angle)
{
    return {centre.x + radius * std::cos(angle), centre.y + radius * std::sin(angle)};
}

void arc(cairo_t *context, const layout::Knob &knob, double from, double to)
{
    cairo_new_sub_path(context);
    cairo_arc(context, knob.axle.x, knob.axle.y, knob.radius, angleAt(std::min(from, to)),
              angleAt(std::max(from, to)));
}

void drawArc(cairo_t *context, const layout::Knob &knob, const KnobState &state)
{
    const double width = std::max(3.0, knob.radius * 0.085);
    cairo_set_line_cap(context, CAIRO_LINE_CAP_ROUND);
    arc(context, knob, 0, 1);
    stroke(context, palette::track, width);
    if (std::abs(state.position - state.origin) > 1e-4) {
        // A soft light around the lit part.
        arc(context, knob, state.origin, state.position);
        stroke(context, state.accent.faded(0.16), width * 2.6);
        arc(context, knob, state.origin, state.position);
        stroke(context, state.accent, width);
    }
    circle(context, onCircle(knob.axle, knob.radius, angleAt(state.standard)), width * 0.27);
    const bool isLit = (state.standard > state.origin && state.standard < state.position) ||
                       (state.standard < state.origin && state.standard > state.position);
    fill(context, isLit ? palette::header : palette::name);
}

void drawShadow(cairo_t *context, Point axle, double radius)
{
    const Point below{axle.x, axle.y + radius * 0.16};
    const Pattern shade(cairo_pattern_create_radial(below.x, below.y, radius * 0.7, below.x,
                                                    below.y, radius * 1.16));
    addStop(shade, 0, Colour{0, 0, 0, 0.55});
    addStop(shade, 1, Colour{0, 0, 0, 0});
    circle(context, below, radius * 1.16);
    fill(context, shade);
}

void drawCap(cairo_t *context, Point axle, double radius, bool isLively)
{
    drawShadow(context, axle, radius);
    const Pattern rim(cairo_pattern_create_linear(0, axle.y - radius, 0, axle.y + radius));
    addStop(rim, 0, rgb(isLively ? 0x747B87 : 0x5C626C));
    addStop(rim, 0.5, rgb(0x33373F));
    addStop(rim, 1, rgb(0x1B1E22));
    circle(context, axle, radius);
    fill(context, rim);
    const double inner = radius - std::max(1.0, radius * 0.045);
    const Pattern top(cairo_pattern_create_linear(0, axle.y - inner, 0, axle.y + inner));
    addStop(top, 0, rgb(isLively ? 0x474D57 : 0x3D424B));
    addStop(top, 1, rgb(isLively ? 0x2A2E35 : 0x23262C));
    circle(context, axle, inner);
    fill(context, top);
    const double dish = radius * 0.74;
    const Pattern hollow(cairo_pattern_create_linear(0, axle.y - dish, 0, axle.y + dish));
    addStop(hollow, 0, rgb(0x26292F));
    addStop(hollow, 1, rgb(isLively ? 0x3B4048 : 0x33373F));
    circle(context, axle, dish);
    fill(context, hollow);
}

void drawPointer(cairo_t *context, Point axle, double radius, double position)
{
    const Point from = onCircle(axle, radius * 0.42, angleAt(position));
    const Point to = onCircle(axle, radius * 0.88, angleAt(position));
    cairo_set_line_cap(context, CAIRO_LINE_CAP_ROUND);
    cairo_move_to(context, from.x, from.y);
    cairo_line_to(context, to.x, to.y);
    stroke(context, palette::text, std::max(2.2, radius * 0.075));
}

} // namespace

void drawKnob(cairo_t *context, const layout::Knob &knob, const KnobState &state)
{
    const double radius = knob.radius * 0.76;
    drawArc(context, knob, state);
    drawCap(context, knob.axle, radius, state.isLively);
    drawPointer(context, knob.axle, radius, state.position);
}

} // namespace effect::view
