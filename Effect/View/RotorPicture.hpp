#pragma once

#include "Effect/View/Drawing.hpp"

namespace effect::view
{

enum class RotorKind { horn, drum };

/// What a rotor's picture shows.
struct RotorState {
    /// In turns from the front, which is at the bottom; the drum turns the other way.
    double angle;
    /// Turns a second.
    double speed;
    /// Between the microphones, in degrees.
    double spread;
    Colour accent;
};

/// The well that the rotor turns in, which never changes.
void drawRotorWell(cairo_t *context, const Box &box);

/// The rotor from above, blurred as far as it turns while a picture stands, with its
/// light on the well's rim, the microphones, its name and its speed.
void drawRotor(cairo_t *context, const Box &box, RotorKind kind, const RotorState &state);

} // namespace effect::view
