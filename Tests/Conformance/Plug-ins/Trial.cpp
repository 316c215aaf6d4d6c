#include "Tests/Conformance/Plug-ins/Trial.hpp"

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

/// The performances of one plug-in, with what they have in common.
class Trial
{
public:
    Trial(const AVAudioUnitComponent &component, const TrialSettings &settings)
        : component_(component), settings_(settings)
    {
    }

    struct Outcome {
        Finding finding;
        /// The process that was to play died instead.
        bool died = false;
    };

    Outcome run(Role role) const
    {
        const std::string number = std::to_string(static_cast<int>(role));
        const auto home = folder_.path() / ("home-" + number);
        const auto log = folder_.path() / ("log-" + number);
        std::filesystem::create_directories(home);
        const auto key = component_.audioComponentDescription();
        const Ending ending =
            runAgain({std::string(partArgument), number, component_.pluginURI(),
                      std::to_string(key.componentType), std::to_string(key.componentSubType),
                      std::to_string(key.componentManufacturer), std::to_string(key.componentFlags),
                      fmt::format("{}", settings_.seconds), folder_.path().string()},
                     home, log, settings_.patience);
        std::filesystem::remove_all(home);
        Outcome outcome;
        if (ending.isLate) {
            outcome.finding = {Verdict::late,
                               fmt::format("not done after {} s", settings_.patience.count())};
        } else if (ending.signal != 0) {
            outcome.died = true;
            outcome.finding = {Verdict::failed,
                               fmt::format("it crashed ({})", ::strsignal(ending.signal))};
        } else if (!takeFinding(role, folder_.path(), outcome.finding)) {
            outcome.died = true;
            outcome.finding = {Verdict::failed, fmt::format("it ended the program that held it, "
                                                            "with code {}",
                                                            ending.code)};
        }
        if (outcome.finding.verdict == Verdict::failed)
            if (const std::string said = lastLine(log); !said.empty())
                outcome.finding.reason += ": " + said;
        return outcome;
    }

private:
    const AVAudioUnitComponent &component_;
    const TrialSettings &settings_;
    test::TemporaryFolder folder_;
};

Result resultOf(const Trial::Outcome &outcome)
{
    switch (outcome.finding.verdict) {
    case Verdict::same:
        return Result::exact;
    case Verdict::differs:
        return Result::differs;
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
    const auto bare = trial.run(Role::bareLoop);
    const auto own = trial.run(Role::ownProcess);
    const auto host = trial.run(Role::hostProcess);
    TrialResult result;
    result.playsInBareLoop = bare.finding.verdict == Verdict::same;
    result.ownProcess = own.died ? Result::hostDied : resultOf(own);
    result.hostProcess = resultOf(host);
    addReason(result.reason, "bare loop", bare.finding);
    addReason(result.reason, "own process", own.finding);
    addReason(result.reason, "host's process", host.finding);
    // What renders as the bare loop does need not be asked whether it could otherwise.
    if (result.playsInBareLoop &&
        (result.ownProcess == Result::differs || result.hostProcess == Result::differs)) {
        const auto again = trial.run(Role::bareLoopAgain);
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
    const auto outcome = Trial(component, settings).run(Role::overhead);
    if (outcome.finding.verdict != Verdict::same)
        return std::nullopt;
    return Overhead::fromText(outcome.finding.reason);
}

bool playPart(int argc, char *const argv[])
{
    if (argc != 10 || argv[1] != partArgument)
        return false;
    const auto number = [&](int argument) {
        return static_cast<std::uint32_t>(std::stoul(argv[argument]));
    };
    const AVAudioUnitComponent component({number(4), number(5), number(6), number(7), 0}, argv[3]);
    play(static_cast<Role>(number(2)), component, std::stod(argv[8]), argv[9]);
    return true;
}

} // namespace conformance
