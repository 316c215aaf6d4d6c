// One block of audio through an effect that does nothing: in this process, in a
// process of its own, and beside that, a byte to another process and back, and the least
// that there is: two processes that wake each other and do nothing else. How long the
// audio callback is away, and what both processes together take of the processor.
//
// Usage: effect_hop_benchmark [BLOCKS [SECONDS [CONDITION]]]
// BLOCKS of 64 frames back to back, SECONDS at the real pace of 256 frames, in all
// conditions or one: "idle", "idle, real-time", "busy" or "busy, real-time".

#include "Benchmarks/Effect Process/BusyProcessors.hpp"
#include "Benchmarks/Effect Process/EchoProcess.hpp"
#include "Benchmarks/Effect Process/FutexEcho.hpp"
#include "Benchmarks/Engine/BareHost.hpp"
#include "Benchmarks/Engine/Measurement.hpp"
#include "Benchmarks/Report/Report.hpp"
#include "Platform/Audio/LocalAudioUnit.hpp"
#include "Platform/Audio/RemoteAudioUnit.hpp"
#include "Platform/Foundation/ThreadPriority.hpp"

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <sched.h>

namespace
{

using Clock = std::chrono::steady_clock;

constexpr double sampleRate = 48000.0;
constexpr int realTimePriority = 10;
constexpr const char *floorPeer = "two processes that wake each other";

struct Condition {
    const char *name;
    bool isLoaded;
    bool isRealTime;
};
constexpr std::array conditions{
    Condition{"idle", false, false}, Condition{"idle, real-time", false, true},
    Condition{"busy", true, false}, Condition{"busy, real-time", true, true}};

struct Result {
    std::vector<double> microseconds;   // one a block, the shortest first
    std::vector<double> medians;        // of ten parts of the run
    std::uint64_t lateBlocks = 0;       // of the remote unit
    double processorMicroseconds = 0.0; // a block, both processes
};

/// Processor time of another process so far, in seconds, from the scheduler's own
/// count in nanoseconds.
double processorTimeOf(pid_t process)
{
    double seconds = 0.0;
    const std::string tasks = fmt::format("/proc/{}/task", process);
    for (const auto &task : std::filesystem::directory_iterator(tasks)) {
        std::uint64_t nanoseconds = 0;
        if (std::ifstream(task.path() / "schedstat") >> nanoseconds)
            seconds += 1e-9 * static_cast<double>(nanoseconds);
    }
    return seconds;
}

/// Makes `count` calls, one every `interval` or as fast as it goes.
template <typename Call>
Result timeCalls(std::size_t count, std::optional<std::chrono::nanoseconds> interval,
                 const Call &call)
{
    Result result;
    result.microseconds.reserve(count);
    auto next = Clock::now();
    for (std::size_t index = 0; index < count; ++index) {
        if (interval) {
            next += *interval;
            std::this_thread::sleep_until(next);
        }
        const auto begun = Clock::now();
        call(index);
        result.microseconds.push_back(
            std::chrono::duration<double, std::micro>(Clock::now() - begun).count());
    }
    constexpr std::size_t parts = 10;
    for (std::size_t part = 0; part < parts; ++part) {
        const auto bound = [&](std::size_t which) {
            return result.microseconds.begin() + static_cast<std::ptrdiff_t>(which * count / parts);
        };
        result.medians.push_back(median({bound(part), bound(part + 1)}));
    }
    std::sort(result.microseconds.begin(), result.microseconds.end());
    return result;
}

Result renderBlocks(AUAudioUnit &unit, std::uint32_t frames, std::size_t blocks,
                    std::optional<std::chrono::nanoseconds> interval)
{
    std::vector<float> in(frames, 0.5F);
    std::vector<float> left(frames);
    std::vector<float> right(frames);
    const std::array<const float *, 2> inputs{in.data(), in.data()};
    const std::array<float *, 2> outputs{left.data(), right.data()};
    return timeCalls(blocks, interval, [&](std::size_t block) {
        unit.render(
            {inputs.data(), outputs.data(), frames, static_cast<std::int64_t>(block * frames)});
    });
}

class AudioThreadPriority
{
public:
    explicit AudioThreadPriority(bool isRealTime)
    {
        sched_param parameters{};
        parameters.sched_priority = isRealTime ? realTimePriority : 0;
        isThere_ = ::sched_setscheduler(0, isRealTime ? SCHED_FIFO : SCHED_OTHER, &parameters) == 0;
        platform::foundation::learnThreadPriority();
    }
    ~AudioThreadPriority()
    {
        const sched_param parameters{};
        ::sched_setscheduler(0, SCHED_OTHER, &parameters);
        platform::foundation::learnThreadPriority();
    }
    AudioThreadPriority(const AudioThreadPriority &) = delete;
    AudioThreadPriority &operator=(const AudioThreadPriority &) = delete;

    bool isThere() const { return isThere_; }

private:
    bool isThere_ = false;
};

struct Pace {
    const char *name;
    const char *what; // in a row
    std::uint32_t frames;
    std::size_t blocks;
    std::optional<std::chrono::nanoseconds> interval;
};

/// Times `run`, which makes as many calls as the pace says, and what it takes of the
/// processor, in this process and in `other`, if there is one.
template <typename Run>
Result measureProcessorTime(const Pace &pace, std::optional<pid_t> other, const Run &run)
{
    const auto theirs = [&] { return other ? processorTimeOf(*other) : 0.0; };
    const double theirsBefore = theirs();
    Result result;
    const Cost cost = costOf([&] { result = run(); });
    result.processorMicroseconds =
        1e6 * (cost.processor + theirs() - theirsBefore) / static_cast<double>(pace.blocks);
    return result;
}

Result measure(AUAudioUnit &unit, const Pace &pace)
{
    auto *const remote = dynamic_cast<RemoteAudioUnit *>(&unit);
    unit.allocateRenderResources(sampleRate, pace.frames);
    renderBlocks(unit, pace.frames, pace.blocks / 100 + 10, pace.interval);
    const std::uint64_t lateBefore = remote ? remote->process().lateBlocks() : 0;
    const auto other = remote ? std::optional(remote->process().processIdentifier()) : std::nullopt;
    Result result = measureProcessorTime(
        pace, other, [&] { return renderBlocks(unit, pace.frames, pace.blocks, pace.interval); });
    result.lateBlocks = remote ? remote->process().lateBlocks() - lateBefore : 0;
    unit.deallocateRenderResources();
    return result;
}

double quantile(const std::vector<double> &sorted, double share)
{
    const auto index = static_cast<std::size_t>(share * static_cast<double>(sorted.size() - 1));
    return sorted[index];
}

void printLine(const char *place, const Pace &pace, const Condition &condition,
               const Result &result)
{
    fmt::print("{:12} {:14} {:16} {:9} {:8.2f} {:8.2f} {:9.1f} {:6} {:9.2f}\n", place, pace.name,
               condition.name, pace.blocks, quantile(result.microseconds, 0.5),
               quantile(result.microseconds, 0.999), result.microseconds.back(), result.lateBlocks,
               result.processorMicroseconds);
    std::fflush(stdout);
}

void report(const Pace &pace, const Condition &condition, const Result &apart, const Result &futex)
{
    printRow({fmt::format("{}, {}", pace.what, condition.name), floorPeer, std::nullopt,
              ratios(apart.medians, futex.medians)});
}

void reportGoals(const Pace &pace, const Result &here, const Result &apart, const Result &echo,
                 const Result &futex)
{
    printRow({fmt::format("{}, idle", pace.what), "a byte there and back", 1.0,
              ratios(apart.medians, echo.medians)});
    printRow(
        {fmt::format("{}, idle", pace.what), "", pace.interval ? 20.0 : 5.0, apart.medians, "µs"});
    if (!pace.interval)
        return;
    printRow({"Blocks of 256 frames that came late, idle",
              "",
              0.0,
              {static_cast<double>(apart.lateBlocks)},
              "blocks"});
    printRow({"Processor time for a block of 256 frames, beyond an effect in this process",
              "",
              20.0,
              {apart.processorMicroseconds - here.processorMicroseconds},
              "µs"});
    printRow({"Processor time for a block of 256 frames",
              floorPeer,
              std::nullopt,
              {apart.processorMicroseconds / futex.processorMicroseconds}});
}

void compare(std::size_t blocks, double seconds, const std::string &only)
{
    useOwnPlugins();
    const AVAudioUnitComponent nothing({}, "urn:qrvx:benchmark:nothing");
    const std::chrono::nanoseconds blockTime(static_cast<std::int64_t>(1e9 * 256 / sampleRate));
    const auto paced = static_cast<std::size_t>(seconds * sampleRate / 256);
    const std::array paces{
        Pace{"back to back", "Hop of 64 frames, back to back", 64, blocks, std::nullopt},
        Pace{"at real pace", "Hop of 256 frames at their pace", 256, paced, blockTime}};
    fmt::print("{:12} {:14} {:16} {:>9} {:>8} {:>8} {:>9} {:>6} {:>9}\n", "effect in", "blocks",
               "machine", "count", "p50 µs", "p99.9", "max", "late", "CPU µs");
    for (const Pace &pace : paces) {
        for (const Condition &condition : conditions) {
            if (!only.empty() && only != condition.name)
                continue;
            const EchoProcess other;
            LocalAudioUnit local(nothing);
            RemoteAudioUnit remote(nothing);
            std::optional<BusyProcessors> load;
            if (condition.isLoaded)
                load.emplace();
            const AudioThreadPriority priority(condition.isRealTime);
            if (!priority.isThere()) {
                fmt::print("{}: this user may not have real-time priority.\n", condition.name);
                continue;
            }
            const Result here = measure(local, pace);
            const Result apart = measure(remote, pace);
            const Result echo =
                timeCalls(pace.blocks, pace.interval, [&](std::size_t) { other.callBack(); });
            FutexEcho waker;
            const Result futex = measureProcessorTime(pace, waker.processIdentifier(), [&] {
                return timeCalls(pace.blocks, pace.interval,
                                 [&](std::size_t) { waker.callBack(); });
            });
            printLine("this process", pace, condition, here);
            printLine("its own", pace, condition, apart);
            printLine("(echo)", pace, condition, echo);
            printLine("(futex)", pace, condition, futex);
            if (!condition.isLoaded && !condition.isRealTime)
                reportGoals(pace, here, apart, echo, futex);
            report(pace, condition, apart, futex);
        }
    }
}

} // namespace

int main(int count, char **arguments)
{
    try {
        compare(count > 1 ? std::stoul(arguments[1]) : 1'000'000,
                count > 2 ? std::stod(arguments[2]) : 30.0, count > 3 ? arguments[3] : "");
    } catch (const std::exception &error) {
        fmt::print(stderr, "{}\n", error.what());
        return 1;
    }
    return 0;
}
