#pragma once

#include "Tests/Conformance/Plug-ins/Performer.hpp"
#include "Tests/Conformance/Plug-ins/Transcript.hpp"

#include <array>
#include <cstdint>
#include <functional>
#include <memory>

namespace conformance
{

/// The rate and the longest block that an effect is instantiated for before anybody
/// knows what it is connected to; what the bare loop tells it, too.
inline constexpr double firstRate = 48000.0;
inline constexpr std::uint32_t firstMostFrames = 4096;

/// Makes an instance to perform with.
using MakePerformer = std::function<std::unique_ptr<Performer>()>;

/// The lengths of block that every plug-in has to play in.
inline constexpr std::array<std::uint32_t, 6> blockLengths{1, 17, 64, 512, 2027, 4096};

/// Plays what every plug-in has to play, in blocks of `block` frames: `seconds` of
/// signal and notes at 48 kHz (a tenth of it where a block is one frame), another preset
/// from half-way on; then, its state kept, a tenth of that at 44.1 and at 96 kHz.
void perform(const MakePerformer &make, std::uint32_t block, double seconds,
             Transcript &transcript);

} // namespace conformance
