#pragma once

#include "Platform/Foundation/Realtime.hpp"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace platform::lv2
{

class EventBuffer;

/// True for the bytes of one whole MIDI message: a status byte with as many data
/// bytes as it takes, or a system exclusive from 0xF0 to 0xF7.
bool isWholeMidiMessage(std::span<const std::uint8_t> bytes) noexcept;

/// MIDI messages on their way from any threads into the next block. Bounded and
/// without locks on both sides.
class MidiInput
{
public:
    static constexpr std::size_t slotCount = 256;       ///< messages that can wait
    static constexpr std::size_t longestMessage = 1024; ///< in bytes

    MidiInput();

    /// Queues a message for `frame` of the next block. Answers false when it is
    /// longer than `longestMessage`, no whole message, or all slots are taken.
    /// Any thread.
    REALTIME bool push(std::uint32_t frame, std::span<const std::uint8_t> message) noexcept;

    /// Moves what waits into the block's events, ordered by frame and then by
    /// arrival; frames past the block are brought to its last. What finds no room
    /// leads the next block. One thread at a time.
    REALTIME void drainInto(EventBuffer &events, std::uint32_t blockFrames) noexcept;

    /// Forgets what waits. Not while `drainInto` may run.
    void clear() noexcept;

private:
    enum class SlotState : std::uint8_t { free, writing, ready };
    struct Slot {
        std::atomic<SlotState> state{SlotState::free};
        // Below zero when left over from earlier blocks.
        std::int64_t frame = 0;
        std::uint64_t arrival = 0;
        std::uint16_t size = 0;
        std::array<std::uint8_t, longestMessage> bytes;
    };
    using Order = std::array<std::uint16_t, slotCount>;

    Slot *claimSlot() noexcept;
    std::size_t gatherReady(Order &order) noexcept;

    std::unique_ptr<std::array<Slot, slotCount>> slots_;
    std::atomic<std::uint64_t> arrivals_{0};
    std::atomic<std::uint32_t> waiting_{0};
};

} // namespace platform::lv2
