#include "Platform/LV2/EventBuffer.hpp"

#include "Platform/LV2/Symbols.hpp"

#include <algorithm>
#include <cstring>

namespace platform::lv2
{

namespace
{

constexpr std::size_t wordSize = sizeof(std::uint64_t);

constexpr std::size_t guardWords = 8;
constexpr std::uint64_t untouched = 0xA5A5A5A5A5A5A5A5U;

constexpr std::size_t padded(std::size_t size)
{
    return (size + wordSize - 1) / wordSize * wordSize;
}

} // namespace

EventBuffer::EventBuffer(std::uint32_t capacity, std::uint32_t reserve)
    : capacity_(static_cast<std::uint32_t>(
          padded(std::max<std::size_t>(capacity, sizeof(LV2_Atom_Sequence))))),
      words_(std::max<std::size_t>(capacity_, padded(reserve)) / wordSize + guardWords)
{
    guardEnd();
    // The symbols are looked up here, before there is an audio callback.
    Symbols::shared();
    clear();
}

void EventBuffer::clear() noexcept
{
    LV2_Atom_Sequence &s = *sequence();
    s.atom.size = sizeof(LV2_Atom_Sequence_Body);
    s.atom.type = Symbols::shared().atomSequence;
    s.body.unit = 0;
    s.body.pad = 0;
}

void EventBuffer::offerChunk() noexcept
{
    LV2_Atom_Sequence &s = *sequence();
    s.atom.size = capacity_ - static_cast<std::uint32_t>(sizeof(LV2_Atom));
    s.atom.type = Symbols::shared().atomChunk;
}

void EventBuffer::guardEnd() noexcept
{
    std::fill_n(words_.data() + capacity_ / wordSize, guardWords, untouched);
}

bool EventBuffer::isIntact() const noexcept
{
    const std::uint64_t *const end = words_.data() + capacity_ / wordSize;
    return std::all_of(end, end + guardWords, [](std::uint64_t word) { return word == untouched; });
}

bool EventBuffer::grow(std::size_t capacity) noexcept
{
    if (capacity <= capacity_)
        return true;
    if (capacity > (words_.size() - guardWords) * wordSize)
        return false;
    capacity_ = static_cast<std::uint32_t>(padded(capacity));
    guardEnd();
    return true;
}

bool EventBuffer::append(std::int64_t frame, LV2_URID type,
                         std::span<const std::uint8_t> bytes) noexcept
{
    LV2_Atom_Sequence &s = *sequence();
    const std::size_t used = sizeof(LV2_Atom) + padded(s.atom.size);
    const std::size_t needed = sizeof(LV2_Atom_Event) + padded(bytes.size());
    if (needed > capacity_ - used)
        return false;
    std::byte *place = reinterpret_cast<std::byte *>(words_.data()) + used;
    LV2_Atom_Event event{};
    event.time.frames = frame;
    event.body.size = static_cast<std::uint32_t>(bytes.size());
    event.body.type = type;
    std::memcpy(place, &event, sizeof event);
    if (!bytes.empty())
        std::memcpy(place + sizeof event, bytes.data(), bytes.size());
    s.atom.size += static_cast<std::uint32_t>(needed);
    return true;
}

const LV2_Atom_Event *EventBuffer::checked(std::size_t offset) noexcept
{
    const LV2_Atom_Sequence &s = *sequence();
    const std::size_t end = std::min<std::size_t>(sizeof(LV2_Atom) + s.atom.size, capacity_);
    if (offset > end || end - offset < sizeof(LV2_Atom_Event))
        return nullptr;
    const auto *event = reinterpret_cast<const LV2_Atom_Event *>(
        reinterpret_cast<const std::byte *>(words_.data()) + offset);
    if (event->body.size > end - offset - sizeof(LV2_Atom_Event))
        return nullptr;
    return event;
}

const LV2_Atom_Event *EventBuffer::first() noexcept
{
    // A plug-in that writes nothing leaves the chunk; one that reports too much lies.
    const LV2_Atom_Sequence &s = *sequence();
    if (s.atom.type != Symbols::shared().atomSequence ||
        s.atom.size < sizeof(LV2_Atom_Sequence_Body) || s.atom.size > capacity_ - sizeof(LV2_Atom))
        return nullptr;
    return checked(sizeof(LV2_Atom_Sequence));
}

const LV2_Atom_Event *EventBuffer::next(const LV2_Atom_Event *event) noexcept
{
    const auto offset =
        static_cast<std::size_t>(reinterpret_cast<const std::byte *>(event) -
                                 reinterpret_cast<const std::byte *>(words_.data()));
    return checked(offset + sizeof(LV2_Atom_Event) + padded(event->body.size));
}

} // namespace platform::lv2
