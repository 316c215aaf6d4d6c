#pragma once

#include "Platform/Audio/AVAudioUnitComponent.hpp"
#include "Tests/Conformance/Plug-ins/BareLoop.hpp"
#include "Tests/Conformance/Plug-ins/Overhead.hpp"

#include <chrono>
#include <filesystem>
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

/// Whether it plays, and as in the bare loop where that can be said.
bool plays(Result result);

struct TrialResult {
    Result ownProcess = Result::failed;
    Result hostProcess = Result::failed;
    /// Whether the bare loop can play it.
    bool playsInBareLoop = false;
    std::string reason;
    double seconds = 0; ///< that the trial took

    /// As columns of a table, tabs between them.
    std::string text() const;
    /// None when the text is no such columns.
    static std::optional<TrialResult> fromText(const std::string &text);
    /// What the columns are called.
    static constexpr const char *columns =
        "bare loop\town process\thost's process\treason\tseconds";
};

struct TrialSettings {
    /// Of signal in each length of block.
    double seconds = 10;
    /// For each performance.
    std::chrono::seconds patience{300};
};

/// Has the plug-in played by bare loop and engine, each length of block in a process of
/// its own. What is needed meanwhile stands in `folder`, which is gone afterwards.
TrialResult tryPlugin(const BareWorld &world, const AVAudioUnitComponent &component,
                      const TrialSettings &settings, const std::filesystem::path &folder);

/// Has its overhead measured; none where it cannot be.
std::optional<Overhead> tryOverhead(const BareWorld &world, const AVAudioUnitComponent &component,
                                    const TrialSettings &settings,
                                    const std::filesystem::path &folder);

} // namespace conformance
