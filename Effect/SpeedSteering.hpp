#pragma once

#include "Platform/Foundation/Realtime.hpp"

#include <array>
#include <cstddef>
#include <cstdint>

namespace effect
{

/// Works out the speed setting (0 at rest, 1 slow, 2 fast) from the parameter and
/// from MIDI on any channel:
/// - the modulation wheel (controller 1) leads from the parameter to the opposite
///   speed: to fast from below 1.5, to slow from there on;
/// - the sustain pedal (controller 64, down from 64) swaps the ends of that way
///   while it is held, so that a pedal alone changes between slow and fast;
/// - a held note rules over both: C2 (36) is slow, C5 (72) fast, the notes between
///   are equal steps, those below brake to rest, those above are fast. The latest
///   of several held notes counts; with the last one released the speed returns.
///   Velocity means nothing, save that 0 is a release;
/// - "all notes off", "all sound off" and the mode messages (120, 123 to 127)
///   release the notes; "reset all controllers" (121) the wheel and the pedal; a
///   system reset (0xFF) both.
class SpeedSteering
{
public:
    /// The setting for a held note.
    static float positionOf(std::uint8_t note);

    REALTIME void setParameter(float position) { parameter_ = position; }
    /// Forgets controllers and notes.
    REALTIME void reset();
    /// Takes one message; what is cut short or means nothing here is passed over.
    REALTIME void receive(const std::uint8_t *message, std::size_t size);
    /// The setting now.
    REALTIME float position() const;

private:
    REALTIME void press(std::uint8_t note);
    REALTIME void release(std::uint8_t note);
    REALTIME void control(std::uint8_t controller, std::uint8_t value);

    static constexpr std::size_t noteCount = 128;

    float parameter_ = 1;
    float wheel_ = 0;
    bool pedal_ = false;
    /// In the order of their pressing, none twice.
    std::array<std::uint8_t, noteCount> held_{};
    std::size_t heldCount_ = 0;
};

} // namespace effect
