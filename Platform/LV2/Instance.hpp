#pragma once

#include "Platform/Foundation/Realtime.hpp"
#include "Platform/LV2/BlockParts.hpp"
#include "Platform/LV2/Exchange.hpp"
#include "Platform/LV2/Features.hpp"
#include "Platform/LV2/FixedRuns.hpp"
#include "Platform/LV2/GuardedOutputs.hpp"
#include "Platform/LV2/Plugin.hpp"
#include "Platform/LV2/PortBuffers.hpp"
#include "Platform/LV2/PortTraffic.hpp"
#include "Platform/LV2/RunGate.hpp"
#include "Platform/LV2/State.hpp"
#include "Platform/LV2/TimePosition.hpp"
#include "Platform/LV2/Worker.hpp"

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>

namespace platform::lv2
{

/// Whether it is watched that plug-ins keep to their buffers, unless said otherwise:
/// in debug builds and under the address sanitizer, since it costs copying each block.
#if defined(NDEBUG) && !defined(PARVANE_CHECKS_BOUNDS)
inline constexpr bool boundsAreChecked = false;
#else
inline constexpr bool boundsAreChecked = true;
#endif

/// A plug-in that runs at one sample rate. `run` belongs to one audio thread;
/// everything else is called one at a time by other threads, and may be called
/// while `run` runs unless said otherwise.
class Instance
{
public:
    /// What an instance is made for.
    struct Settings {
        double sampleRate = 48000.0;        ///< in Hz
        std::uint32_t maximumFrames = 1024; ///< of a block
        /// Rendering is not bound to time, and work is done in place.
        bool isOffline = false;
        std::optional<std::string> contextName; ///< as the option tells it
        /// Whether it is said in the log when the plug-in writes beyond a block.
        bool checksBounds = boundsAreChecked;
    };

    /// Makes and activates an instance, in the state `restored` or else in its
    /// default one. A `PlatformError` when the plug-in needs what is not offered
    /// here, does not load or refuses. Plug-in and exchange outlive it.
    Instance(Plugin &plugin, Exchange &exchange, const Settings &settings,
             const State *restored = nullptr);
    /// Ends its worker, deactivates and frees it.
    ~Instance();
    Instance(const Instance &) = delete;
    Instance &operator=(const Instance &) = delete;

    /// Runs one block through the main audio ports, one pointer each; inputs are
    /// never outputs. `sampleTime` counts frames since rendering began. Answers
    /// false, with the output undefined, while a control operation holds the
    /// plug-in, and for more frames than were agreed.
    REALTIME bool run(const float *const *inputs, float *const *outputs, std::uint32_t frames,
                      std::int64_t sampleTime) noexcept;

    /// What it was made for, with the context's name of now.
    const Settings &settings() const { return settings_; }

    /// The plug-in's delay as it reports it, and that of gathering blocks into runs
    /// of the length that it insists on, in frames. Any thread.
    double latency() const { return latency_.load(std::memory_order_relaxed); }

    /// The settings as they are. Values that the plug-in fails to save are told of
    /// on standard error.
    State save();
    /// Brings the plug-in into the state of a preset, or its default one by the
    /// plug-in's own URI. Answers false when there is no such state.
    bool loadState(const std::string &uri);

    /// Sets a control input by its symbol.
    void setControl(const std::string &symbol, float value) { buffers_.setControl(symbol, value); }
    /// The values of the control inputs by their symbols.
    std::map<std::string, float> controls() const { return buffers_.controls(); }

    /// Whether the plug-in has said since the last call that its state has changed by
    /// itself. Any thread.
    bool takeStateChange() { return stateHasChanged_.exchange(false, std::memory_order_relaxed); }

    // For the plug-in's view. ----------------------------------------------------

    /// Events from and to the atom ports.
    PortTraffic &traffic();
    /// Sets a control input.
    void setControl(std::uint32_t port, float value) { buffers_.setControl(port, value); }
    /// The value of a control port, of an output as long as the traffic is watched.
    float control(std::uint32_t port) const { return buffers_.control(port); }
    /// The plug-in's own handle and descriptor.
    LV2_Handle handle() const { return lilv_instance_get_handle(instance_.get()); }
    /// The functions of the plug-in's binary, for an interface with data access.
    const LV2_Descriptor &descriptor() const
    {
        return *lilv_instance_get_descriptor(instance_.get());
    }
    /// The size of the atom ports' buffers, in bytes.
    std::uint32_t sequenceSize() const { return buffers_.sequenceSize(); }

    /// Tells the plug-in through its options, if it listens to them.
    void setContextName(const std::optional<std::string> &name);

    /// For how long its worker has been at one piece of work; 0 while it does nothing.
    std::chrono::nanoseconds workingFor() const { return worker_.workingFor(); }

    /// Changes between rendering live and offline. Not while `run` may run.
    void setOffline(bool offline);

private:
    template <typename Interface>
    const Interface *extension(const char *uri) const;
    void makeRunBuffers();
    void attachWorker();
    void restore(const State &state);
    void holdForRestore(const std::function<void()> &operation);
    void holdAlways(const std::function<void()> &operation);

    struct Block {
        const float *const *inputs;
        float *const *outputs;
        std::uint32_t frames;
        std::int64_t sampleTime;
    };
    // Of a block of any length.
    REALTIME void runBlock(const Block &block) noexcept;
    REALTIME void runAsItIs(const Block &block) noexcept;
    REALTIME void runInParts(const Block &block) noexcept;
    REALTIME void runGathered(const Block &block) noexcept;
    REALTIME EventBuffer &arrivedEvents(std::uint32_t frames) noexcept;
    // Of a length that the plug-in takes. `addEvents` gets the buffer for MIDI.
    template <typename AddEvents, typename TakeMidi>
    REALTIME void runOnce(const Block &block, AddEvents addEvents, TakeMidi takeMidi) noexcept;
    template <typename AddEvents>
    REALTIME void runConnected(std::uint32_t frames, std::int64_t sampleTime,
                               AddEvents addEvents) noexcept;
    REALTIME void tellPosition(std::uint32_t frames, std::int64_t sampleTime) noexcept;
    template <typename TakeMidi>
    REALTIME void collectMidi(std::uint32_t frames, TakeMidi takeMidi) noexcept;
    REALTIME void emit(std::size_t output, std::int64_t sampleTime,
                       std::span<const std::uint8_t> bytes) noexcept;
    REALTIME void checkBounds(bool outputsAreIntact) noexcept;

    Plugin &plugin_;
    Exchange &exchange_;
    Settings settings_;
    PortBuffers buffers_;
    TimePosition position_;
    std::int64_t expectedTime_ = -1; // none before the first run
    // Where the plug-in insists on lengths of run: a block's events, and what gathers
    // blocks into runs of one length, or else divides them.
    std::optional<EventBuffer> arrived_;
    std::optional<FixedRuns> fixedRuns_;
    std::optional<BlockParts> parts_;
    // Where bounds are checked.
    std::optional<GuardedOutputs> guarded_;
    bool toldOfBounds_ = false;
    bool toldOfEvents_ = false;
    Worker worker_;
    Features features_;
    RunGate gate_;
    // Made when the first view asks for it.
    std::unique_ptr<PortTraffic> ownTraffic_;
    std::atomic<PortTraffic *> traffic_{nullptr};
    InstancePointer instance_;
    bool restoresWhileRunning_;
    std::atomic<bool> stateHasChanged_{false};
    std::atomic<float> latency_{0.0F};
};

} // namespace platform::lv2
