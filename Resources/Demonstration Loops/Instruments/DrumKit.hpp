#pragma once

#include "Resources/Demonstration Loops/Instruments/Instrument.hpp"

namespace demonstration_loops
{

/// What a stroke hits; stands where other instruments have the pitch.
enum class Drum {
    kick,
    snare,
    rim,
    clap,
    closedHat,
    openHat,
    ride,
    crash,
    highTom,
    midTom,
    lowTom,
    shaker,
    tambourine,
    cowbell,
    highConga,
    lowConga,
    clave,
    brush
};

/// Drums and small percussion, each synthesised from what it is made of: skins
/// as falling sines, snares and brushes as shaped noise, metal as inharmonic
/// squares through a high pass.
class DrumKit : public Instrument
{
public:
    struct Character {
        double kickPitch;  ///< Hz the kick settles at
        double kickRing;   ///< seconds to -60 dB
        double kickClick;  ///< level of the beater
        double snarePitch; ///< Hz
        double snareRing;  ///< seconds to -60 dB of the wires
        double hatRing;    ///< seconds to -60 dB of the closed hat
        double brightness; ///< scales the cutoffs of metal and noise
    };

    static constexpr Character acoustic = {58, 0.5, 0.5, 185, 0.32, 0.12, 1.0};
    static constexpr Character dry = {66, 0.3, 0.8, 220, 0.2, 0.08, 1.1};
    static constexpr Character electronic = {48, 0.75, 0.35, 200, 0.26, 0.09, 1.25};
    static constexpr Character deep = {42, 1.4, 0.25, 170, 0.3, 0.07, 1.15};
    static constexpr Character soft = {62, 0.35, 0.2, 175, 0.22, 0.1, 0.75};
    static constexpr Character big = {54, 0.7, 0.5, 165, 0.6, 0.16, 0.95};

    explicit DrumKit(const Character &character) : character_(character) {}

    void play(const Tone &tone, StereoLoop &loop) const override;

private:
    Character character_;
};

} // namespace demonstration_loops
