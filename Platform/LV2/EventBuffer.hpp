#pragma once

#include "Platform/Foundation/Realtime.hpp"

#include <lv2/atom/atom.h>
#include <lv2/urid/urid.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace platform::lv2
{

/// The buffer of one atom port: a sequence of events with frame times.
class EventBuffer
{
public:
    /// One event of the sequence.
    struct Event {
        std::int64_t frame;                  ///< of the block
        LV2_URID type;                       ///< of the atom
        std::span<const std::uint8_t> bytes; ///< the atom's body, in the buffer
    };

    /// Room for `capacity` bytes, of which the header takes 16; `reserve` is how far it
    /// may grow, if that is more.
    explicit EventBuffer(std::uint32_t capacity, std::uint32_t reserve = 0);

    /// What the port is connected to.
    LV2_Atom_Sequence *sequence() { return reinterpret_cast<LV2_Atom_Sequence *>(words_.data()); }
    /// In bytes, the header among them.
    std::uint32_t capacity() const { return capacity_; }
    /// Makes room for so many bytes, where they are and with what they hold. Answers
    /// false when the reserve is smaller.
    REALTIME bool grow(std::size_t capacity) noexcept;

    /// An empty sequence, for an input.
    REALTIME void clear() noexcept;
    /// Adds an event; frames must not decrease. Answers false when it has no room.
    REALTIME bool append(std::int64_t frame, LV2_URID type,
                         std::span<const std::uint8_t> bytes) noexcept;

    /// An empty chunk of the whole capacity, which an output is to be before each
    /// run.
    REALTIME void offerChunk() noexcept;

    /// Whether nobody has written behind the buffer's end.
    REALTIME bool isIntact() const noexcept;

    /// Calls `visit(Event)` for each event that the plug-in wrote, trusting none of
    /// the sizes in it.
    template <typename Visit>
    REALTIME void forEach(Visit visit) noexcept
    {
        for (const LV2_Atom_Event *event = first(); event; event = next(event))
            visit(Event{event->time.frames,
                        event->body.type,
                        {reinterpret_cast<const std::uint8_t *>(event + 1), event->body.size}});
    }

private:
    void guardEnd() noexcept;
    const LV2_Atom_Event *first() noexcept;
    const LV2_Atom_Event *next(const LV2_Atom_Event *event) noexcept;
    const LV2_Atom_Event *checked(std::size_t offset) noexcept;

    std::uint32_t capacity_;
    // Eight-byte words, since atoms are aligned so: the capacity, a guard, the reserve.
    std::vector<std::uint64_t> words_;
};

} // namespace platform::lv2
