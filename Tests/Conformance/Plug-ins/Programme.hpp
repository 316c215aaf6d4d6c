#pragma once

#include "Tests/Conformance/Plug-ins/Performer.hpp"
#include "Tests/Conformance/Plug-ins/Transcript.hpp"

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

/// Plays what every plug-in has to play. In each length of block an instance of its
/// own renders `seconds` of signal and notes at 48 kHz (a tenth of it where a block is
/// one frame), another preset from half-way on; then, its state kept, a tenth of that
/// at 44.1 and at 96 kHz.
void perform(const MakePerformer &make, double seconds, Transcript &transcript);

} // namespace conformance
