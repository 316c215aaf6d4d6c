#pragma once

#include "Platform/Foundation/Realtime.hpp"

#include <cmath>

namespace effect
{

/// A value that follows its target without steps: a first-order low-pass taken
/// once a tick, v += (target − v) · (1 − e^(−T/τ)). Between ticks its user draws a
/// straight line from `previous` to `value`.
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
    REALTIME void settle() { previous_ = value_ = target_; }

    /// Takes the step of one tick. The last of the way is jumped, so that the
    /// target is reached exactly; the jump is far below the step of 16 bits.
    REALTIME void advance()
    {
        previous_ = value_;
        const float distance = target_ - value_;
        value_ = std::abs(distance) < snap ? target_ : value_ + distance * coefficient_;
    }

    REALTIME float previous() const { return previous_; }
    REALTIME float value() const { return value_; }
    /// Whether the value stood still at its target over the last tick.
    REALTIME bool isSettled() const { return previous_ == target_ && value_ == target_; }

private:
    static constexpr float snap = 1e-6F;

    float coefficient_;
    float target_ = 0;
    float previous_ = 0;
    float value_ = 0;
};

} // namespace effect
