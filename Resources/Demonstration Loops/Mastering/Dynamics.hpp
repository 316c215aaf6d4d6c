#pragma once

#include "Resources/Demonstration Loops/Audio/StereoLoop.hpp"

#include <vector>

namespace demonstration_loops
{

/// Gentle bus compression: `ratio` above `threshold` (RMS in dBFS), soft knee.
void compress(StereoLoop &loop, double threshold, double ratio);

/// Turns the loop down around each frame of an `excess` above 1, by that factor, looking
/// 5 ms ahead and letting go within 80 ms. The loop's end looks into its beginning.
/// `excess` has a value for each frame.
void limit(StereoLoop &loop, const std::vector<double> &excess);

} // namespace demonstration_loops
