#include "Tests/Conformance/Plug-ins/Report.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <fstream>

namespace conformance
{

namespace
{

constexpr std::array results{Result::exact,   Result::varies, Result::differs, Result::unmatched,
                             Result::refused, Result::failed, Result::late,    Result::hostDied};

std::string code(std::uint32_t word)
{
    std::string text;
    for (int shift = 24; shift >= 0; shift -= 8) {
        const auto letter = static_cast<char>((word >> static_cast<unsigned>(shift)) & 0xFFU);
        text += std::isprint(static_cast<unsigned char>(letter)) != 0 ? letter : '?';
    }
    return text;
}

/// Fit for a cell of either table.
std::string cell(std::string text)
{
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c == '\t' || c == '\n' || c == '|'; }, ' ');
    return text;
}

bool plays(Result result)
{
    return result == Result::exact || result == Result::varies;
}

} // namespace

Report::Report(std::filesystem::path folder, const std::vector<AVAudioUnitComponent> &components,
               double seconds)
    : folder_(std::move(folder)), components_(components), seconds_(seconds)
{
    std::filesystem::create_directories(folder_);
}

void Report::add(std::size_t component, const TrialResult &result)
{
    const std::lock_guard lock(mutex_);
    results_[component] = result;
    write();
}

std::string Report::describe(const AVAudioUnitComponent &component) const
{
    const auto key = component.audioComponentDescription();
    return fmt::format("{} {} {}", code(key.componentType), code(key.componentSubType),
                       code(key.componentManufacturer));
}

std::size_t Report::count(Result TrialResult::*place, Result result) const
{
    return static_cast<std::size_t>(
        std::count_if(results_.begin(), results_.end(),
                      [&](const auto &entry) { return entry.second.*place == result; }));
}

void Report::write() const
{
    std::ofstream table(folder_ / "plug-ins.tsv");
    table << "plug-in\tdescription\town process\thost's process\treason\tseconds\n";
    std::ofstream page(folder_ / "plug-ins.md");
    page << "# Plug-ins of this machine in the host\n\n"
         << fmt::format("{} s of signal in blocks of 17, 64, 512, 2027 and 4096 frames, {} s in "
                        "blocks of one; compared with a bare loop, sample for sample.\n\n",
                        seconds_, seconds_ / 10)
         << "| plug-in | description | in a process of its own | in the host's process | reason |\n"
         << "|---|---|---|---|---|\n";
    for (const auto &[number, result] : results_) {
        const AVAudioUnitComponent &component = components_[number];
        const std::string row = fmt::format("{}\t{}\t{}\t{}\t{}", component.pluginURI(),
                                            describe(component), wordsFor(result.ownProcess),
                                            wordsFor(result.hostProcess), cell(result.reason));
        table << row << fmt::format("\t{:.1f}\n", result.seconds);
        page << fmt::format("| {} | {} | {} | {} | {} |\n", component.pluginURI(),
                            describe(component), wordsFor(result.ownProcess),
                            wordsFor(result.hostProcess), cell(result.reason));
    }
    page << '\n' << fmt::format("{} of {} plug-ins so far.\n", results_.size(), components_.size());
}

std::string Report::summary() const
{
    const std::lock_guard lock(mutex_);
    std::string text = fmt::format("{} plug-ins\n{:30}{:>16}{:>16}\n", results_.size(), "",
                                   "own process", "host's process");
    for (const Result result : results)
        text += fmt::format("{:30}{:>16}{:>16}\n", wordsFor(result),
                            count(&TrialResult::ownProcess, result),
                            count(&TrialResult::hostProcess, result));
    return text + fmt::format("The table is in {}.", folder_.string());
}

bool Report::isClean() const
{
    const std::lock_guard lock(mutex_);
    return std::all_of(results_.begin(), results_.end(), [](const auto &entry) {
        const TrialResult &result = entry.second;
        return result.ownProcess != Result::hostDied &&
               (!result.playsInBareLoop || (plays(result.ownProcess) && plays(result.hostProcess)));
    });
}

} // namespace conformance
