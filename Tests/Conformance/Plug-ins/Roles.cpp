#include "Tests/Conformance/Plug-ins/Roles.hpp"

#include "Tests/Conformance/Plug-ins/BareLoop.hpp"
#include "Tests/Conformance/Plug-ins/EnginePerformer.hpp"
#include "Tests/Conformance/Plug-ins/Overhead.hpp"
#include "Tests/Conformance/Plug-ins/Programme.hpp"

#include <array>
#include <exception>
#include <fstream>
#include <iterator>
#include <optional>
#include <utility>

namespace conformance
{

namespace
{

constexpr std::array<const char *, 5> fileNames{"bare-loop", "bare-loop-again", "own-process",
                                                "host-process", "overhead"};

std::filesystem::path findingFile(Role role, const std::filesystem::path &folder)
{
    return folder / (std::string(fileNames[static_cast<std::size_t>(role)]) + ".finding");
}

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

std::optional<std::string> performWith(const MakePerformer &make, bool isFirst, double seconds,
                                       const std::filesystem::path &folder)
{
    const auto path = folder / "transcript";
    if (isFirst) {
        const auto unfinished = folder / "transcript.part";
        TranscriptWriter writer(unfinished);
        perform(make, seconds, writer);
        writer.close();
        std::filesystem::rename(unfinished, path);
        return std::nullopt;
    }
    if (!std::filesystem::exists(path)) {
        TranscriptWriter nowhere("/dev/null");
        perform(make, seconds, nowhere);
        return "there is nothing to compare with";
    }
    TranscriptComparison comparison(path);
    perform(make, seconds, comparison);
    return comparison.difference();
}

Finding performed(Role role, const AVAudioUnitComponent &component, double seconds,
                  const std::filesystem::path &folder)
{
    try {
        if (role == Role::overhead)
            return {Verdict::same, measuredOverhead(component, seconds).text()};
        const auto difference = performWith(performerFor(role, component, folder),
                                            role == Role::bareLoop, seconds, folder);
        if (difference)
            return {Verdict::differs, *difference};
        return {Verdict::same, {}};
    } catch (const Refusal &refusal) {
        return {Verdict::refused, refusal.what()};
    } catch (const std::exception &error) {
        return {Verdict::failed, error.what()};
    }
}

} // namespace

void play(Role role, const AVAudioUnitComponent &component, double seconds,
          const std::filesystem::path &folder)
{
    const Finding finding = performed(role, component, seconds, folder);
    std::ofstream(findingFile(role, folder)) << static_cast<int>(finding.verdict) << '\n'
                                             << finding.reason;
}

bool takeFinding(Role role, const std::filesystem::path &folder, Finding &finding)
{
    std::ifstream file(findingFile(role, folder));
    int verdict = 0;
    if (!(file >> verdict))
        return false;
    file.ignore();
    finding.verdict = static_cast<Verdict>(verdict);
    finding.reason.assign(std::istreambuf_iterator<char>(file), {});
    return true;
}

} // namespace conformance
