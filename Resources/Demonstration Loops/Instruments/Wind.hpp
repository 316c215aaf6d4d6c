#pragma once

#include "Resources/Demonstration Loops/Audio/Envelope.hpp"
#include "Resources/Demonstration Loops/Instruments/Instrument.hpp"

#include <array>

namespace demonstration_loops
{

/// Solo instruments that are blown or bowed: harmonics that grow with the
/// breath, vibrato that arrives late, and air.
class Wind : public Instrument
{
public:
    struct Character {
        std::array<double, 12> harmonics;
        double brightness; ///< how much later the upper harmonics speak, 0 to 1
        double breath;     ///< level of the air
        double vibrato;    ///< cents
        double beating;    ///< cents between two ranks of reeds, 0 for one rank
        EnvelopeShape level;
    };

    static constexpr Character flute = {
        {1, 0.45, 0.16, 0.06, 0.03, 0.01}, 0.3, 0.10, 14, 0, {0.05, 0.6, 0.85, 0.14}};
    static constexpr Character clarinet = {
        {1, 0.05, 0.6, 0.06, 0.38, 0.06, 0.2, 0.05, 0.12, 0.03, 0.06, 0.02},
        0.4,
        0.03,
        6,
        0,
        {0.035, 0.6, 0.9, 0.1}};
    static constexpr Character saxophone = {
        {1, 0.9, 0.7, 0.55, 0.42, 0.34, 0.22, 0.17, 0.12, 0.08, 0.06, 0.04},
        0.7,
        0.06,
        15,
        0,
        {0.03, 0.7, 0.8, 0.12}};
    static constexpr Character trumpet = {
        {0.8, 1, 0.9, 0.75, 0.6, 0.45, 0.34, 0.25, 0.18, 0.12, 0.08, 0.05},
        0.9,
        0.02,
        8,
        0,
        {0.025, 0.4, 0.8, 0.09}};
    static constexpr Character violin = {
        {1, 0.62, 0.5, 0.38, 0.33, 0.2, 0.2, 0.14, 0.12, 0.09, 0.06, 0.05},
        0.5,
        0.035,
        20,
        0,
        {0.08, 1.0, 0.9, 0.18}};
    static constexpr Character harmonica = {
        {1, 0.8, 0.75, 0.55, 0.4, 0.32, 0.3, 0.2, 0.12, 0.1, 0.06, 0.04},
        0.5,
        0.05,
        12,
        4,
        {0.03, 0.5, 0.9, 0.09}};
    static constexpr Character accordion = {
        {1, 0.7, 0.6, 0.5, 0.38, 0.3, 0.24, 0.2, 0.14, 0.1, 0.08, 0.05},
        0.3,
        0.01,
        0,
        14,
        {0.03, 0.5, 0.95, 0.08}};
    static constexpr Character ocarina = {{1, 0.08, 0.05, 0.02}, 0.1, 0.06, 10, 0,
                                          {0.03, 0.5, 0.9, 0.1}};

    explicit Wind(const Character &character) : character_(character) {}

    void play(const Tone &tone, StereoLoop &loop) const override;

private:
    Character character_;
};

} // namespace demonstration_loops
