#pragma once

#include "Resources/Demonstration Loops/Audio/Envelope.hpp"
#include "Resources/Demonstration Loops/Instruments/Instrument.hpp"

namespace demonstration_loops
{

/// A subtractive synthesizer: a choir of detuned saws or pulses spread over the
/// stereo field, a resonant low pass with its own envelope, vibrato that comes
/// in late. Pads, plucks, basses, leads, brass and the string ensemble are its
/// characters.
class Synthesizer : public Instrument
{
public:
    struct Character {
        int voices;       ///< oscillators a note
        double detune;    ///< cents between the outermost ones
        double width;     ///< 0 mono to 1 wide
        double pulse;     ///< 0 saw, else the pulse's width
        double sub;       ///< level of a sine one octave below
        double cutoff;    ///< multiple of the note's frequency
        double sweep;     ///< octaves that the filter's envelope opens at full velocity
        double resonance; ///< q
        double vibrato;   ///< cents
        EnvelopeShape level;
        EnvelopeShape filter;
    };

    static constexpr Character pad = {
        5, 16, 0.9, 0.0, 0.15, 3.0, 1.6, 0.7, 4, {0.5, 2.0, 0.8, 1.6}, {1.2, 3.0, 0.5, 1.5}};
    static constexpr Character strings = {
        6, 18, 0.9, 0.0, 0.0, 7.0, 0.8, 0.6, 11, {0.18, 1.0, 0.9, 0.55}, {0.3, 2.0, 0.7, 0.5}};
    static constexpr Character shortStrings = {
        6, 18, 0.8, 0.0, 0.0, 7.0, 1.0, 0.6, 4, {0.03, 0.6, 0.6, 0.3}, {0.02, 0.5, 0.5, 0.3}};
    static constexpr Character brass = {
        3, 9, 0.5, 0.0, 0.0, 2.0, 2.4, 0.8, 6, {0.035, 0.6, 0.8, 0.15}, {0.07, 0.8, 0.55, 0.15}};
    static constexpr Character pluck = {
        2, 8, 0.5, 0.0, 0.0, 1.6, 3.6, 1.4, 0, {0.002, 1.1, 0.0, 0.4}, {0.001, 0.5, 0.0, 0.3}};
    static constexpr Character squarePluck = {
        2, 5, 0.4, 0.5, 0.0, 2.0, 2.8, 1.1, 0, {0.002, 0.9, 0.0, 0.3}, {0.001, 0.6, 0.0, 0.3}};
    static constexpr Character bass = {
        2, 6, 0.0, 0.0, 0.5, 2.0, 2.4, 1.2, 0, {0.004, 1.2, 0.6, 0.08}, {0.002, 0.5, 0.1, 0.1}};
    static constexpr Character acidBass = {
        1, 0, 0.0, 0.0, 0.0, 2.2, 3.6, 5.5, 0, {0.003, 0.9, 0.5, 0.06}, {0.002, 0.45, 0.0, 0.05}};
    static constexpr Character subBass = {
        1, 0, 0.0, 0.5, 1.2, 1.4, 0.7, 0.7, 0, {0.006, 2.0, 0.8, 0.1}, {0.004, 0.6, 0.2, 0.1}};
    static constexpr Character lead = {
        2, 7, 0.3, 0.0, 0.0, 4.0, 1.6, 1.6, 14, {0.012, 0.9, 0.75, 0.18}, {0.02, 0.9, 0.5, 0.2}};
    static constexpr Character hollowLead = {
        2, 5, 0.3, 0.32, 0.1, 3.5, 1.2, 1.2, 16, {0.02, 0.8, 0.8, 0.2}, {0.02, 0.8, 0.6, 0.2}};
    static constexpr Character stab = {
        7, 24, 1.0, 0.0, 0.1, 2.5, 2.6, 0.9, 0, {0.003, 0.9, 0.25, 0.2}, {0.002, 0.6, 0.15, 0.2}};

    explicit Synthesizer(const Character &character) : character_(character) {}

    void play(const Tone &tone, StereoLoop &loop) const override;

private:
    Character character_;
};

} // namespace demonstration_loops
