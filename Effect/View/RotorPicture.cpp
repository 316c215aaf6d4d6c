#include "Effect/View/RotorPicture.hpp"

#include "Effect/View/Parameter.hpp"

#include <algorithm>
#include <cmath>

namespace effect::view
{

namespace
{

constexpr double wellRadius = 88;
constexpr double rimRadius = 83;
constexpr double bodyRadius = 72;
constexpr double front = fullTurn / 4;

/// For how long a picture gathers light, in seconds, and how far apart the bodies may
/// be whose mean is the blur, in turns.
constexpr double shutter = 1.0 / 60;
constexpr double blurStep = 1.0 / 180;
constexpr double mostDoublings = 5;
constexpr double crispDoublings = 2;

/// How long the light on the rim takes to fade, in seconds, and its longest trail.
constexpr double afterglow = 0.11;
constexpr double longestTrail = 0.55;

Point middleOf(const Box &box)
{
    return {box.x + box.width / 2, box.y + 94};
}

double sense(RotorKind kind)
{
    return kind == RotorKind::horn ? 1 : -1;
}

/// One flared bell along +x, from the hub to its mouth.
void bell(cairo_t *context)
{
    cairo_move_to(context, 8, -8);
    cairo_curve_to(context, 32, -9, 50, -16, 63, -33);
    cairo_curve_to(context, 70, -14, 70, 14, 63, 33);
    cairo_curve_to(context, 50, 16, 32, 9, 8, 8);
    cairo_close_path(context);
}

void drawBell(cairo_t *context, const Colour &accent, bool sounds)
{
    const Pattern metal(cairo_pattern_create_linear(0, -33, 0, 33));
    addStop(metal, 0, rgb(sounds ? 0x747B86 : 0x4A4F58));
    addStop(metal, 0.5, rgb(sounds ? 0xC6CAD1 : 0x6A707A));
    addStop(metal, 1, rgb(sounds ? 0x5A606A : 0x3A3F47));
    bell(context);
    fill(context, metal);
    const Pattern depth(cairo_pattern_create_linear(8, 0, 68, 0));
    addStop(depth, 0, Colour{0, 0, 0, 0.6});
    addStop(depth, 0.75, Colour{0, 0, 0, 0.05});
    addStop(depth, 1, Colour{0, 0, 0, 0});
    bell(context);
    fill(context, depth);
    cairo_new_sub_path(context);
    cairo_move_to(context, 63, -33);
    cairo_curve_to(context, 70, -14, 70, 14, 63, 33);
    cairo_set_line_cap(context, CAIRO_LINE_CAP_ROUND);
    stroke(context, sounds ? accent : rgb(0x7D838D), sounds ? 4 : 2);
}

void drawHub(cairo_t *context, double radius)
{
    const Pattern metal(cairo_pattern_create_radial(-radius / 3, -radius / 3, 0, 0, 0, radius));
    addStop(metal, 0, rgb(0x7B828D));
    addStop(metal, 1, rgb(0x2B2F36));
    circle(context, {0, 0}, radius);
    fill(context, metal);
    circle(context, {0, 0}, radius * 0.3);
    fill(context, rgb(0x14161A));
}

/// The treble horn, and the blind one that balances it.
void drawHornBody(cairo_t *context, const Colour &accent)
{
    cairo_save(context);
    cairo_rotate(context, fullTurn / 2);
    drawBell(context, accent, false);
    cairo_restore(context);
    drawBell(context, accent, true);
}

/// The bass drum: a closed cylinder with a scoop that throws the sound to one side.
void drawDrumBody(cairo_t *context, const Colour &accent)
{
    constexpr double half = fullTurn * 0.135;
    const Pattern wood(cairo_pattern_create_radial(-18, -18, 6, 0, 0, bodyRadius));
    addStop(wood, 0, rgb(0x6B5B4B));
    addStop(wood, 0.7, rgb(0x473C32));
    addStop(wood, 1, rgb(0x2D2620));
    circle(context, {0, 0}, bodyRadius - 3);
    fill(context, wood);
    for (const double radius : {30.0, 46.0, 61.0}) {
        circle(context, {0, 0}, radius);
        stroke(context, Colour{0, 0, 0, 0.22}, 1);
    }
    // The scoop, darkest at its throat.
    const Pattern scoop(cairo_pattern_create_linear(12, 0, bodyRadius, 0));
    addStop(scoop, 0, rgb(0x0B0C0E));
    addStop(scoop, 1, rgb(0x2A241E));
    cairo_move_to(context, 14, 0);
    cairo_curve_to(context, 20, -22, 40, -44, (bodyRadius - 3) * std::cos(half),
                   -(bodyRadius - 3) * std::sin(half));
    cairo_arc(context, 0, 0, bodyRadius - 3, -half, half);
    cairo_curve_to(context, 40, 44, 20, 22, 14, 0);
    cairo_close_path(context);
    fill(context, scoop);
    cairo_new_sub_path(context);
    cairo_arc(context, 0, 0, bodyRadius - 3, -half, half);
    cairo_set_line_cap(context, CAIRO_LINE_CAP_ROUND);
    stroke(context, accent, 4);
}

void drawBody(cairo_t *context, RotorKind kind, const Colour &accent)
{
    if (kind == RotorKind::horn) {
        drawHornBody(context, accent);
    } else {
        drawDrumBody(context, accent);
    }
}

/// A square around the axle, as wide as a body, in memory of its own. A context on it is
/// in points from the axle.
class Layer
{
public:
    /// `resolution` in pixels a point.
    explicit Layer(double resolution)
        : resolution_(resolution),
          surface_(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, pixels(), pixels()))
    {
        cairo_surface_set_device_scale(surface_.get(), resolution, resolution);
    }

    Context context() const
    {
        Context context(cairo_create(surface_.get()));
        cairo_translate(context.get(), half, half);
        return context;
    }
    double resolution() const { return resolution_; }
    void paint(cairo_t *context, double strength) const
    {
        cairo_set_source_surface(context, surface_.get(), -half, -half);
        cairo_paint_with_alpha(context, strength);
    }

private:
    static constexpr double half = bodyRadius + 2;

    int pixels() const { return static_cast<int>(std::ceil(2 * half * resolution_)); }

    double resolution_;
    Surface surface_;
};

/// The mean of the image and the same image turned.
Layer meanWithTurned(const Layer &image, double radians)
{
    Layer mean(image.resolution());
    const Context context = mean.context();
    image.paint(context.get(), 0.5);
    cairo_set_operator(context.get(), CAIRO_OPERATOR_ADD);
    cairo_rotate(context.get(), radians);
    image.paint(context.get(), 0.5);
    return mean;
}

/// Pixels a point of the context.
double resolutionOf(cairo_t *context)
{
    double x = 1;
    double y = 0;
    cairo_user_to_device_distance(context, &x, &y);
    return std::hypot(x, y);
}

/// Draws the body around the origin as an open shutter sees it: the mean of many along
/// its way. Each doubling makes twice as many of them, so that a few turned images do.
void drawBlurred(cairo_t *context, RotorKind kind, const RotorState &state)
{
    const double way = state.speed * shutter;
    const double doublings = std::clamp(std::ceil(std::log2(way / blurStep)), 0.0, mostDoublings);
    // What is blurred that far has no use for finer pixels.
    const double resolution = resolutionOf(context);
    Layer image(doublings > crispDoublings ? std::min(resolution, 1.0) : resolution);
    const Context body = image.context();
    cairo_rotate(body.get(), front + sense(kind) * fullTurn * state.angle);
    drawBody(body.get(), kind, state.accent);
    double turn = -sense(kind) * fullTurn * way / std::exp2(doublings);
    for (int doubling = 0; doubling < static_cast<int>(doublings); ++doubling) {
        image = meanWithTurned(image, turn);
        turn *= 2;
    }
    image.paint(context, 1);
}

/// A light on the rim where the rotor points, with a trail as long as it is fast.
void drawLight(cairo_t *context, Point middle, RotorKind kind, const RotorState &state)
{
    constexpr int parts = 24;
    const double trail = std::clamp(state.speed * afterglow, 0.03, longestTrail);
    const double head = front + sense(kind) * fullTurn * state.angle;
    cairo_set_line_cap(context, CAIRO_LINE_CAP_BUTT);
    for (int part = 0; part < parts; ++part) {
        const double from = head - sense(kind) * fullTurn * trail * (part + 1) / parts;
        const double to = head - sense(kind) * fullTurn * trail * part / parts;
        const double strength = 1 - static_cast<double>(part) / parts;
        cairo_new_sub_path(context);
        cairo_arc(context, middle.x, middle.y, rimRadius, std::min(from, to), std::max(from, to));
        stroke(context, state.accent.faded(strength * strength), 3);
    }
}

void drawMicrophones(cairo_t *context, Point middle, double spread)
{
    for (const double side : {-0.5, 0.5}) {
        const double angle = front - side * spread / 360 * fullTurn;
        const Point at{middle.x + (wellRadius + 8) * std::cos(angle),
                       middle.y + (wellRadius + 8) * std::sin(angle)};
        circle(context, at, 4);
        fill(context, rgb(0xC9CDD4));
        circle(context, at, 1.6);
        fill(context, palette::background);
    }
}

} // namespace

void drawRotorWell(cairo_t *context, const Box &box)
{
    const Point middle = middleOf(box);
    const Pattern edge(
        cairo_pattern_create_linear(0, middle.y - wellRadius - 1, 0, middle.y + wellRadius + 1));
    addStop(edge, 0, rgb(0x0A0B0D));
    addStop(edge, 1, rgb(0x3A3F47));
    circle(context, middle, wellRadius + 1.5);
    fill(context, edge);
    const Pattern well(
        cairo_pattern_create_radial(middle.x, middle.y + 20, 10, middle.x, middle.y, wellRadius));
    addStop(well, 0, rgb(0x1D2025));
    addStop(well, 1, rgb(0x0C0D10));
    circle(context, middle, wellRadius);
    fill(context, well);
    circle(context, middle, rimRadius);
    stroke(context, rgb(0x24282E), 3);
}

void drawRotor(cairo_t *context, const Box &box, RotorKind kind, const RotorState &state)
{
    const Point middle = middleOf(box);
    drawLight(context, middle, kind, state);
    cairo_save(context);
    cairo_translate(context, middle.x, middle.y);
    drawBlurred(context, kind, state);
    // It looks the same at every angle.
    drawHub(context, 14);
    cairo_restore(context);
    drawMicrophones(context, middle, state.spread);
    const double base = box.y + box.height - 10;
    drawText(context, {middle.x - 34, base}, Align::centre, {11, true, 1.8}, palette::name,
             kind == RotorKind::horn ? "HORN" : "DRUM");
    drawText(context, {middle.x + 30, base}, Align::centre, {13}, palette::text,
             speedText(state.speed));
}

} // namespace effect::view
