#pragma once

#include "Resources/Demonstration Loops/Audio/StereoLoop.hpp"

#include <vector>

namespace demonstration_loops
{

/// How loud the rotating loudspeaker that the loops are played through can make each
/// frame: the largest sample that comes of it (full scale is 1), wherever its rotors
/// stand. It takes both channels as one and parts treble from bass. The horn that faces
/// a microphone raises the treble by up to 1.7, the drum the bass by 1.2 or so, and
/// their ways to it differ by up to half a millisecond: their peaks may meet that did
/// not.
std::vector<double> levelThroughCabinet(const StereoLoop &loop);

} // namespace demonstration_loops
