#pragma once

#include "Platform/Audio/AVAudioFormat.hpp"
#include "Platform/Audio/AVAudioMixerNode.hpp"
#include "Platform/Audio/AVAudioOutputNode.hpp"
#include "Platform/Audio/AudioGraph.hpp"
#include "Platform/Audio/OutputDevice.hpp"
#include "Platform/Audio/OutputGuard.hpp"
#include "Platform/Audio/Published.hpp"
#include "Platform/Audio/RenderPlan.hpp"
#include "Platform/Foundation/Shared.hpp"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

class AVAudioPCMBuffer;

namespace platform::audio
{

/// The state behind an `AVAudioEngine`: the graph under a mutex that the audio
/// callback never sees, and the plan that the callback renders.
class EngineCore : public OutputDevice::Source
{
public:
    explicit EngineCore(std::unique_ptr<OutputDevice> device);
    ~EngineCore() override;
    EngineCore(const EngineCore &) = delete;
    EngineCore &operator=(const EngineCore &) = delete;

    const std::shared_ptr<AVAudioMixerNode> &mixer() const { return mixer_; }
    const std::shared_ptr<AVAudioOutputNode> &output() const { return output_; }

    /// The engine's operations of the same names.
    void attach(const std::shared_ptr<AVAudioNode> &node);
    void detach(const std::shared_ptr<AVAudioNode> &node);
    void connect(const std::shared_ptr<AVAudioNode> &source,
                 const std::shared_ptr<AVAudioNode> &destination,
                 const std::optional<AVAudioFormat> &format);
    void disconnectNodeInput(const AVAudioNode &node);
    void prepare();
    void start();
    void stop();
    bool isRunning() const { return running_.load(); }
    void enableManualRenderingMode(const AVAudioFormat &format, std::uint32_t maximumFrameCount);
    void disableManualRenderingMode();
    /// One thread at a time; it takes no lock but where it waits or there is no plan.
    void renderOffline(std::uint32_t frames, AVAudioPCMBuffer &buffer);

    REALTIME void renderInterleaved(float *samples, std::uint32_t frames,
                                    std::uint32_t channels) noexcept override;

private:
    struct UnitState {
        double sampleRate;
        std::uint32_t maximumFrames;
        bool offline;
        std::shared_ptr<RenderClock> clock;
    };
    using Lock = std::unique_lock<std::mutex>;
    using Players = std::vector<RenderPlan::Player>;
    using Latencies = std::vector<RenderPlan::Latency>;

    /// The mutex, with no wait for a unit that hangs over its preparation.
    Lock lockWithoutUnits();
    RenderPlanner planner() const;
    void graphChanged();
    void allocateUnits(const std::vector<RenderPlanner::Unit> &units);
    void allocateUnit(const RenderPlanner::Unit &planned);
    void publish(bool mayThrow);
    void withdrawPlan();
    /// A new plan when a unit's delay has changed on a path that meets others.
    void followLatencies();
    void openDevice();
    void closeDevice();
    void watchDevice();
    void watchOnce();
    bool deviceIsAlive();
    bool renderPlanned(std::uint32_t frames, AVAudioPCMBuffer &buffer, bool mayBeShort);
    void waitForPlayers();
    void renderSilence(std::uint32_t frames, AVAudioPCMBuffer &buffer);
    void runDevice();
    void tellFaults();
    bool isOverloaded();

    const std::shared_ptr<AVAudioMixerNode> mixer_ = std::make_shared<AVAudioMixerNode>();
    const std::shared_ptr<AVAudioOutputNode> output_ = std::make_shared<AVAudioOutputNode>();

    std::mutex mutex_; // guards the graph and all control state
    AudioGraph graph_;
    std::map<std::shared_ptr<AUAudioUnit>, UnitState> units_;
    // The one that is being prepared; whoever waits for the mutex may look.
    Shared<std::shared_ptr<AUAudioUnit>> unitInPreparation_{nullptr};
    std::unique_ptr<OutputDevice> device_;
    std::uint32_t maximumFrames_;
    std::optional<AVAudioFormat> manualFormat_;
    std::optional<AVAudioFormat> formatBeforeManual_;
    std::atomic<bool> running_{false};
    // Blocks that the device has asked for and got: equal while it waits.
    std::atomic<std::uint64_t> blocksBegun_{0};
    std::atomic<std::uint64_t> blocksDone_{0};
    std::uint64_t blocksSeen_ = 0;
    std::chrono::steady_clock::time_point lastBlockSeen_;
    bool deviceLost_ = false;
    bool toldNonFinite_ = false;
    bool toldTooLoud_ = false;
    // Blocks that took longer than they sound, and what there was at the last look.
    std::atomic<std::uint64_t> overloads_{0};
    std::uint64_t overloadsSeen_ = 0;
    std::uint64_t blocksAtLook_ = 0;
    int overloadedLooks_ = 0;
    bool toldOverload_ = false;
    std::condition_variable watchEnds_;
    std::thread watch_;
    Shared<std::shared_ptr<const Players>> players_{std::make_shared<const Players>()};
    Latencies latencies_;
    std::atomic<bool> hasLatencies_{false};

    Published<RenderPlan> plan_;
    OutputGuard guard_;
};

} // namespace platform::audio
