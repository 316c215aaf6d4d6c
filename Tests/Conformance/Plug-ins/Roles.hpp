#pragma once

#include "Platform/Audio/AVAudioUnitComponent.hpp"
#include "Tests/Conformance/Plug-ins/BareLoop.hpp"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace conformance
{

/// Who plays a plug-in, each time in a process of its own.
enum class Role {
    bareLoop,      ///< writes the transcript that the others are compared with
    bareLoopAgain, ///< finds out whether the plug-in repeats itself
    ownProcess,    ///< the engine, with the effect in a process of its own
    hostProcess,   ///< the engine, with the effect in its own process
    overhead       ///< measures what both places cost beside the bare loop
};

/// How a performance went.
enum class Verdict {
    same,
    differs,
    unmatched, ///< it plays, but there is nothing to compare with
    refused,
    failed,
    late
};

struct Finding {
    Verdict verdict = Verdict::failed;
    std::string reason;
};

/// What there is to play, and with what.
struct Stage {
    const BareWorld &world;
    const AVAudioUnitComponent &component;
    double seconds; ///< of signal
    /// Where the transcripts and the finding are.
    std::filesystem::path folder;
};

/// Plays the role in this process, in blocks of `block` frames, and leaves the finding.
void play(Role role, std::uint32_t block, const Stage &stage);

/// Takes the finding out of the folder; none when nobody got so far as to leave one.
std::optional<Finding> takeFinding(const std::filesystem::path &folder);

} // namespace conformance
