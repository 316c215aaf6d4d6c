#pragma once

#include <array>
#include <cstddef>

namespace effect
{

/// The effect computes in ticks of this many frames, whatever the host's blocks
/// are: motion and parameters take one step a tick, and loops have a fixed length.
constexpr std::size_t tickFrames = 16;

/// One channel's samples of one tick.
using Tick = std::array<float, tickFrames>;

/// A straight line over a tick, from `start` up to, not including, `end`.
struct Ramp {
    Ramp(float from, float to) : start(from), step((to - from) / static_cast<float>(tickFrames)) {}

    float at(std::size_t frame) const { return start + step * static_cast<float>(frame); }

    float start;
    float step;
};

} // namespace effect
