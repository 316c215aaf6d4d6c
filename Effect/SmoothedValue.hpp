#pragma once

#include "Platform/Foundation/Realtime.hpp"

#include <cmath>

namespace effect
{

/// A value that follows its target without steps or corners: two low-passes of
/// first order in a row, each taken once a tick, v += (target − v) · (1 − e^(−T/τ)),
/// so that its step response is 1 − (1 + t/τ) e^(−t/τ). One alone would set out with
/// a jerk, which a low tone lets be heard. Between ticks its user draws a straight
/// line from `previous` to `value`.
class SmoothedValue
{
public:
    /// `timeConstant` is τ and `interval` the time T of a tick, both in seconds.
    SmoothedValue(double timeConstant, double interval)
        : coefficient_(static_cast<float>(-std::expm1(-interval / timeConstant)))
    {
    }

    REALTIME void setTarget(float target) { target_ = target; }

    /// Ends all motion at the target.
    REALTIME void settle() { previous_ = value_ = leader_ = target_; }

    /// Takes the step of one tick. The last of the way is jumped, so that the
    /// target is reached exactly; the jump is far below the step of 16 bits.
    REALTIME void advance()
    {
        previous_ = value_;
        leader_ = near(leader_, target_);
        value_ = near(value_, leader_);
    }

    REALTIME float previous() const { return previous_; }
    REALTIME float value() const { return value_; }
    /// Whether the value stood still at its target over the last tick.
    REALTIME bool isSettled() const { return previous_ == target_ && value_ == target_; }

private:
    static constexpr float snap = 1e-6F;

    REALTIME float near(float from, float to) const
    {
        const float distance = to - from;
        return std::abs(distance) < snap ? to : from + distance * coefficient_;
    }

    float coefficient_;
    float target_ = 0;
    float leader_ = 0;
    float previous_ = 0;
    float value_ = 0;
};

} // namespace effect
