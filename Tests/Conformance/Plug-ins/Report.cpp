#include "Tests/Conformance/Plug-ins/Report.hpp"

#include <fmt/format.h>

#include <cctype>
#include <fstream>
#include <utility>

namespace conformance
{

namespace
{

constexpr const char *tableFile = "plug-ins.tsv";
constexpr const char *pageFile = "plug-ins.md";

std::string code(std::uint32_t word)
{
    std::string text;
    for (int shift = 24; shift >= 0; shift -= 8) {
        const auto letter = static_cast<char>((word >> static_cast<unsigned>(shift)) & 0xFFU);
        text += std::isprint(static_cast<unsigned char>(letter)) != 0 ? letter : '?';
    }
    return text;
}

std::string describe(const AVAudioUnitComponent &component)
{
    const auto key = component.audioComponentDescription();
    return fmt::format("{} {} {}", code(key.componentType), code(key.componentSubType),
                       code(key.componentManufacturer));
}

/// Whether it makes sound, as the bare loop does or not.
bool isHosted(const TrialResult &result)
{
    return plays(result.ownProcess) || result.ownProcess == Result::differs ||
           result.ownProcess == Result::unmatched;
}

/// Whether the bare loop plays it twice alike, as far as anybody has found.
bool isDeterministic(const TrialResult &result)
{
    return result.playsInBareLoop && result.ownProcess != Result::varies &&
           result.hostProcess != Result::varies;
}

} // namespace

Report::Report(std::filesystem::path folder, const std::vector<AVAudioUnitComponent> &components,
               double seconds)
    : folder_(std::move(folder)), components_(components), seconds_(seconds)
{
    std::filesystem::create_directories(folder_);
}

// A row is named for its plug-in and the signal; what follows is the result.
std::string Report::namedFor(const AVAudioUnitComponent &component) const
{
    return fmt::format("{}\t{}\t{}\t", component.pluginURI(), describe(component), seconds_);
}

void Report::resume()
{
    std::map<std::string, std::size_t> numbers;
    for (std::size_t number = 0; number < components_.size(); ++number)
        numbers[namedFor(components_[number])] = number;
    std::ifstream table(folder_ / tableFile);
    for (std::string row; std::getline(table, row);)
        for (const auto &[name, number] : numbers) {
            if (!row.starts_with(name))
                continue;
            const auto result = TrialResult::fromText(row.substr(name.size()));
            if (result && result->playsInBareLoop && plays(result->ownProcess) &&
                plays(result->hostProcess))
                results_[number] = *result;
        }
}

void Report::add(std::size_t component, const TrialResult &result)
{
    results_[component] = result;
    write();
}

std::size_t Report::count(const std::function<bool(const TrialResult &)> &isCounted) const
{
    std::size_t number = 0;
    for (const auto &[component, result] : results_)
        number += isCounted(result) ? 1 : 0;
    return number;
}

void Report::write() const
{
    std::ofstream table(folder_ / tableFile);
    table << "plug-in\tdescription\tseconds of signal\t" << TrialResult::columns << '\n';
    std::ofstream page(folder_ / pageFile);
    page << "# Plug-ins of this machine in the host\n\n"
         << fmt::format("{} s of signal in blocks of 17, 64, 512, 2027 and 4096 frames, {} s in "
                        "blocks of one; compared with a bare loop, sample for sample.\n\n{}\n",
                        seconds_, seconds_ / 10, totals())
         << "| plug-in | description | in a process of its own | in the host's process | reason |\n"
         << "|---|---|---|---|---|\n";
    for (const auto &[number, result] : results_) {
        const AVAudioUnitComponent &component = components_[number];
        table << namedFor(component) << result.text() << '\n';
        page << fmt::format("| {} | {} | {} | {} | {} |\n", component.pluginURI(),
                            describe(component), wordsFor(result.ownProcess),
                            wordsFor(result.hostProcess), result.reason);
    }
}

std::string Report::totals() const
{
    const std::size_t deterministic = count(isDeterministic);
    const std::size_t identical = count([](const TrialResult &result) {
        return isDeterministic(result) && result.ownProcess == Result::exact &&
               result.hostProcess == Result::exact;
    });
    return fmt::format("- tried: {} of {}\n"
                       "- played by the host, in a process of their own: {}\n"
                       "- played by the bare loop: {}\n"
                       "- identical to the bare loop in every sample and byte, in both places: {} "
                       "of the {} that it plays twice alike\n"
                       "- that took the host along: {}\n",
                       results_.size(), components_.size(), count(isHosted),
                       count([](const TrialResult &result) { return result.playsInBareLoop; }),
                       identical, deterministic, count([](const TrialResult &result) {
                           return result.ownProcess == Result::hostDied;
                       }));
}

std::string Report::summary() const
{
    std::string text;
    for (const auto &[number, result] : results_)
        if (result.ownProcess != Result::exact || result.hostProcess != Result::exact)
            text += fmt::format("{}\t{}\t{}\t{}\n", components_[number].pluginURI(),
                                wordsFor(result.ownProcess), wordsFor(result.hostProcess),
                                result.reason);
    return fmt::format(
        "\nAll but those that play exactly in both places:\n{}\n{}The table is in {}.", text,
        totals(), folder_.string());
}

bool Report::isClean() const
{
    return count([](const TrialResult &result) {
               return result.ownProcess == Result::hostDied ||
                      (result.playsInBareLoop &&
                       !(plays(result.ownProcess) && plays(result.hostProcess)));
           }) == 0;
}

} // namespace conformance
