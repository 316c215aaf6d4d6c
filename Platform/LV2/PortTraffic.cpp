#include "Platform/LV2/PortTraffic.hpp"

#include "Platform/LV2/PortBuffers.hpp"

#include <algorithm>
#include <span>

namespace platform::lv2
{

namespace
{

// A view looks every 33 ms, after several blocks.
constexpr std::size_t sequencesKept = 4;
constexpr std::size_t leastRoom = 262144;

std::size_t roomFor(std::uint32_t sequenceSize)
{
    return std::max(sequencesKept * sequenceSize, leastRoom);
}

} // namespace

PortTraffic::PortTraffic(std::uint32_t sequenceSize)
    : toView_(roomFor(sequenceSize)), toPlugin_(roomFor(sequenceSize))
{
}

void PortTraffic::setWatched(bool watched)
{
    while (watched && next()) {
    }
    isWatched_.store(watched, std::memory_order_relaxed);
}

bool PortTraffic::send(std::uint32_t port, const LV2_Atom &atom)
{
    const Head head{port, 0, atom};
    return toPlugin_.write(std::as_bytes(std::span(&head, 1)),
                           {static_cast<const std::byte *>(LV2_ATOM_BODY_CONST(&atom)), atom.size});
}

std::optional<PortTraffic::Event> PortTraffic::nextOf(MessageRing &ring) noexcept
{
    const auto message = ring.read();
    if (!message)
        return std::nullopt;
    const auto *head = reinterpret_cast<const Head *>(message->data());
    return Event{head->port, &head->atom};
}

std::optional<PortTraffic::Event> PortTraffic::next()
{
    return nextOf(toView_);
}

void PortTraffic::deliver(PortBuffers &buffers) noexcept
{
    while (const auto event = nextOf(toPlugin_))
        if (EventBuffer *input = buffers.events(event->port))
            input->append(0, event->atom->type,
                          {static_cast<const std::uint8_t *>(LV2_ATOM_BODY_CONST(event->atom)),
                           event->atom->size});
}

void PortTraffic::collect(PortBuffers &buffers) noexcept
{
    buffers.forEachOutputEvent([&](std::uint32_t port, const EventBuffer::Event &event) {
        const Head head{port, 0, {static_cast<std::uint32_t>(event.bytes.size()), event.type}};
        toView_.write(std::as_bytes(std::span(&head, 1)), std::as_bytes(event.bytes));
    });
}

} // namespace platform::lv2
