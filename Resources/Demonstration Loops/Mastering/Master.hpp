#pragma once

#include "Resources/Demonstration Loops/Audio/StereoLoop.hpp"

namespace demonstration_loops
{

/// Integrated loudness of every loop.
constexpr double targetLoudness = -16.0;

/// The largest sample before encoding, in dBFS: lossy coding moves peaks, and
/// what is decoded stays under -1.
constexpr double ceilingDb = -2.5;

/// The largest that the rotating loudspeaker may make of a loop, in dBFS before encoding.
constexpr double cabinetCeilingDb = -0.6;

/// Makes a mix ready for encoding: rumble removed, gently compressed, at the
/// target loudness and under the ceilings.
void master(StereoLoop &mix);

} // namespace demonstration_loops
