#pragma once

#include "Platform/Foundation/Realtime.hpp"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace platform::effect
{

/// A MIDI message as it crosses the link.
struct LinkEvent {
    /// To the effect, a frame of the block; from it, frames since rendering began.
    std::int64_t time = 0;
    /// Which of the effect's MIDI outputs; 0 on the way in.
    std::uint32_t output = 0;
    /// The message itself.
    std::span<const std::uint8_t> bytes;
};

/// Lays events one behind the other, each behind its time, output and size, at
/// multiples of eight bytes.
class LinkEventWriter
{
public:
    /// Writes from the beginning of `room`.
    explicit LinkEventWriter(std::span<std::byte> room) : room_(room) {}

    /// Answers false, writing nothing, when there is no room.
    REALTIME bool append(const LinkEvent &event) noexcept;
    /// How many bytes the events take.
    std::uint32_t size() const { return static_cast<std::uint32_t>(used_); }

private:
    std::span<std::byte> room_;
    std::size_t used_ = 0;
};

/// Reads the next event of `events`, which it shortens to the rest. Answers false
/// at the end, and where the sizes are no such layout: `events` is not empty then.
REALTIME bool readLinkEvent(std::span<const std::byte> &events, LinkEvent &event) noexcept;

} // namespace platform::effect
