#pragma once

#include "Platform/Audio/AUAudioUnit.hpp"
#include "Platform/Foundation/Realtime.hpp"
#include "Platform/LV2/MidiOutput.hpp"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace platform::audio
{

/// Hands the MIDI that a plug-in leaves on the audio callback to the handler.
class MIDIDelivery
{
public:
    /// How often to deliver. The callback wakes nobody: MIDI waits for a look.
    static constexpr std::chrono::milliseconds interval{5};

    MIDIDelivery(std::string unitName, std::shared_ptr<lv2::MidiOutput> output);

    /// Hands on what is there. One thread, the unit's MIDI thread.
    void deliver();

    /// Offline every event is handed on. Live, as many as a person or an instrument may
    /// send, and no flood that would drown who takes them. Any thread.
    void setOffline(bool offline) { isOffline_.store(offline, std::memory_order_relaxed); }

    /// Null drops what comes. A handler that was replaced is not running any more
    /// on return, unless it replaces itself. Any thread.
    void setHandler(AUMIDIOutputEventBlock handler);

    /// Any thread.
    REALTIME bool hasHandler() const noexcept
    {
        return hasHandler_.load(std::memory_order_relaxed);
    }

private:
    void refillBudget();
    bool takesFromBudget();
    void deliverEvent(const lv2::MidiOutput::Event &event);
    void reportLosses();

    const std::string unitName_;
    const std::shared_ptr<lv2::MidiOutput> output_;
    std::atomic<std::thread::id> deliveringThread_{};
    // Held while the handler runs.
    std::mutex handlerMutex_;
    std::shared_ptr<const AUMIDIOutputEventBlock> handler_;
    std::atomic<bool> hasHandler_{false};
    std::atomic<bool> isOffline_{false};
    // Of events that may be handed on now.
    double budget_;
    std::chrono::steady_clock::time_point lastRefill_;
    std::uint64_t refused_ = 0;
    bool lossesWereReported_ = false;
    std::vector<std::uint8_t> padded_;
};

} // namespace platform::audio
