#pragma once

#include "Resources/Demonstration Loops/Audio/StereoLoop.hpp"

#include <cmath>

namespace demonstration_loops
{

/// The factor a frame with which a level falls by 60 dB in `seconds`.
inline double fadeFactor(double seconds)
{
    return std::exp(-6.907755 / (seconds * sampleRate));
}

/// The shape of a note's level: times in seconds, sustain as a share of the top.
struct EnvelopeShape {
    double attack;
    double decay;
    double sustain;
    double release;
};

/// Attack, decay, sustain, release; the rise is straight, the falls exponential.
class Envelope
{
public:
    /// `held` is the time in seconds until the key is let go.
    Envelope(const EnvelopeShape &shape, double held)
        : shape_(shape), held_(static_cast<long>(held * sampleRate)),
          rise_(1.0 / (shape.attack * sampleRate + 1.0)), fall_(fadeFactor(shape.decay)),
          release_(fadeFactor(shape.release))
    {
    }

    double next()
    {
        if (frame_++ >= held_) {
            rising_ = false;
            level_ *= release_;
        } else if (rising_) {
            level_ += rise_;
            if (level_ >= 1.0) {
                level_ = 1.0;
                rising_ = false;
            }
        } else {
            level_ = shape_.sustain + (level_ - shape_.sustain) * fall_;
        }
        return level_;
    }

    /// True once the level has fallen below what anyone can hear.
    [[nodiscard]] bool finished() const
    {
        return !rising_ && level_ < 1.0e-5 && (frame_ > held_ || shape_.sustain < 1.0e-5);
    }

private:
    EnvelopeShape shape_;
    long held_;
    double rise_;
    double fall_;
    double release_;
    double level_ = 0.0;
    long frame_ = 0;
    bool rising_ = true;
};

} // namespace demonstration_loops
