#pragma once

#include "Resources/Demonstration Loops/Audio/StereoLoop.hpp"

namespace demonstration_loops
{

/// Integrated loudness of every loop.
constexpr double targetLoudness = -16.0;

/// The largest sample before encoding, in dBFS: lossy coding moves peaks, and
/// what is decoded stays under -1.
constexpr double ceilingDb = -2.5;

/// Makes a mix ready for encoding: rumble removed, gently compressed, at the
/// target loudness and under the ceiling.
void master(StereoLoop &mix);

} // namespace demonstration_loops
