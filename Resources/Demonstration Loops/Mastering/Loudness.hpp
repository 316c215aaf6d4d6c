#pragma once

#include "Resources/Demonstration Loops/Audio/StereoLoop.hpp"

namespace demonstration_loops
{

/// Integrated loudness in LUFS after ITU-R BS.1770-4 (K weighting, blocks of
/// 400 ms with 75 % overlap, gates at -70 LUFS and 10 LU under the mean), of
/// the loop as it plays round and round: blocks run on over its end.
double integratedLoudness(const StereoLoop &loop);

} // namespace demonstration_loops
