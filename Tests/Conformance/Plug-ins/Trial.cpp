#include "Tests/Conformance/Plug-ins/Trial.hpp"

#include "Tests/Conformance/Plug-ins/Programme.hpp"
#include "Tests/Conformance/Plug-ins/Roles.hpp"
#include "Tests/Conformance/Plug-ins/SubProcess.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <sstream>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include <malloc.h>

namespace conformance
{

namespace
{

using Clock = std::chrono::steady_clock;

constexpr std::array results{Result::exact,   Result::varies, Result::differs, Result::unmatched,
                             Result::refused, Result::failed, Result::late,    Result::hostDied};

constexpr const char *playsBarely = "plays";
constexpr const char *doesNotPlayBarely = "does not play";

// What fresh memory is filled with, where a plug-in may take it for something.
constexpr int otherMemory = 165;

/// From now on memory comes filled, also what was freed before: of small pieces the
/// allocator keeps some of each size and hands them out again as they are.
void fillFreshMemory()
{
    ::mallopt(M_PERTURB, otherMemory);
    constexpr std::size_t largestKept = 1032;
    constexpr std::size_t sizeStep = 16;
    constexpr int ofEachSize = 16;
    std::vector<std::unique_ptr<std::byte[]>> pieces;
    for (std::size_t size = sizeStep / 2; size <= largestKept; size += sizeStep)
        for (int piece = 0; piece < ofEachSize; ++piece)
            pieces.push_back(std::make_unique_for_overwrite<std::byte[]>(size));
}

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
    Trial(const Stage &stage, const TrialSettings &settings) : stage_(stage), settings_(settings)
    {
        std::filesystem::create_directories(stage_.folder);
    }

    ~Trial()
    {
        std::error_code stillHeld;
        std::filesystem::remove_all(stage_.folder, stillHeld);
    }

    Trial(const Trial &) = delete;
    Trial &operator=(const Trial &) = delete;

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
        const auto home = stage_.folder / "home";
        const auto log = stage_.folder / "log";
        std::filesystem::create_directories(home);
        const Ending ending = runApart(
            [&] {
                if (role == Role::bareLoopAgain)
                    fillFreshMemory();
                play(role, block, stage_);
            },
            home, log, settings_.patience);
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
        auto left = takeFinding(stage_.folder);
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

    const Stage stage_;
    const TrialSettings &settings_;
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

/// What the bare loop comes to again, at most some times until it comes to something else:
/// where threads race, twice may be alike by chance.
Outcome runOtherwise(const Trial &trial)
{
    constexpr int mostTimes = 3;
    Outcome outcome;
    for (int time = 0; time < mostTimes; ++time) {
        outcome = trial.runAll(Role::bareLoopAgain);
        if (outcome.finding.verdict != Verdict::same)
            break;
    }
    return outcome;
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

bool plays(Result result)
{
    return result == Result::exact || result == Result::varies;
}

std::string TrialResult::text() const
{
    // Tabs separate columns, here and where people read it another sign does.
    std::string plainReason = reason;
    std::replace_if(
        plainReason.begin(), plainReason.end(),
        [](char c) { return c == '\t' || c == '\n' || c == '|'; }, ' ');
    return fmt::format("{}\t{}\t{}\t{}\t{:.1f}", playsInBareLoop ? playsBarely : doesNotPlayBarely,
                       wordsFor(ownProcess), wordsFor(hostProcess), plainReason, seconds);
}

std::optional<TrialResult> TrialResult::fromText(const std::string &text)
{
    std::array<std::string, 5> column;
    std::istringstream stream(text);
    for (std::string &each : column)
        if (!std::getline(stream, each, '\t'))
            return std::nullopt;
    const auto resultOfWords = [](const std::string &words) {
        return std::find_if(results.begin(), results.end(),
                            [&](Result each) { return words == wordsFor(each); });
    };
    const auto *const own = resultOfWords(column[1]);
    const auto *const host = resultOfWords(column[2]);
    if (own == results.end() || host == results.end())
        return std::nullopt;
    return TrialResult{*own, *host, column[0] == playsBarely, column[3],
                       std::strtod(column[4].c_str(), nullptr)};
}

TrialResult tryPlugin(const BareWorld &world, const AVAudioUnitComponent &component,
                      const TrialSettings &settings, const std::filesystem::path &folder)
{
    const auto begun = Clock::now();
    const Trial trial({world, component, settings.seconds, folder}, settings);
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
        const auto again = runOtherwise(trial);
        addReason(result.reason, "bare loop, again", again.finding);
        if (again.finding.verdict == Verdict::differs)
            for (Result *each : {&result.ownProcess, &result.hostProcess})
                if (*each == Result::differs)
                    *each = Result::varies;
    }
    result.seconds = std::chrono::duration<double>(Clock::now() - begun).count();
    return result;
}

std::optional<Overhead> tryOverhead(const BareWorld &world, const AVAudioUnitComponent &component,
                                    const TrialSettings &settings,
                                    const std::filesystem::path &folder)
{
    const Trial trial({world, component, settings.seconds, folder}, settings);
    const auto outcome = trial.run(Role::overhead, overheadBlock);
    if (outcome.finding.verdict != Verdict::same)
        return std::nullopt;
    return Overhead::fromText(outcome.finding.reason);
}

} // namespace conformance
