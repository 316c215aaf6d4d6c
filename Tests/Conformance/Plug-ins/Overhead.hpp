#pragma once

#include "Platform/Audio/AVAudioUnitComponent.hpp"
#include "Tests/Conformance/Plug-ins/BareLoop.hpp"

#include <cstdint>
#include <string>

namespace conformance
{

/// The length of block that overhead is measured in.
inline constexpr std::uint32_t overheadBlock = 64;

/// What a block of 64 frames costs, in nanoseconds of processor time.
struct Overhead {
    double bareLoop = 0;
    double hostProcess = 0;
    /// Host and effect together.
    double ownProcess = 0;
    /// Medians of the ratios to the bare loop, round by round.
    double hostProcessRatio = 0;
    double ownProcessRatio = 0;

    std::string text() const;
    static Overhead fromText(const std::string &text);
};

/// Lets the bare loop and the engine in both places render the same signal in turns.
/// Both have it in memory: a file would have to be decoded.
Overhead measuredOverhead(const BareWorld &world, const AVAudioUnitComponent &component,
                          double seconds);

} // namespace conformance
