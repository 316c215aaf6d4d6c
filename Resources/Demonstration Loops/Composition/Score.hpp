#pragma once

#include "Resources/Demonstration Loops/Effects/Effects.hpp"
#include "Resources/Demonstration Loops/Effects/Reverb.hpp"
#include "Resources/Demonstration Loops/Instruments/Instrument.hpp"

#include <cmath>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace demonstration_loops
{

/// A note on the page.
struct Note {
    double beat;     ///< from the loop's start
    double length;   ///< in beats
    double pitch;    ///< MIDI key number, or a `Drum`
    double velocity; ///< 0 to 1
};

/// What one instrument plays, and its place in the mix.
struct Part {
    std::unique_ptr<Instrument> instrument;
    std::vector<Note> notes;
    double level;                     ///< LU relative to the loudest part
    double pan = 0.0;                 ///< -1 left to 1 right
    double room = 0.15;               ///< share sent to the room
    double echo = 0.0;                ///< share sent to the echo
    std::vector<Effect> effects = {}; ///< in order
};

/// A whole piece.
struct Score {
    std::string title;
    double tempo; ///< beats a minute
    double beats;
    Room room = studio;
    double echoBeats = 0.75;
    double echoFeedback = 0.45;
    std::vector<Part> parts = {};

    /// Frames of an AAC packet.
    static constexpr double packet = 1024.0;

    /// Length in frames: the whole number of packets next to the tempo's own
    /// length. The tempo gives way by less than 0.3 %, and the seam falls between
    /// two packets like any other border.
    [[nodiscard]] std::size_t frames() const
    {
        const double exact = beats * 60.0 / tempo * sampleRate;
        return static_cast<std::size_t>(std::round(exact / packet) * packet);
    }
};

} // namespace demonstration_loops
