#pragma once

#include "Effect/View/Drawing.hpp"
#include "Effect/View/Panel.hpp"
#include "Effect/View/RotorMotion.hpp"

namespace effect::view
{

/// Everything that never changes: ground, name, lines, wells.
void drawGround(cairo_t *context);
/// A control with its name and value, on the ground.
void drawControl(cairo_t *context, const Panel &panel, std::size_t control);
/// The two rotors, on the ground.
void drawHorn(cairo_t *context, const Panel &panel, const RotorMotion &motion);
void drawDrum(cairo_t *context, const Panel &panel, const RotorMotion &motion);

} // namespace effect::view
