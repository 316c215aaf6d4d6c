#pragma once

#include "Resources/Demonstration Loops/Audio/StereoLoop.hpp"
#include "Resources/Demonstration Loops/Composition/Score.hpp"

#include <cstdint>

namespace demonstration_loops
{

/// Plays the score: parts, their effects, the room and the echo, mixed but not
/// mastered. The same score and seed give the same samples.
StereoLoop mixdown(const Score &score, std::uint64_t seed);

} // namespace demonstration_loops
