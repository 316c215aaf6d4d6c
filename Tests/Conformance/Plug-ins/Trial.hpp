#pragma once

#include "Platform/Audio/AVAudioUnitComponent.hpp"
#include "Tests/Conformance/Plug-ins/Overhead.hpp"

#include <chrono>
#include <optional>
#include <string>

namespace conformance
{

/// What came of a plug-in in one place.
enum class Result {
    exact,     ///< every sample and MIDI byte as in the bare loop
    varies,    ///< it plays, but the bare loop itself never renders the same twice
    differs,   ///< it plays otherwise than in the bare loop, which repeats itself
    unmatched, ///< it plays, but the bare loop does not
    refused,   ///< it cannot be had, and says why
    failed,    ///< it crashed or broke off
    late,      ///< it was not done in time
    hostDied,  ///< it took the host along from a process of its own
};

/// In words that a person understands.
const char *wordsFor(Result result);

struct TrialResult {
    Result ownProcess = Result::failed;
    Result hostProcess = Result::failed;
    /// Whether the bare loop can play it.
    bool playsInBareLoop = false;
    std::string reason;
    double seconds = 0; ///< that the trial took
};

struct TrialSettings {
    /// Of signal in each length of block.
    double seconds = 10;
    /// For each performance.
    std::chrono::seconds patience{900};
};

/// Has the plug-in played by bare loop and engine.
TrialResult tryPlugin(const AVAudioUnitComponent &component, const TrialSettings &settings);

/// Has its overhead measured; none where it cannot be.
std::optional<Overhead> tryOverhead(const AVAudioUnitComponent &component,
                                    const TrialSettings &settings);

/// What a process that a trial started is to do, from its arguments; false when it was
/// not started by one.
bool playPart(int argc, char *const argv[]);

} // namespace conformance
