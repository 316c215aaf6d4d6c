#include "Tests/Conformance/Plug-ins/Roles.hpp"

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

MakePerformer performerFor(Role role, const Stage &stage)
{
    if (role == Role::ownProcess || role == Role::hostProcess)
        return [&stage, role] {
            return std::make_unique<EnginePerformer>(
                stage.component, role == Role::ownProcess ? Place::ownProcess : Place::hostProcess,
                stage.folder);
        };
    return [&stage] {
        return std::make_unique<BareLoop>(stage.world, stage.component.pluginURI(), firstRate,
                                          firstMostFrames);
    };
}

Finding performWith(const MakePerformer &make, bool isFirst, std::uint32_t block,
                    const Stage &stage)
{
    const auto path = stage.folder / fmt::format("transcript-{}", block);
    if (isFirst) {
        const auto unfinished = stage.folder / "transcript";
        TranscriptWriter writer(unfinished);
        perform(make, block, stage.seconds, writer);
        writer.close();
        std::filesystem::rename(unfinished, path);
        return {Verdict::same, {}};
    }
    if (!std::filesystem::exists(path)) {
        TranscriptWriter nowhere("/dev/null");
        perform(make, block, stage.seconds, nowhere);
        return {Verdict::unmatched, "it plays, but there is nothing to compare with"};
    }
    TranscriptComparison comparison(path);
    perform(make, block, stage.seconds, comparison);
    if (const auto difference = comparison.difference())
        return {Verdict::differs, *difference};
    return {Verdict::same, {}};
}

Finding performed(Role role, std::uint32_t block, const Stage &stage)
{
    try {
        if (role == Role::overhead)
            return {Verdict::same,
                    measuredOverhead(stage.world, stage.component, stage.seconds).text()};
        return performWith(performerFor(role, stage), role == Role::bareLoop, block, stage);
    } catch (const Refusal &refusal) {
        return {Verdict::refused, refusal.what()};
    } catch (const std::exception &error) {
        return {Verdict::failed, error.what()};
    }
}

} // namespace

void play(Role role, std::uint32_t block, const Stage &stage)
{
    const Finding finding = performed(role, block, stage);
    std::ofstream(stage.folder / findingFile) << static_cast<int>(finding.verdict) << '\n'
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
