#pragma once

#include "Resources/Demonstration Loops/Instruments/Instrument.hpp"

namespace demonstration_loops
{

/// A piano by its partials: stretched by the strings' stiffness, shaped by where
/// and how hard the hammer strikes, each of two strings slightly apart in pitch.
class Piano : public Instrument
{
public:
    /// `brightness` scales how quickly the upper partials lose level.
    explicit Piano(double brightness = 1.0) : brightness_(brightness) {}

    void play(const Tone &tone, StereoLoop &loop) const override;

private:
    double brightness_;
};

} // namespace demonstration_loops
