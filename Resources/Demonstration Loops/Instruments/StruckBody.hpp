#pragma once

#include "Resources/Demonstration Loops/Instruments/Instrument.hpp"

#include <vector>

namespace demonstration_loops
{

/// Bars, tongues and bells: a body with a few modes of its own, struck with a
/// mallet. A harder stroke wakes the upper modes.
class StruckBody : public Instrument
{
public:
    struct Mode {
        double ratio; ///< to the fundamental
        double level;
        double ring; ///< share of the fundamental's ring
    };
    struct Character {
        std::vector<Mode> modes;
        double ring;    ///< seconds to -60 dB at middle c
        double mallet;  ///< level of the contact noise
        double release; ///< seconds to -60 dB once let go; long for what has no damper
    };

    static Character marimba();
    static Character vibraphone();
    static Character glockenspiel();
    static Character kalimba();
    static Character musicBox();
    static Character bells();
    static Character steelPan();
    static Character gamelan();

    explicit StruckBody(Character character) : character_(std::move(character)) {}

    void play(const Tone &tone, StereoLoop &loop) const override;

private:
    Character character_;
};

} // namespace demonstration_loops
