#include "Tests/Conformance/Plug-ins/Trial.hpp"

#include "Tests/Conformance/Plug-ins/Programme.hpp"
#include "Tests/Conformance/Plug-ins/Roles.hpp"
#include "Tests/Conformance/Plug-ins/SubProcess.hpp"
#include "Tests/Utilities/TemporaryFolder.hpp"

#include <fmt/format.h>

#include <cstring>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

namespace conformance
{

namespace
{

using Clock = std::chrono::steady_clock;

// The first argument of a process that plays a part.
constexpr std::string_view partArgument = "--part";

std::string lastLine(const std::filesystem::path &log)
{
    std::ifstream file(log);
    std::string last;
    for (std::string line; std::getline(file, line);)
        // What the host says of an effect that failed tells more than what follows.
        if (!line.empty() && !last.starts_with("The effect '"))
            last = line;
    return last;
}

/// How a performance went, or all of them together.
struct Outcome {
    Finding finding;
    /// The process that was to play died instead.
    bool died = false;
};

/// The performances of one plug-in, with what they have in common.
class Trial
{
public:
    Trial(const AVAudioUnitComponent &component, const TrialSettings &settings)
        : component_(component), settings_(settings)
    {
    }

    /// All lengths of block, each in a process of its own, so that what a plug-in keeps
    /// from one instance to the next is the same for all who play it.
    Outcome runAll(Role role) const
    {
        Outcome worst{{Verdict::same, {}}};
        std::string others;
        for (const std::uint32_t block : blockLengths) {
            Outcome outcome = run(role, block);
            if (outcome.finding.verdict == Verdict::same)
                continue;
            if (outcome.finding.verdict <= worst.finding.verdict) {
                others += fmt::format("{}{}", others.empty() ? "" : ", ", block);
                continue;
            }
            worst = std::move(outcome);
            // It would not be any better.
            if (worst.finding.verdict == Verdict::late || worst.finding.verdict == Verdict::refused)
                break;
        }
        if (!others.empty())
            worst.finding.reason +=
                fmt::format(" (something of the kind in blocks of {}, too)", others);
        return worst;
    }

    Outcome run(Role role, std::uint32_t block) const
    {
        const auto home = folder_.path() / "home";
        const auto log = folder_.path() / "log";
        std::filesystem::create_directories(home);
        const auto key = component_.audioComponentDescription();
        const Ending ending = runAgain(
            {std::string(partArgument), std::to_string(static_cast<int>(role)),
             component_.pluginURI(), std::to_string(key.componentType),
             std::to_string(key.componentSubType), std::to_string(key.componentManufacturer),
             std::to_string(key.componentFlags), std::to_string(block),
             fmt::format("{}", settings_.seconds), folder_.path().string()},
            home, log, settings_.patience, role == Role::bareLoopAgain);
        const Outcome outcome = outcomeOf(ending, log);
        std::filesystem::remove_all(home);
        std::filesystem::remove(log);
        return outcome;
    }

private:
    Outcome outcomeOf(const Ending &ending, const std::filesystem::path &log) const
    {
        if (ending.isLate)
            return {
                {Verdict::late, fmt::format("not done after {} s", settings_.patience.count())}};
        auto left = takeFinding(folder_.path());
        Outcome outcome;
        if (ending.signal != 0) {
            outcome.died = true;
            outcome.finding.reason = fmt::format("it crashed ({})", ::strsignal(ending.signal));
        } else if (left) {
            outcome.finding = std::move(*left);
        } else {
            outcome.died = true;
            outcome.finding.reason =
                fmt::format("it ended the program that held it, with code {}", ending.code);
        }
        const std::string said = lastLine(log);
        if (!said.empty() && (outcome.finding.verdict == Verdict::failed ||
                              outcome.finding.verdict == Verdict::refused))
            outcome.finding.reason += ": " + said;
        return outcome;
    }

    const AVAudioUnitComponent &component_;
    const TrialSettings &settings_;
    test::TemporaryFolder folder_;
};

Result resultOf(const Outcome &outcome)
{
    switch (outcome.finding.verdict) {
    case Verdict::same:
        return Result::exact;
    case Verdict::differs:
        return Result::differs;
    case Verdict::unmatched:
        return Result::unmatched;
    case Verdict::refused:
        return Result::refused;
    case Verdict::late:
        return Result::late;
    case Verdict::failed:
        break;
    }
    return Result::failed;
}

void addReason(std::string &reason, const char *who, const Finding &finding)
{
    if (finding.verdict == Verdict::same)
        return;
    if (!reason.empty())
        reason += ". ";
    reason += fmt::format("{}: {}", who, finding.reason);
}

} // namespace

const char *wordsFor(Result result)
{
    switch (result) {
    case Result::exact:
        return "plays exactly";
    case Result::varies:
        return "plays, never twice alike";
    case Result::differs:
        return "plays otherwise";
    case Result::unmatched:
        return "plays, unlike the bare loop";
    case Result::refused:
        return "cannot be used";
    case Result::failed:
        return "fails";
    case Result::late:
        return "takes too long";
    case Result::hostDied:
        return "takes the host along";
    }
    return "";
}

TrialResult tryPlugin(const AVAudioUnitComponent &component, const TrialSettings &settings)
{
    const auto begun = Clock::now();
    const Trial trial(component, settings);
    const auto bare = trial.runAll(Role::bareLoop);
    const auto own = trial.runAll(Role::ownProcess);
    const auto host = trial.runAll(Role::hostProcess);
    TrialResult result;
    result.playsInBareLoop = bare.finding.verdict == Verdict::same;
    result.ownProcess = own.died ? Result::hostDied : resultOf(own);
    result.hostProcess = resultOf(host);
    addReason(result.reason, "bare loop", bare.finding);
    addReason(result.reason, "own process", own.finding);
    addReason(result.reason, "host's process", host.finding);
    // Of what renders as the bare loop does it need not be asked whether it repeats itself.
    if (result.playsInBareLoop &&
        (result.ownProcess == Result::differs || result.hostProcess == Result::differs)) {
        const auto again = trial.runAll(Role::bareLoopAgain);
        addReason(result.reason, "bare loop, second time", again.finding);
        if (again.finding.verdict == Verdict::differs)
            for (Result *each : {&result.ownProcess, &result.hostProcess})
                if (*each == Result::differs)
                    *each = Result::varies;
    }
    result.seconds = std::chrono::duration<double>(Clock::now() - begun).count();
    return result;
}

std::optional<Overhead> tryOverhead(const AVAudioUnitComponent &component,
                                    const TrialSettings &settings)
{
    const auto outcome = Trial(component, settings).run(Role::overhead, overheadBlock);
    if (outcome.finding.verdict != Verdict::same)
        return std::nullopt;
    return Overhead::fromText(outcome.finding.reason);
}

bool playPart(int argc, char *const argv[])
{
    if (argc != 11 || argv[1] != partArgument)
        return false;
    const auto number = [&](int argument) {
        return static_cast<std::uint32_t>(std::stoul(argv[argument]));
    };
    const AVAudioUnitComponent component({number(4), number(5), number(6), number(7), 0}, argv[3]);
    play(static_cast<Role>(number(2)), component, number(8), std::stod(argv[9]), argv[10]);
    return true;
}

} // namespace conformance
