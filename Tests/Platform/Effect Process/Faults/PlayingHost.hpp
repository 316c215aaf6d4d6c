#pragma once

#include "PacedDevice.hpp"

#include "Platform/Audio/AVAudioEngine.hpp"
#include "Platform/Audio/AVAudioFile.hpp"
#include "Platform/Audio/AVAudioPlayerNode.hpp"
#include "Platform/Audio/AVAudioUnit.hpp"
#include "Platform/Foundation/Shared.hpp"
#include "Tests/Utilities/Channels.hpp"
#include "Tests/Utilities/TemporaryFolder.hpp"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>

/// Waits until the condition holds; false when it does not within 30 s.
bool eventually(const std::function<bool()> &condition);

/// How long the operation takes.
std::chrono::duration<double> timeOf(const std::function<void()> &operation);

/// A host as users have it: it plays a file over and over through one unit, to a
/// device that keeps real time.
class PlayingHost
{
public:
    /// Plays `wave`, at 48 kHz, from now on. `take` gets each block as it is heard.
    PlayingHost(std::shared_ptr<AUAudioUnit> unit, const test::Channels &wave,
                PacedDevice::Take take = {});
    ~PlayingHost();
    PlayingHost(const PlayingHost &) = delete;
    PlayingHost &operator=(const PlayingHost &) = delete;

    AUAudioUnit &unit() { return *unit_.load()->auAudioUnit(); }
    AVAudioEngine &engine() { return engine_; }
    PacedDevice::Report &report() { return *report_; }
    std::int64_t loops() const { return loops_; }

    /// Connects the unit anew, at another rate, while it plays.
    void useRate(double sampleRate);

    /// Whether blocks go on coming.
    bool goesOn();
    /// Whether sound comes from now on.
    bool sounds();

    void stop();
    /// Takes the unit out of the engine and lets go of it.
    void detachUnit();

private:
    void schedule();

    const test::TemporaryFolder folder_;
    Shared<std::shared_ptr<AVAudioUnit>> unit_;
    const std::shared_ptr<PacedDevice::Report> report_;
    AVAudioEngine engine_;
    std::shared_ptr<AVAudioFile> file_;
    std::atomic<bool> ending_{false};
    std::atomic<std::int64_t> loops_{0};
    const std::shared_ptr<AVAudioPlayerNode> player_ = std::make_shared<AVAudioPlayerNode>();
};
