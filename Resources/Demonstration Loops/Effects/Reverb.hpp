#pragma once

#include "Resources/Demonstration Loops/Audio/StereoLoop.hpp"

namespace demonstration_loops
{

/// A room: what it does to a loop that has been playing for ever.
struct Room {
    double decay;    ///< seconds to -60 dB
    double damping;  ///< Hz above which the walls absorb
    double preDelay; ///< seconds before the first reflection
};

constexpr Room studio = {0.7, 6500.0, 0.004};
constexpr Room hall = {2.4, 5200.0, 0.018};
constexpr Room plate = {1.5, 9500.0, 0.006};
constexpr Room cathedral = {4.2, 4200.0, 0.03};
constexpr Room cellar = {1.1, 3500.0, 0.008};

/// The room's answer to `send` alone, without the dry sound: eight delay lines
/// that feed each other through an orthogonal matrix (Jot and Chaigne 1991)
/// behind four diffusing all-passes. The tail wraps as often as it is long.
StereoLoop reverberate(const StereoLoop &send, const Room &room);

/// Echoes of `send` alone, `frames` apart, from side to side, each `feedback`
/// times the one before and duller.
StereoLoop echo(const StereoLoop &send, std::size_t frames, double feedback);

} // namespace demonstration_loops
