#include "Effect/Rotor.hpp"

#include "Effect/Tick.hpp"

#include <algorithm>
#include <cmath>

namespace effect
{

namespace
{
/// Turns a second that friction takes off or the motor wins back in one second
/// when their difference is next to nothing.
constexpr double friction = 0.02;
} // namespace

Rotor::Rotor(const RotorDesign &design, double sampleRate)
    : design_(design), secondsPerFrame_(1.0 / sampleRate),
      tickSeconds_(static_cast<double>(tickFrames) / sampleRate)
{
    setInertia(1);
    setPosition(slowPosition);
    reset();
}

double Rotor::speedAt(const RotorDesign &design, float position)
{
    const double at = std::clamp(position, 0.0F, fastPosition);
    return at <= 1 ? design.slow * at : design.slow * std::pow(design.fast / design.slow, at - 1);
}

void Rotor::setPosition(float position)
{
    if (position != position_) {
        position_ = position;
        motor_ = speedAt(design_, position);
    }
}

void Rotor::setInertia(float factor)
{
    if (factor != inertia_) {
        inertia_ = factor;
        riseShare_ = -std::expm1(-tickSeconds_ / (design_.rise * factor));
        fallShare_ = -std::expm1(-tickSeconds_ / (design_.fall * factor));
    }
}

void Rotor::reset()
{
    speed_ = motor_;
    angle_ = nextAngle_ = 0;
    turn_.reset();
}

void Rotor::accelerate()
{
    const double missing = motor_ - speed_;
    const double pull = std::abs(missing) * (missing > 0 ? riseShare_ : fallShare_);
    const double change = std::min(std::abs(missing), pull + friction * tickSeconds_);
    speed_ += std::copysign(change, missing);
}

void Rotor::advance()
{
    turn_.reset();
    angle_ = nextAngle_;
    if (angle_ >= 1) {
        angle_ -= 1;
        turn_ = 0;
    }
    accelerate();
    nextAngle_ = angle_ + step() * static_cast<double>(tickFrames);
    // A turn that falls behind the tick's last frame is the next tick's first.
    if (angle_ + step() * static_cast<double>(tickFrames - 1) >= 1) {
        turn_ = static_cast<std::size_t>(std::ceil((1 - angle_) / step()));
        nextAngle_ -= 1;
    }
}

} // namespace effect
