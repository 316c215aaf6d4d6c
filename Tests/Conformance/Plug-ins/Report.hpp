#pragma once

#include "Platform/Audio/AVAudioUnitComponent.hpp"
#include "Tests/Conformance/Plug-ins/Trial.hpp"

#include <filesystem>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace conformance
{

/// The table of all plug-ins, in a file for people (Markdown) and one for programs
/// (tab-separated). Both are complete after each entry. Any thread.
class Report
{
public:
    /// Files `plug-ins.md` and `plug-ins.tsv` in `folder`.
    Report(std::filesystem::path folder, const std::vector<AVAudioUnitComponent> &components,
           double seconds);

    void add(std::size_t component, const TrialResult &result);

    /// How many came to what, in a few lines.
    std::string summary() const;

    /// Whether every plug-in that the bare loop plays is played as well in both places,
    /// and the host lived through all of them.
    bool isClean() const;

private:
    void write() const;
    std::string describe(const AVAudioUnitComponent &component) const;
    std::size_t count(Result TrialResult::*place, Result result) const;

    const std::filesystem::path folder_;
    const std::vector<AVAudioUnitComponent> &components_;
    const double seconds_;
    mutable std::mutex mutex_;
    std::map<std::size_t, TrialResult> results_;
};

} // namespace conformance
