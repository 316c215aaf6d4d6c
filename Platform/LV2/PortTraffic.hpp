#pragma once

#include "Platform/Foundation/Realtime.hpp"
#include "Platform/LV2/MessageRing.hpp"

#include <lv2/atom/atom.h>

#include <atomic>
#include <cstdint>
#include <optional>

namespace platform::lv2
{

class PortBuffers;

/// Events between the atom ports of a running plug-in and its view, in both
/// directions. Neither waits for the other: what finds no room is lost.
class PortTraffic
{
public:
    /// What one port sent.
    struct Event {
        std::uint32_t port; ///< its index
        /// With its body behind it.
        const LV2_Atom *atom;
    };

    /// Room for several of the largest sequences, of `sequenceSize` bytes.
    explicit PortTraffic(std::uint32_t sequenceSize);
    PortTraffic(const PortTraffic &) = delete;
    PortTraffic &operator=(const PortTraffic &) = delete;

    // The view's thread. ---------------------------------------------------------

    /// Whether anybody looks. Nothing that came before is seen afterwards.
    void setWatched(bool watched);
    /// Sends an atom, with its body behind it, to the input `port` for the next
    /// run. Answers false when it has no room.
    bool send(std::uint32_t port, const LV2_Atom &atom);
    /// What the plug-in sent, valid until the next call; none when that is all.
    std::optional<Event> next();

    // The audio callback. --------------------------------------------------------

    /// Whether there is a view that listens.
    REALTIME bool isWatched() const noexcept { return isWatched_.load(std::memory_order_relaxed); }
    /// Before a run: hands the plug-in what the view sent.
    REALTIME void deliver(PortBuffers &buffers) noexcept;
    /// After a run: keeps what the plug-in sent.
    REALTIME void collect(PortBuffers &buffers) noexcept;

private:
    struct Head {
        std::uint32_t port;
        std::uint32_t padding;
        LV2_Atom atom;
    };
    static std::optional<Event> nextOf(MessageRing &ring) noexcept;

    std::atomic<bool> isWatched_{false};
    MessageRing toView_;
    MessageRing toPlugin_;
};

} // namespace platform::lv2
