// Kills the process of an effect again and again while a host plays through it, and
// looks whether the host is the worse for it. The argument says how often.

#include "Bundle/SabotageFolder.hpp"
#include "ErrorLines.hpp"
#include "PlayingHost.hpp"
#include "ProcessCensus.hpp"

#include "Platform/Audio/RemoteAudioUnit.hpp"
#include "Tests/Utilities/EnvironmentVariable.hpp"
#include "Tests/Utilities/Places.hpp"
#include "Tests/Utilities/TemporaryFolder.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace
{

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

// Half a second, so that a loop or more is played between most kills.
constexpr std::int64_t loopFrames = 24000;
// More than is ever read ahead.
constexpr std::int64_t aheadFrames = 6000;
constexpr float step = 1.0F / 65536.0F;

/// Each sample tells its place in the loop.
test::Channels placeTellingWave()
{
    std::vector<float> channel(loopFrames);
    for (std::int64_t frame = 0; frame < loopFrames; ++frame)
        channel[static_cast<std::size_t>(frame)] = static_cast<float>(frame + 1) * step;
    return {channel, channel};
}

/// Follows what is heard: whether each block is of the place in the loop that its
/// time says.
class Listener
{
public:
    void take(const float *samples, std::uint32_t frames)
    {
        if (samples[0] != 0.0F) {
            const auto place = static_cast<std::int64_t>(samples[0] / step) - 1;
            if (!began_) {
                begin_ = frame_ - place;
                began_ = true;
            }
            if ((frame_ - begin_) % loopFrames != place)
                ++displaced_;
            ++sounding_;
        }
        frame_ += frames;
        played_ = began_ ? frame_ - begin_ : 0;
    }

    /// Frames of the loop that have been played, heard or not.
    std::int64_t played() const { return played_; }
    /// Blocks that came at another time than they ought to have.
    std::int64_t displaced() const { return displaced_; }
    std::int64_t sounding() const { return sounding_; }

private:
    bool began_ = false;
    std::int64_t frame_ = 0;
    std::int64_t begin_ = 0;
    std::atomic<std::int64_t> played_{0};
    std::atomic<std::int64_t> displaced_{0};
    std::atomic<std::int64_t> sounding_{0};
};

std::size_t residentKibibytes()
{
    std::size_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages >> pages;
    return pages * 4;
}

/// Counts what is not as it should be, and says so.
class Verdict
{
public:
    template <typename T>
    void expect(const std::string &what, const T &found, const T &wanted)
    {
        const bool isRight = found == wanted;
        failures_ += isRight ? 0 : 1;
        std::cout << what << ": " << found;
        if (!isRight)
            std::cout << " INSTEAD OF " << wanted;
        std::cout << "\n";
    }
    int exitCode() const { return failures_ == 0 ? 0 : 1; }

private:
    int failures_ = 0;
};

class Soak
{
public:
    explicit Soak(int kills) : kills_(kills) {}

    int run()
    {
        const ErrorLines errors;
        play(0); // whatever is made once is there before things are counted
        const ProcessCensus before = ProcessCensus::now();
        play(kills_);
        verdict_.expect("held at the end", ProcessCensus::now(), before);
        verdict_.expect("scratch files", std::filesystem::is_empty(scratch_.path()), true);
        verdict_.expect("lines that say so",
                        static_cast<int>(errors.with("; it is started again.").size()), kills_);
        return verdict_.exitCode();
    }

private:
    void play(int kills)
    {
        RemoteAudioUnit::Limits limits;
        limits.faults.faults = 0;
        auto unit = std::make_shared<RemoteAudioUnit>(
            AVAudioUnitComponent({}, "urn:test:sabotage:never:none"), limits);
        Listener listener;
        PlayingHost host(unit, placeTellingWave(), [&listener](const float *samples, auto frames) {
            listener.take(samples, frames);
        });
        const std::size_t memory = residentKibibytes();
        for (int kill = 0; kill < kills; ++kill)
            killOnce(unit->process(), listener);
        if (kills > 0)
            tell(host, listener, memory);
        unit.reset();
        host.stop();
        host.detachUnit();
    }

    void killOnce(platform::effect::EffectProcess &process, const Listener &listener)
    {
        // Often while it plays, at times while it starts.
        const bool whilePlaying = random_() % 4 != 0;
        const std::int64_t heard = listener.sounding();
        if (whilePlaying) {
            waitFor([&] { return listener.sounding() > heard + 3; });
            if (killedAt_)
                silences_.push_back(Clock::now() - *killedAt_);
            std::this_thread::sleep_for(std::chrono::microseconds(random_() % 20000));
        } else {
            waitFor([&] { return process.processIdentifier() > 0; });
            std::this_thread::sleep_for(std::chrono::microseconds(random_() % 2000));
        }
        constexpr std::array<int, 3> signals{SIGKILL, SIGSEGV, SIGABRT};
        const pid_t victim = process.processIdentifier();
        killedAt_ = Clock::now();
        sendSignal(victim, signals[random_() % signals.size()]);
        waitFor([&] { return process.processIdentifier() != victim; });
    }

    void tell(PlayingHost &host, const Listener &listener, std::size_t memoryBefore)
    {
        const std::int64_t heard = listener.sounding();
        waitFor([&] { return listener.sounding() > heard + 10; });
        // Where what is read ahead is of the loop that sounds, the counts agree.
        const auto placeIsClear = [&listener] {
            const std::int64_t place = listener.played() % loopFrames;
            return place > 1000 && place < loopFrames - 2 * aheadFrames;
        };
        waitFor(placeIsClear);
        const std::int64_t loops = host.loops();
        verdict_.expect("loops", loops, listener.played() / loopFrames);
        verdict_.expect("blocks out of their place", listener.displaced(), std::int64_t{0});
        std::cout << fmt::format("{} kills, {} blocks that sounded, memory {} -> {} KiB, longest "
                                 "callback {:.2f} ms\n",
                                 kills_, listener.sounding(), memoryBefore, residentKibibytes(),
                                 1e-6 * static_cast<double>(host.report().longestCallback.load()));
        std::sort(silences_.begin(), silences_.end());
        const auto share = [&](double part) {
            const auto at = static_cast<std::size_t>(part * static_cast<double>(silences_.size()));
            return std::chrono::duration<double, std::milli>(
                       silences_[std::min(at, silences_.size() - 1)])
                .count();
        };
        if (!silences_.empty())
            std::cout << fmt::format("from the kill to sound again: p50 {:.1f} ms, p99 {:.1f} ms, "
                                     "at most {:.1f} ms\n",
                                     share(0.5), share(0.99), share(1.0));
    }

    static void waitFor(const std::function<bool()> &condition)
    {
        if (!eventually(condition)) {
            std::cout << "the effect does not come back\n";
            std::abort();
        }
    }

    const int kills_;
    const test::TemporaryFolder folder_;
    const test::TemporaryFolder scratch_;
    const test::EnvironmentVariable folderVariable_{"SABOTAGE_FOLDER", folder_.path().string()};
    const test::EnvironmentVariable scratchVariable_{"TMPDIR", scratch_.path().string()};
    const test::EnvironmentVariable pathVariable_{"LV2_PATH", test::buildPath(SABOTAGE_LV2_FOLDER)};
    std::mt19937 random_{20240611};
    std::optional<Clock::time_point> killedAt_;
    std::vector<Clock::duration> silences_;
    Verdict verdict_;
};

} // namespace

int main(int count, char **arguments)
{
    const int kills = count == 2 ? std::atoi(arguments[1]) : 0;
    if (kills <= 0) {
        std::cerr << "usage: kill_soak KILLS\n";
        return 2;
    }
    return Soak(kills).run();
}
