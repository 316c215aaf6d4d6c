#pragma once

#include "Resources/Demonstration Loops/Audio/StereoLoop.hpp"

namespace demonstration_loops
{

/// Gentle bus compression: `ratio` above `threshold` (RMS in dBFS), soft knee.
void compress(StereoLoop &loop, double threshold, double ratio);

/// Keeps every sample within `ceiling` (linear), looking 5 ms ahead and letting
/// go within 80 ms. The loop's end looks into its beginning.
void limit(StereoLoop &loop, double ceiling);

} // namespace demonstration_loops
