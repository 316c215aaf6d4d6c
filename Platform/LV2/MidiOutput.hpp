#pragma once

#include "Platform/Foundation/Realtime.hpp"
#include "Platform/LV2/MessageRing.hpp"

#include <atomic>
#include <cstdint>
#include <optional>
#include <span>

namespace platform::lv2
{

/// MIDI that a plug-in emitted, on its way from the audio callback to the thread
/// that hands it on.
class MidiOutput
{
public:
    /// One message.
    struct Event {
        /// Frames since rendering began.
        std::int64_t sampleTime;
        /// Which of the plug-in's MIDI outputs, from 0.
        std::uint8_t output;
        /// The message, valid until the next is asked for.
        std::span<const std::uint8_t> bytes;
    };

    MidiOutput();

    /// On the audio callback. An event for which there is no room is counted as lost.
    REALTIME void push(const Event &event) noexcept;

    /// Counts events as lost that were so before they came here. Any thread.
    REALTIME void countLost(std::uint64_t events) noexcept
    {
        if (events > 0)
            lost_.fetch_add(events, std::memory_order_relaxed);
    }

    /// How many events there have been, lost ones too. On the audio callback.
    REALTIME std::uint64_t count() const noexcept { return count_; }

    /// The next event, valid until the next call. One thread at a time.
    std::optional<Event> pop();

    /// How many events were lost since the last call. Any thread.
    std::uint64_t takeLostCount() { return lost_.exchange(0, std::memory_order_relaxed); }

private:
    MessageRing ring_;
    std::uint64_t count_ = 0;
    std::atomic<std::uint64_t> lost_{0};
};

} // namespace platform::lv2
