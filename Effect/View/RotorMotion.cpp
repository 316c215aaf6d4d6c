#include "Effect/View/RotorMotion.hpp"

#include <algorithm>
#include <cmath>

namespace effect::view
{

namespace
{

/// Seconds in which an error fades to 37 %.
constexpr double settling = 0.06;
/// A quarter of a pixel at a rotor's rim, at scale 2, in turns.
constexpr double visible = 2e-4;
/// Half the last digit of the speed that is shown.
constexpr double visibleSpeed = 0.005;

/// The port's greatest value.
constexpr double fastest = 10;

/// The shortest way between two angles, within ±½ turn.
double wayTo(double from, double to)
{
    return std::remainder(to - from, 1.0);
}

} // namespace

void RotorMotion::reportAngle(double turns, double now)
{
    if (!std::isfinite(turns)) {
        return;
    }
    reported_ = turns;
    reportedAt_ = now;
    if (!isKnown_) {
        shown_ = turns - std::floor(turns);
        shownAt_ = now;
        isKnown_ = true;
    }
}

void RotorMotion::reportSpeed(double turnsPerSecond)
{
    if (std::isfinite(turnsPerSecond)) {
        speed_ = std::clamp(turnsPerSecond, 0.0, fastest);
    }
}

bool RotorMotion::advance(double now)
{
    // The part of the time in which the last report still drives the rotor.
    const double end = reportedAt_ + patience;
    const double driven = std::max(0.0, std::min(now, end) - std::min(shownAt_, end));
    const double target = reported_ + speed_ * (std::min(now, end) - reportedAt_);
    const double expected = shown_ + speed_ * driven;
    const double left = std::exp(-(now - shownAt_) / settling);
    const double angle = expected + wayTo(expected, target) * (1 - left);
    shown_ = angle - std::floor(angle);
    shownAt_ = now;
    if (std::abs(wayTo(seen_, shown_)) < visible && std::abs(speed_ - seenSpeed_) < visibleSpeed) {
        return false;
    }
    seen_ = shown_;
    seenSpeed_ = speed_;
    return true;
}

} // namespace effect::view
