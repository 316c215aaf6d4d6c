#pragma once

#include "Platform/Audio/AVAudioUnitComponent.hpp"
#include "Tests/Conformance/Plug-ins/Trial.hpp"

#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace conformance
{

/// The table of all plug-ins, in a file for people (Markdown) and one for programs
/// (tab-separated). Both are complete after each entry.
class Report
{
public:
    /// Files `plug-ins.md` and `plug-ins.tsv` in `folder`, for trials with `seconds` of
    /// signal.
    Report(std::filesystem::path folder, const std::vector<AVAudioUnitComponent> &components,
           double seconds);

    /// Takes over from the files what played as it should, with as much signal.
    void resume();
    /// Whether there is a result for that component.
    bool has(std::size_t component) const { return results_.contains(component); }

    void add(std::size_t component, const TrialResult &result);

    /// How many came to what, in a few lines.
    std::string summary() const;

    /// Whether every plug-in that the bare loop plays is played as well in both places,
    /// and the host lived through all of them.
    bool isClean() const;

private:
    void write() const;
    std::string totals() const;
    std::string namedFor(const AVAudioUnitComponent &component) const;
    std::size_t count(const std::function<bool(const TrialResult &)> &isCounted) const;

    const std::filesystem::path folder_;
    const std::vector<AVAudioUnitComponent> &components_;
    const double seconds_;
    std::map<std::size_t, TrialResult> results_;
};

} // namespace conformance
