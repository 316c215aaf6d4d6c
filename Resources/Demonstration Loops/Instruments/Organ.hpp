#pragma once

#include "Resources/Demonstration Loops/Instruments/Instrument.hpp"

#include <array>

namespace demonstration_loops
{

/// A drawbar organ: nine sines a key in the tone wheels' ratios, key click at
/// both ends of the note, and the decaying percussion tone of the second or
/// third harmonic. Velocity only tells soft strokes from accents a little.
class Organ : public Instrument
{
public:
    /// Drawbars from 16' to 1', 0 (in) to 8 (fully out), 3 dB a step.
    using Registration = std::array<int, 9>;

    /// `percussion` is the level of the percussion tone, `harmonic` 2 or 3.
    explicit Organ(const Registration &registration, double percussion = 0.0, int harmonic = 3)
        : registration_(registration), percussion_(percussion), harmonic_(harmonic)
    {
    }

    void play(const Tone &tone, StereoLoop &loop) const override;

private:
    Registration registration_;
    double percussion_;
    int harmonic_;
};

} // namespace demonstration_loops
