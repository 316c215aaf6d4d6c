#pragma once

#include "Resources/Demonstration Loops/Composition/Sketch.hpp"
#include "Resources/Demonstration Loops/Instruments/DrumKit.hpp"

#include <initializer_list>
#include <string_view>
#include <vector>

namespace demonstration_loops
{

/// One entry of a pattern on a grid.
struct Step {
    double beat;
    double length; ///< to the end of the ties behind it
    char mark;
};

/// Reads a pattern such as "x--x..o.": '.' rests, '-' holds what is before,
/// every other character is an entry; blanks and '|' are for the eye. The
/// pattern repeats until `beats` are full.
std::vector<Step> readSteps(std::string_view pattern, double stepsPerBeat, double beats);

/// Loudness of a mark: 'X' accented, 'o' soft, else as usual.
double velocityOf(char mark);

/// Chords in a rhythm. `strum` is the time in beats from the first string to the
/// last; 'u' in the pattern strums upwards.
std::vector<Note> comp(Sketch &sketch, std::string_view pattern, double stepsPerBeat,
                       const Register &where, double strum = 0.0);

/// Broken chords: digits count the voicing's notes from below, past the top one
/// they go on an octave higher. Notes ring for `ring` beats if that is not zero.
std::vector<Note> arpeggio(Sketch &sketch, std::string_view pattern, double stepsPerBeat,
                           const Register &where, double ring = 0.0);

/// A bass line: '1' the chord's bass, '3', '5', '6', '7' its degrees, '8' the
/// octave, 'a' and 'A' a semitone under and over the next chord's bass.
std::vector<Note> bassLine(Sketch &sketch, std::string_view pattern, double stepsPerBeat, int low);

/// One drum and its rhythm.
struct DrumLine {
    Drum drum;
    std::string_view pattern;
};

/// A drum part of several lines on one grid.
std::vector<Note> drums(Sketch &sketch, std::initializer_list<DrumLine> lines, double stepsPerBeat);

/// A line for the rhythm given, made of a motif, its repetitions and answers:
/// chord tones on the beat, scale steps between, leaps filled by steps back.
std::vector<Note> melody(Sketch &sketch, std::string_view pattern, double stepsPerBeat, int low,
                         int high);

} // namespace demonstration_loops
