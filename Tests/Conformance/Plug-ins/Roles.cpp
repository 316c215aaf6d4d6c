#include "Tests/Conformance/Plug-ins/Roles.hpp"

#include "Tests/Conformance/Plug-ins/BareLoop.hpp"
#include "Tests/Conformance/Plug-ins/EnginePerformer.hpp"
#include "Tests/Conformance/Plug-ins/Overhead.hpp"
#include "Tests/Conformance/Plug-ins/Programme.hpp"

#include <fmt/format.h>

#include <exception>
#include <fstream>
#include <iterator>
#include <optional>
#include <utility>

namespace conformance
{

namespace
{

constexpr const char *findingFile = "finding";

MakePerformer performerFor(Role role, const AVAudioUnitComponent &component,
                           const std::filesystem::path &folder)
{
    if (role == Role::ownProcess || role == Role::hostProcess)
        return [&component, folder, role] {
            return std::make_unique<EnginePerformer>(
                component, role == Role::ownProcess ? Place::ownProcess : Place::hostProcess,
                folder);
        };
    return [&component] {
        return std::make_unique<BareLoop>(component.pluginURI(), firstRate, firstMostFrames);
    };
}

Finding performWith(const MakePerformer &make, bool isFirst, std::uint32_t block, double seconds,
                    const std::filesystem::path &folder)
{
    const auto path = folder / fmt::format("transcript-{}", block);
    if (isFirst) {
        const auto unfinished = folder / "transcript";
        TranscriptWriter writer(unfinished);
        perform(make, block, seconds, writer);
        writer.close();
        std::filesystem::rename(unfinished, path);
        return {Verdict::same, {}};
    }
    if (!std::filesystem::exists(path)) {
        TranscriptWriter nowhere("/dev/null");
        perform(make, block, seconds, nowhere);
        return {Verdict::unmatched, "it plays, but there is nothing to compare with"};
    }
    TranscriptComparison comparison(path);
    perform(make, block, seconds, comparison);
    if (const auto difference = comparison.difference())
        return {Verdict::differs, *difference};
    return {Verdict::same, {}};
}

Finding performed(Role role, const AVAudioUnitComponent &component, std::uint32_t block,
                  double seconds, const std::filesystem::path &folder)
{
    try {
        if (role == Role::overhead)
            return {Verdict::same, measuredOverhead(component, seconds).text()};
        return performWith(performerFor(role, component, folder), role == Role::bareLoop, block,
                           seconds, folder);
    } catch (const Refusal &refusal) {
        return {Verdict::refused, refusal.what()};
    } catch (const std::exception &error) {
        return {Verdict::failed, error.what()};
    }
}

} // namespace

void play(Role role, const AVAudioUnitComponent &component, std::uint32_t block, double seconds,
          const std::filesystem::path &folder)
{
    const Finding finding = performed(role, component, block, seconds, folder);
    std::ofstream(folder / findingFile) << static_cast<int>(finding.verdict) << '\n'
                                        << finding.reason;
}

std::optional<Finding> takeFinding(const std::filesystem::path &folder)
{
    const auto path = folder / findingFile;
    std::ifstream file(path);
    int verdict = 0;
    if (!(file >> verdict))
        return std::nullopt;
    file.ignore();
    Finding finding{static_cast<Verdict>(verdict), {}};
    finding.reason.assign(std::istreambuf_iterator<char>(file), {});
    std::filesystem::remove(path);
    return finding;
}

} // namespace conformance
