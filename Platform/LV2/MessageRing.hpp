#pragma once

#include "Platform/Foundation/Realtime.hpp"

#include <boost/lockfree/spsc_queue.hpp>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace platform::lv2
{

/// Messages of any size from one thread to another, without a lock. A message is
/// written as a whole or not at all, and the reader never sees a part of one.
class MessageRing
{
public:
    /// Room for `capacity` bytes, four of which each message needs for its size.
    explicit MessageRing(std::size_t capacity);

    /// The longest message that can ever be written.
    std::size_t longestMessage() const { return outgoing_.size() - sizeof(std::uint32_t); }

    /// One thread at a time. Answers false when there is no room.
    REALTIME bool write(std::span<const std::byte> message) noexcept { return write(message, {}); }
    /// The same for a message in two parts.
    REALTIME bool write(std::span<const std::byte> head, std::span<const std::byte> tail) noexcept;

    /// The next message, valid until the next call; none when there is none. Its
    /// start is aligned for any type. One thread at a time.
    REALTIME std::optional<std::span<const std::byte>> read() noexcept;

private:
    boost::lockfree::spsc_queue<std::byte> bytes_;
    // Messages are put together here, since the queue publishes once a push.
    std::vector<std::byte> outgoing_;
    std::vector<std::byte> incoming_;
};

} // namespace platform::lv2
