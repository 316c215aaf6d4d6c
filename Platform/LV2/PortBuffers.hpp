#pragma once

#include "Platform/Foundation/Realtime.hpp"
#include "Platform/LV2/EventBuffer.hpp"
#include "Platform/LV2/Port.hpp"
#include "Platform/LV2/TimePosition.hpp"

#include <lilv/lilv.h>
#include <lv2/resize-port/resize-port.h>

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace platform::lv2
{

/// What the ports of one instance are connected to: the caller's buffers for the
/// main audio, memory of its own for everything else.
class PortBuffers
{
public:
    /// Memory for all ports, with the controls at their default values. Where `mayGrow`,
    /// the plug-in may enlarge its ports for events.
    PortBuffers(const std::vector<Port> &ports, double sampleRate, std::uint32_t maximumFrames,
                bool mayGrow = false);
    PortBuffers(const PortBuffers &) = delete;
    PortBuffers &operator=(const PortBuffers &) = delete;

    /// Audio inputs of the main signal.
    std::size_t inputCount() const { return inputs_.size(); }
    /// Audio outputs of the main signal.
    std::size_t outputCount() const { return outputs_.size(); }

    /// The largest buffer of an atom port at first, in bytes.
    std::uint32_t sequenceSize() const;
    /// The same when the plug-in has enlarged it as far as it may.
    std::uint32_t largestSequence() const;

    /// What lets the plug-in enlarge its ports for events in a run.
    LV2_Resize_Port_Resize *resizeFeature() { return &resize_; }

    /// Connects every port, the main audio for a run of no frames.
    void connect(LilvInstance *instance);
    /// Connects the main audio, one pointer a port.
    REALTIME void connectAudio(LilvInstance *instance, const float *const *inputs,
                               float *const *outputs) noexcept;

    /// Brings events and control values into the state they have before a run.
    REALTIME void prepareRun() noexcept;
    /// Whether there are ports for what `tellPosition` tells.
    REALTIME bool takesPosition() const noexcept
    {
        return !timeInputs_.empty() || !timeControls_.empty();
    }
    /// Tells the ports that are there for it where rendering stands; those for events
    /// when it is news. After `prepareRun`, before other events.
    REALTIME void tellPosition(const TimePosition &position, bool isNews) noexcept;

    /// Whether the plug-in kept to its buffers for events.
    REALTIME bool eventsAreIntact() const noexcept;

    /// Whether the plug-in said in the last run that its state has changed by itself.
    REALTIME bool stateHasChanged() noexcept;

    /// Where MIDI goes in; null where the plug-in takes none.
    EventBuffer *midiInput() { return midiInput_; }
    /// The MIDI outputs in the order of their ports.
    const std::vector<EventBuffer *> &midiOutputs() { return midiOutputs_; }
    /// The buffer of an atom port; null for other ports.
    REALTIME EventBuffer *events(std::uint32_t port) noexcept
    {
        return port < events_.size() ? events_[port] : nullptr;
    }
    /// Calls `visit(port, Event)` for all that the plug-in's atom outputs hold.
    template <typename Visit>
    REALTIME void forEachOutputEvent(Visit visit) noexcept
    {
        for (const Port &port : ports_)
            if (!port.isInput && events_[port.index])
                events_[port.index]->forEach(
                    [&](const EventBuffer::Event &event) { visit(port.index, event); });
    }

    /// Sets a control input for the next run; unknown symbols and values that are
    /// no number are passed over. Any thread.
    void setControl(const std::string &symbol, float value);
    /// The same by the port's number.
    void setControl(std::uint32_t port, float value);
    /// What a control input was set to, or what a control output had when
    /// `publishOutputs` was last called; 0 for other ports. Any thread.
    float control(std::uint32_t port) const;
    /// Lets other threads see the values of the control outputs.
    REALTIME void publishOutputs() noexcept;
    /// The values of the control inputs by symbol. Any thread.
    std::map<std::string, float> controls() const;
    /// Tells the plug-in by its port for it that time does not count. Any thread.
    void setFreeWheeling(bool freeWheeling);

    /// What the plug-in last reported, in frames; 0 without such a port.
    REALTIME float latency() const noexcept { return latency_ ? *latency_ : 0.0F; }

private:
    struct Connection {
        std::uint32_t index;
        const float *buffer;
    };

    void addAudio(const Port &port);
    void addControl(const Port &port);
    float scaleOf(const Port &port) const;
    void addEvents(const Port &port);
    float *valuesOf(const Port &port);
    void storeControl(std::uint32_t index, float value);
    REALTIME LV2_Resize_Port_Status resize(std::uint32_t port, std::size_t size) noexcept;

    const std::vector<Port> ports_;
    const double sampleRate_;
    const std::uint32_t reserve_; // of each atom port, in bytes
    LV2_Resize_Port_Resize resize_;
    // The main audio ports and what each was last connected to.
    std::vector<Connection> inputs_;
    std::vector<Connection> outputs_;
    // By port; null where the main audio or nothing is connected.
    std::vector<void *> owned_;

    std::vector<float> silence_;
    std::vector<float> nowhere_;
    // Of outputs that nobody hears, and inputs at their default values.
    std::vector<std::vector<float>> unheard_;

    // `values_` belongs to the callback; others leave theirs in `wanted_`, where they
    // also find the outputs.
    std::vector<float> values_;
    std::vector<std::atomic<float>> wanted_;
    std::atomic<bool> controlsChanged_{false};
    const float *latency_ = nullptr;

    std::vector<std::unique_ptr<EventBuffer>> eventInputs_;
    std::vector<std::unique_ptr<EventBuffer>> eventOutputs_;
    // By port; null where there is no atom port.
    std::vector<EventBuffer *> events_;
    EventBuffer *midiInput_ = nullptr;
    std::vector<EventBuffer *> timeInputs_;
    // Ports that are told one quantity of the position.
    std::vector<std::pair<std::uint32_t, TimeQuantity>> timeControls_;
    std::vector<EventBuffer *> midiOutputs_;
};

} // namespace platform::lv2
