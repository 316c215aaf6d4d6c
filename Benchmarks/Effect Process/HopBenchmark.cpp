// One block of audio through an effect that does nothing: in this process, in a
// process of its own, and beside that, a byte to another process and back, and the least
// that there is: two processes that wake each other and do nothing else. How long the
// audio callback is away, and what both processes together take of the processor. The
// four take turns, so that what the machine does meanwhile meets all of them.
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
#include <functional>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <utility>
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

struct Pace {
    const char *name;
    const char *what; // in a row
    std::uint32_t frames;
    std::size_t blocks;
    std::optional<std::chrono::nanoseconds> interval;
};

/// What is called once a block, and what it took.
struct Subject {
    const char *place;
    std::function<void()> call;
    std::optional<pid_t> other; // the process at the far end, where its time counts

    std::vector<double> microseconds = {}; // one a block
    // One a turn.
    std::vector<double> medians = {};
    std::vector<double> processorMicroseconds = {}; // a block, both processes
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

/// Makes `count` calls, one every `interval` or as fast as it goes; microseconds each.
std::vector<double> timeCalls(std::size_t count, std::optional<std::chrono::nanoseconds> interval,
                              const std::function<void()> &call)
{
    std::vector<double> microseconds;
    microseconds.reserve(count);
    auto next = Clock::now();
    for (std::size_t index = 0; index < count; ++index) {
        if (interval) {
            next += *interval;
            std::this_thread::sleep_until(next);
        }
        const auto begun = Clock::now();
        call();
        microseconds.push_back(
            std::chrono::duration<double, std::micro>(Clock::now() - begun).count());
    }
    return microseconds;
}

/// Its blocks, one after the other.
std::function<void()> renderer(AUAudioUnit &unit, std::uint32_t frames)
{
    struct Buffers {
        std::vector<float> in, left, right;
        std::int64_t sampleTime = 0;
    };
    auto buffers = std::make_shared<Buffers>(Buffers{
        std::vector<float>(frames, 0.5F), std::vector<float>(frames), std::vector<float>(frames)});
    return [&unit, frames, buffers] {
        const std::array<const float *, 2> inputs{buffers->in.data(), buffers->in.data()};
        const std::array<float *, 2> outputs{buffers->left.data(), buffers->right.data()};
        unit.render({inputs.data(), outputs.data(), frames, buffers->sampleTime});
        buffers->sampleTime += frames;
    };
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

constexpr std::size_t turns = 10;

/// One of `turns` turns.
void takeTurn(Subject &subject, const Pace &pace)
{
    timeCalls(pace.blocks / 100 / turns + 10, pace.interval, subject.call);
    const auto theirs = [&] { return subject.other ? processorTimeOf(*subject.other) : 0.0; };
    const std::size_t count = pace.blocks / turns;
    const double theirsBefore = theirs();
    std::vector<double> microseconds;
    const Cost cost = costOf([&] { microseconds = timeCalls(count, pace.interval, subject.call); });
    subject.processorMicroseconds.push_back(1e6 * (cost.processor + theirs() - theirsBefore) /
                                            static_cast<double>(count));
    subject.microseconds.insert(subject.microseconds.end(), microseconds.begin(),
                                microseconds.end());
    subject.medians.push_back(median(std::move(microseconds)));
}

double quantile(const std::vector<double> &sorted, double share)
{
    const auto index = static_cast<std::size_t>(share * static_cast<double>(sorted.size() - 1));
    return sorted[index];
}

void printLine(const Pace &pace, const Condition &condition, const Subject &subject,
               std::uint64_t lateBlocks)
{
    std::vector<double> sorted = subject.microseconds;
    std::sort(sorted.begin(), sorted.end());
    fmt::print("{:12} {:14} {:16} {:9} {:8.2f} {:8.2f} {:9.1f} {:6} {:9.2f}\n", subject.place,
               pace.name, condition.name, sorted.size(), quantile(sorted, 0.5),
               quantile(sorted, 0.999), sorted.back(), lateBlocks,
               median(subject.processorMicroseconds));
    std::fflush(stdout);
}

std::vector<double> differences(const std::vector<double> &ours, const std::vector<double> &theirs)
{
    std::vector<double> all;
    std::transform(ours.begin(), ours.end(), theirs.begin(), std::back_inserter(all),
                   std::minus<>());
    return all;
}

void reportGoals(const Pace &pace, const Subject &here, const Subject &apart, const Subject &echo,
                 const Subject &futex, std::uint64_t lateBlocks)
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
              {static_cast<double>(lateBlocks)},
              "blocks"});
    printRow({"Processor time for a block of 256 frames, beyond an effect in this process", "",
              20.0, differences(apart.processorMicroseconds, here.processorMicroseconds), "µs"});
    printRow({"Processor time for a block of 256 frames", floorPeer, std::nullopt,
              ratios(apart.processorMicroseconds, futex.processorMicroseconds)});
}

void compare(const Pace &pace, const Condition &condition)
{
    const AVAudioUnitComponent nothing({}, "urn:qrvx:benchmark:nothing");
    const EchoProcess other;
    LocalAudioUnit local(nothing);
    RemoteAudioUnit remote(nothing);
    std::optional<BusyProcessors> load;
    if (condition.isLoaded)
        load.emplace();
    const AudioThreadPriority priority(condition.isRealTime);
    if (!priority.isThere()) {
        fmt::print("{}: this user may not have real-time priority.\n", condition.name);
        return;
    }
    FutexEcho waker;
    local.allocateRenderResources(sampleRate, pace.frames);
    remote.allocateRenderResources(sampleRate, pace.frames);
    Subject here{"this process", renderer(local, pace.frames), std::nullopt};
    Subject apart{"its own", renderer(remote, pace.frames), remote.process().processIdentifier()};
    Subject echo{"(echo)", [&] { other.callBack(); }, std::nullopt};
    Subject futex{"(futex)", [&] { waker.callBack(); }, waker.processIdentifier()};
    for (std::size_t turn = 0; turn < turns; ++turn)
        for (Subject *subject : {&here, &apart, &echo, &futex})
            takeTurn(*subject, pace);
    const std::uint64_t lateBlocks = remote.process().lateBlocks();
    for (const Subject *subject : {&here, &apart, &echo, &futex})
        printLine(pace, condition, *subject, subject == &apart ? lateBlocks : 0);
    if (!condition.isLoaded && !condition.isRealTime)
        reportGoals(pace, here, apart, echo, futex, lateBlocks);
    printRow({fmt::format("{}, {}", pace.what, condition.name), floorPeer, std::nullopt,
              ratios(apart.medians, futex.medians)});
}

void compareAll(std::size_t blocks, double seconds, const std::string &only)
{
    useOwnPlugins();
    const std::chrono::nanoseconds blockTime(static_cast<std::int64_t>(1e9 * 256 / sampleRate));
    const auto paced = static_cast<std::size_t>(seconds * sampleRate / 256);
    const std::array paces{
        Pace{"back to back", "Hop of 64 frames, back to back", 64, blocks, std::nullopt},
        Pace{"at real pace", "Hop of 256 frames at their pace", 256, paced, blockTime}};
    fmt::print("{:12} {:14} {:16} {:>9} {:>8} {:>8} {:>9} {:>6} {:>9}\n", "effect in", "blocks",
               "machine", "count", "p50 µs", "p99.9", "max", "late", "CPU µs");
    for (const Pace &pace : paces)
        for (const Condition &condition : conditions)
            if (only.empty() || only == condition.name)
                compare(pace, condition);
}

} // namespace

int main(int count, char **arguments)
{
    try {
        compareAll(count > 1 ? std::stoul(arguments[1]) : 1'000'000,
                   count > 2 ? std::stod(arguments[2]) : 30.0, count > 3 ? arguments[3] : "");
    } catch (const std::exception &error) {
        fmt::print(stderr, "{}\n", error.what());
        return 1;
    }
    return 0;
}
