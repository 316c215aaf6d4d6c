#include "Platform/LV2/MidiInput.hpp"

#include "Platform/LV2/EventBuffer.hpp"
#include "Platform/LV2/Symbols.hpp"

#include <algorithm>

namespace platform::lv2
{

bool isWholeMidiMessage(std::span<const std::uint8_t> bytes) noexcept
{
    if (bytes.empty())
        return false;
    const std::uint8_t status = bytes[0];
    const auto isData = [](std::uint8_t byte) { return byte < 0x80; };
    if (status == 0xF0)
        return bytes.size() >= 2 && bytes.back() == 0xF7 &&
               std::all_of(bytes.begin() + 1, bytes.end() - 1, isData);

    std::size_t length = 0;
    if (status >= 0x80 && status < 0xF0)
        length = (status & 0xE0U) == 0xC0U ? 2 : 3;
    else if (status == 0xF2)
        length = 3;
    else if (status == 0xF1 || status == 0xF3)
        length = 2;
    else if (status == 0xF6 || (status >= 0xF8 && status != 0xF9 && status != 0xFD))
        length = 1;
    return bytes.size() == length && std::all_of(bytes.begin() + 1, bytes.end(), isData);
}

MidiInput::MidiInput() : slots_(std::make_unique<std::array<Slot, slotCount>>()) {}

MidiInput::Slot *MidiInput::claimSlot() noexcept
{
    for (Slot &slot : *slots_) {
        SlotState expected = SlotState::free;
        if (slot.state.compare_exchange_strong(
                expected, SlotState::writing, std::memory_order_acquire, std::memory_order_relaxed))
            return &slot;
    }
    return nullptr;
}

bool MidiInput::push(std::uint32_t frame, std::span<const std::uint8_t> message) noexcept
{
    if (message.size() > longestMessage || !isWholeMidiMessage(message))
        return false;
    Slot *slot = claimSlot();
    if (!slot)
        return false;
    slot->frame = frame;
    slot->arrival = arrivals_.fetch_add(1, std::memory_order_relaxed);
    slot->size = static_cast<std::uint16_t>(message.size());
    std::copy(message.begin(), message.end(), slot->bytes.begin());
    slot->state.store(SlotState::ready, std::memory_order_release);
    waiting_.fetch_add(1, std::memory_order_release);
    return true;
}

std::size_t MidiInput::gatherReady(Order &order) noexcept
{
    const auto isBefore = [this](std::uint16_t left, std::uint16_t right) {
        const Slot &a = (*slots_)[left];
        const Slot &b = (*slots_)[right];
        return a.frame != b.frame ? a.frame < b.frame : a.arrival < b.arrival;
    };
    std::size_t count = 0;
    for (std::uint16_t i = 0; i < slotCount; ++i)
        if ((*slots_)[i].state.load(std::memory_order_acquire) == SlotState::ready)
            order[count++] = i;
    std::sort(order.begin(), order.begin() + static_cast<std::ptrdiff_t>(count), isBefore);
    return count;
}

void MidiInput::drainInto(EventBuffer &events, std::uint32_t blockFrames) noexcept
{
    if (waiting_.load(std::memory_order_acquire) == 0 || blockFrames == 0)
        return;
    Order order;
    const std::size_t count = gatherReady(order);
    bool full = false;
    for (std::size_t i = 0; i < count; ++i) {
        Slot &slot = (*slots_)[order[i]];
        const auto frame = std::clamp<std::int64_t>(slot.frame, 0, blockFrames - 1);
        full = full ||
               !events.append(frame, Symbols::shared().midiEvent, {slot.bytes.data(), slot.size});
        if (full) {
            slot.frame = frame - blockFrames;
            continue;
        }
        slot.state.store(SlotState::free, std::memory_order_release);
        waiting_.fetch_sub(1, std::memory_order_relaxed);
    }
}

void MidiInput::clear() noexcept
{
    for (Slot &slot : *slots_) {
        if (slot.state.load(std::memory_order_acquire) != SlotState::ready)
            continue;
        slot.state.store(SlotState::free, std::memory_order_release);
        waiting_.fetch_sub(1, std::memory_order_relaxed);
    }
}

} // namespace platform::lv2
