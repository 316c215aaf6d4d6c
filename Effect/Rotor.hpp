#pragma once

#include "Platform/Foundation/Realtime.hpp"

#include <cstddef>
#include <optional>

namespace effect
{

/// How a rotor moves: speeds in turns a second, times in seconds.
struct RotorDesign {
    double slow;
    double fast;
    /// Time constants of speeding up and of slowing down.
    double rise;
    double fall;
};

/// The treble horn and the bass drum. Speeds are those of two-speed cabinets with
/// belt drive, 40 to 50 turns a minute slow and 340 to 400 fast (C. A. Henricksen,
/// "Unearthing the Mysteries of the Leslie Cabinet", Recording Engineer/Producer,
/// April 1981); the light horn follows within a second, the heavy drum takes
/// several.
constexpr RotorDesign hornDesign{0.80, 6.70, 0.30, 0.45};
constexpr RotorDesign drumDesign{0.67, 5.70, 1.50, 1.20};

/// A body that turns and has inertia. Its speed nears the motor's as a first-order
/// system does; a little friction ends the approach in finite time, so that a
/// braked rotor comes to rest.
class Rotor
{
public:
    /// Where the speed setting stands for the slow and the fast motor.
    static constexpr float slowPosition = 1;
    static constexpr float fastPosition = 2;

    Rotor(const RotorDesign &design, double sampleRate);

    /// The motor's turns a second at a setting: 0 is at rest, 1 slow and 2 fast;
    /// straight up to slow, and by equal ratios from there to fast.
    static double speedAt(const RotorDesign &design, float position);

    /// Steers the motor; see `speedAt`.
    REALTIME void setPosition(float position);
    /// Scales the time constants.
    REALTIME void setInertia(float factor);

    /// Stands at angle 0, at the motor's speed.
    REALTIME void reset();

    /// Moves on by a tick. The angle runs evenly within it.
    REALTIME void advance();

    /// Where the tick begins, in turns, within [0, 1).
    REALTIME double angle() const { return angle_; }
    /// Turns a frame.
    REALTIME double step() const { return speed_ * secondsPerFrame_; }
    /// Turns a second.
    REALTIME double speed() const { return speed_; }
    /// The first frame of the tick at or past angle 0 after a full turn, if there is one.
    REALTIME std::optional<std::size_t> turn() const { return turn_; }

private:
    REALTIME void accelerate();

    RotorDesign design_;
    double secondsPerFrame_;
    double tickSeconds_;
    float position_ = -1;
    float inertia_ = 0;
    double riseShare_ = 0;
    double fallShare_ = 0;
    double motor_ = 0;
    double speed_ = 0;
    double angle_ = 0;
    double nextAngle_ = 0;
    std::optional<std::size_t> turn_;
};

} // namespace effect
