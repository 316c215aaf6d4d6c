#pragma once

#include "Effect/View/Drawing.hpp"
#include "Effect/View/Layout.hpp"

namespace effect::view
{

/// What a knob shows: places on its way, 0 to 1.
struct KnobState {
    double position;
    /// Where the lit arc begins, and where the mark of the standard value stands.
    double origin;
    double standard;
    bool isLively;
    Colour accent;
};

/// Draws the knob: an arc over three quarters of a turn, the cap and its pointer.
void drawKnob(cairo_t *context, const layout::Knob &knob, const KnobState &state);

} // namespace effect::view
