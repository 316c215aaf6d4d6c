// Plays for a long time while a person and an effect come and go at random, and looks
// whether everything that was started has come to its end, once.
//   engine_soak SECONDS [SEED]
// The sound goes to the audio device that SDL finds. What is printed by the player goes
// nowhere; the table that this prints is all there is.

#include "Tests/Platform/Effect Process/Faults/ProcessCensus.hpp"
#include "Tests/Soak/PlaceTellingFiles.hpp"
#include "Tests/Soak/SoakedHost.hpp"
#include "Tests/Soak/Table.hpp"
#include "Tests/Utilities/StandInEffect.hpp"
#include "Tests/Utilities/TemporaryFolder.hpp"

#include "Platform/Foundation/Bundle.hpp"
#include "Platform/Foundation/RunLoop.hpp"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <future>
#include <iostream>
#include <random>
#include <string>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <malloc.h>
#include <unistd.h>

namespace
{

using namespace soak;
using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;
using Seconds = std::chrono::duration<double>;

constexpr double sampleRate = 48000.0;

/// What the audio callback went through while nothing was being changed.
struct CalmTime {
    double seconds = 0.0;
    /// Blocks with silence in them.
    std::int64_t silentBlocks = 0;
    /// Frames that the device's clock went on without.
    double framesMissed = 0.0;
    /// Times that do not count, since this process stood still in them altogether.
    std::int64_t standstills = 0;
};

/// A session is what lies between Play and Stop.
struct Sessions {
    std::int64_t exact = 0;
    /// A file was broken off so near its end that the count may be one more.
    std::int64_t withinReadAhead = 0;
    std::int64_t wrong = 0;
};

class Person
{
public:
    Person(SoakedHost &host, std::uint32_t seed) : host_(host), random_(seed) {}

    /// Goes on for `time`; false when there was no sound within half a minute.
    bool playFor(Clock::duration time)
    {
        const auto end = Clock::now() + time;
        while (Clock::now() < end) {
            beginSession();
            if (!sounds())
                return false;
            while (Clock::now() < end && !oneIn(6)) {
                change();
                if (!sounds())
                    return false;
                waitCalmly();
            }
            endSession();
        }
        return true;
    }

    const Sessions &sessions() const { return sessions_; }
    const CalmTime &calm() const { return calm_; }
    std::int64_t changes() const { return changes_; }

private:
    std::uint32_t below(std::uint32_t limit)
    {
        return static_cast<std::uint32_t>(random_()) % limit;
    }
    bool oneIn(std::uint32_t number) { return below(number) == 0; }

    void beginSession()
    {
        told_ = host_.loopsTold();
        heard_ = heardEnds();
        brokenOff_ = host_.callback().listener.counts().brokenOffAtTheEnd;
        host_.start();
        ++changes_;
    }

    void endSession()
    {
        host_.stop();
        ++changes_;
        const std::int64_t told = host_.loopsTold() - told_;
        const std::int64_t heard = heardEnds() - heard_;
        const std::int64_t unclear =
            host_.callback().listener.counts().brokenOffAtTheEnd - brokenOff_;
        if (told == heard)
            ++sessions_.exact;
        else if (told > heard && told <= heard + unclear)
            ++sessions_.withinReadAhead;
        else {
            ++sessions_.wrong;
            std::cerr << "After " << changes_ << " changes: " << told << " loops told, " << heard
                      << " heard, " << unclear << " unclear, " << calm_.standstills
                      << " standstills so far\n";
        }
        if (oneIn(2))
            std::this_thread::sleep_for(milliseconds(below(500)));
    }

    /// Ends of files as they are to be told: those that were heard, and those that
    /// were brought about.
    std::int64_t heardEnds() const
    {
        return host_.callback().listener.counts().rounds + host_.loadsWhilePlaying();
    }

    void change()
    {
        ++changes_;
        // At times both at once: they come from different threads in the program, too.
        if (oneIn(6)) {
            ++changes_;
            const std::uint32_t number = below(12000);
            auto effect = std::async(std::launch::async, [&] { changeEffect(number); });
            changeFile();
            effect.get();
        } else if (oneIn(2)) {
            changeFile();
        } else {
            changeEffect(below(12000));
        }
    }

    void changeFile()
    {
        if (oneIn(3))
            host_.start();
        else
            host_.load(static_cast<int>(1 + below(names)));
    }

    void changeEffect(std::uint32_t number)
    {
        switch (number % 12) {
        case 0:
            return host_.replaceEffect();
        case 1:
        case 2:
            return host_.selectPreset(number / 12);
        default:
            return host_.hasEffect() ? host_.disconnectEffect() : host_.connectEffect();
        }
    }

    /// Waits for half a minute, counted in waking moments: the process may be stopped.
    bool sounds() const
    {
        const auto &sounding = host_.callback().listener.counts().sounding;
        const std::int64_t before = sounding;
        for (int moment = 0; moment < 15000 && sounding < before + 10; ++moment)
            std::this_thread::sleep_for(milliseconds(2));
        const bool soundsAgain = sounding >= before + 10;
        if (!soundsAgain)
            std::cerr << "After " << changes_ << " changes, "
                      << (host_.hasEffect() ? "with" : "without") << " effect: no sound\n";
        return soundsAgain;
    }

    /// For a moment or some seconds; what is missed meanwhile nobody wanted.
    void waitCalmly()
    {
        if (oneIn(3))
            return std::this_thread::sleep_for(milliseconds(below(50)));
        std::this_thread::sleep_for(milliseconds(200));
        const std::int64_t silentBefore = silentBlocks();
        const std::int64_t framesBefore = host_.callback().frames;
        const auto begun = Clock::now();
        host_.listener().expectSound(true);
        const bool isCounted = sleeps(milliseconds(500 + below(4000)));
        host_.listener().expectSound(false);
        const double seconds = Seconds(Clock::now() - begun).count();
        if (!isCounted) {
            ++calm_.standstills;
            return;
        }
        calm_.seconds += seconds;
        calm_.silentBlocks += silentBlocks() - silentBefore;
        calm_.framesMissed +=
            seconds * sampleRate - static_cast<double>(host_.callback().frames - framesBefore);
    }

    /// False when it was stopped from outside meanwhile.
    static bool sleeps(Clock::duration time)
    {
        const auto end = Clock::now() + time;
        for (auto now = Clock::now(); now < end;) {
            std::this_thread::sleep_for(milliseconds(50));
            const auto before = std::exchange(now, Clock::now());
            if (now - before > std::chrono::seconds(1))
                return false;
        }
        return true;
    }

    std::int64_t silentBlocks() const { return host_.callback().listener.counts().silentBlocks; }

    SoakedHost &host_;
    std::mt19937 random_;
    Sessions sessions_;
    CalmTime calm_;
    std::int64_t changes_ = 0;
    std::int64_t told_ = 0;
    std::int64_t heard_ = 0;
    std::int64_t brokenOff_ = 0;
};

std::size_t residentKibibytes()
{
    std::size_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages >> pages;
    return pages * static_cast<std::size_t>(::sysconf(_SC_PAGESIZE)) / 1024;
}

/// What this process holds while it does nothing.
struct Holdings {
    ProcessCensus census = ProcessCensus::now();
    std::size_t heapKibibytes = 0;
    std::size_t residentKibibytes = 0;

    static Holdings now()
    {
        Holdings holdings;
        ::malloc_trim(0);
        holdings.heapKibibytes = ::mallinfo2().uordblks / 1024;
        holdings.residentKibibytes = ::residentKibibytes();
        return holdings;
    }
};

class Soak
{
public:
    Soak(std::filesystem::path files, std::uint32_t seed) : files_(std::move(files)), seed_(seed) {}

    /// The host is run twice: what is made once in a process is there after the first.
    Table run(Clock::duration time)
    {
        play(std::chrono::seconds(5), nullptr);
        const Holdings before = Holdings::now();
        Table table;
        play(time, &table);
        const Holdings after = Holdings::now();
        table.require("held at the end", after.census, before.census);
        table.say("heap in use, KiB", std::to_string(before.heapKibibytes) + " -> " +
                                          std::to_string(after.heapKibibytes));
        table.say("resident, KiB", std::to_string(before.residentKibibytes) + " -> " +
                                       std::to_string(after.residentKibibytes));
        table.require("heap grew by more than 256 KiB",
                      after.heapKibibytes > before.heapKibibytes + 256, false);
        return table;
    }

private:
    void play(Clock::duration time, Table *table) const
    {
        SoakedHost host(files_);
        if (!host.findEffect())
            throw std::runtime_error("the effect was not found");
        Person person(host, seed_);
        const bool soundedOn = person.playFor(time);
        if (host.isPlaying())
            host.stop();
        if (table)
            tell(host, person, soundedOn, *table);
    }

    static void tell(const SoakedHost &host, const Person &person, bool soundedOn, Table &table)
    {
        const Callback &callback = host.callback();
        const LoopListener::Counts &counts = callback.listener.counts();
        const Sessions &sessions = person.sessions();
        const CalmTime &calm = person.calm();
        table.say("changes made", person.changes());
        table.say("sessions from Play to Stop",
                  sessions.exact + sessions.withinReadAhead + sessions.wrong);
        table.say("loops told", host.loopsTold());
        table.say("blocks rendered", callback.blocks.load());
        table.say("largest block, frames", callback.largestBlock.load());
        table.require("sounded to the end", soundedOn, true);
        table.require("sessions whose loops were miscounted", sessions.wrong, std::int64_t{0});
        table.say("sessions with a count one more, within what was read ahead",
                  sessions.withinReadAhead);
        table.require("loops told out of order", host.miscounted(), std::int64_t{0});
        table.require("frames out of their place", counts.misplaced.load(), std::int64_t{0});
        table.require("samples of no file", counts.foreign.load(), std::int64_t{0});
        table.require("samples that are no sound", callback.badSamples.load(), std::int64_t{0});
        // Drop-outs: how they come about depends on the machine.
        table.say("calm minutes of playing", calm.seconds / 60.0);
        table.say("calm times left out, since the process was stopped in them", calm.standstills);
        table.say("drop-outs: blocks that the device did without",
                  std::max(0.0, std::round(calm.framesMissed / SoakedHost::framesPerBlock)));
        table.say("drop-outs: blocks that the player had too few frames for", calm.silentBlocks);
        table.say("drop-outs: blocks that the effect was late with", host.lateBlocks());
        table.say("blocks that took longer than they sound", callback.overruns.load());
    }

    const std::filesystem::path files_;
    const std::uint32_t seed_;
};

/// Standard output from now on leads nowhere; answers where it led.
int silenceOutput()
{
    const int output = ::dup(STDOUT_FILENO);
    const int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    ::dup2(nowhere, STDOUT_FILENO);
    ::close(nowhere);
    return output;
}

} // namespace

int main(int count, char **arguments)
{
    const int seconds = count > 1 ? std::atoi(arguments[1]) : 0;
    if (seconds <= 0 || count > 3) {
        std::cerr << "usage: engine_soak SECONDS [SEED]\n";
        return 2;
    }
    const auto seed = static_cast<std::uint32_t>(count > 2 ? std::atoi(arguments[2]) : 1);
    const int output = silenceOutput();
    const test::TemporaryFolder folder;
    writePlaceTellingFiles(folder.path());
    Bundle::setMain(std::make_shared<Bundle>(URL::fileURLWithPath(folder.path().string())));
    const test::StandInEffect effect;

    int status = 1;
    std::atomic<bool> isDone{false};
    std::thread thread([&] {
        try {
            const Table table = Soak(folder.path(), seed).run(std::chrono::seconds(seconds));
            table.write(output);
            status = table.isAsRequired() ? 0 : 1;
        } catch (const std::exception &error) {
            std::cerr << "engine_soak: " << error.what() << "\n";
        }
        isDone = true;
        RunLoop::main().stop();
    });
    while (!isDone)
        RunLoop::main().runUntil([&] { return isDone.load(); }, 60.0);
    thread.join();
    return status;
}
