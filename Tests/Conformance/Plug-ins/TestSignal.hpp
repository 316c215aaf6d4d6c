#pragma once

#include "Tests/Utilities/Channels.hpp"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace conformance
{

/// What every plug-in hears: rising tones, noise, clicks and silence in turn, at
/// levels between -60 dB and -6 dB, another in each channel. The same each time.
test::Channels testSignal(std::size_t channels, std::size_t frames, double sampleRate);

/// A MIDI message at a frame of the signal.
struct Note {
    std::int64_t frame;
    std::array<std::uint8_t, 3> bytes;
};

/// What every plug-in that takes MIDI gets: notes of a scale that overlap, at frames
/// that fall anywhere in a block, with controllers and the pitch wheel between them.
/// Ordered by frame.
std::vector<Note> testNotes(std::size_t frames, double sampleRate);

} // namespace conformance
