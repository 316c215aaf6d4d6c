#pragma once

#include "Resources/Demonstration Loops/Instruments/Instrument.hpp"

namespace demonstration_loops
{

/// A tine piano by frequency modulation: a soft body pair at 1:1 and a bright
/// tine pair at 1:14 that dies quickly, both harder the harder the key is struck.
class ElectricPiano : public Instrument
{
public:
    /// `bark` scales the modulation: 0.6 is mellow, 1.5 cuts through.
    explicit ElectricPiano(double bark = 1.0) : bark_(bark) {}

    void play(const Tone &tone, StereoLoop &loop) const override;

private:
    double bark_;
};

} // namespace demonstration_loops
