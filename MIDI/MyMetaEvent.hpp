#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>

/// A meta event of a standard MIDI file in memory, as sequencers take it: a header of
/// 8 bytes and, right behind it, `dataLength` bytes, of which the record declares
/// the first.
struct MIDIMetaEvent {
    std::uint8_t metaEventType; ///< one of the `META_` constants
    std::uint8_t unused[3];     ///< zero
    std::uint32_t dataLength;   ///< bytes, in the machine's order
    std::uint8_t data[1];       ///< runs on past the record's declared end
};
static_assert(sizeof(MIDIMetaEvent) == 12 && alignof(MIDIMetaEvent) == 4);
static_assert(offsetof(MIDIMetaEvent, metaEventType) == 0);
static_assert(offsetof(MIDIMetaEvent, unused) == 1);
static_assert(offsetof(MIDIMetaEvent, dataLength) == 4);
static_assert(offsetof(MIDIMetaEvent, data) == 8);

/// One meta event with data of any length, in a single block that the object owns.
/// It is shared by pointer, never copied. Never changed after it was made, so any
/// thread may read it.
class MyMetaEvent
{
public:
    /// Takes a copy of `data`. More than 4,294,967,295 bytes are a fatal error.
    MyMetaEvent(std::uint8_t type, std::span<const std::uint8_t> data);
    ~MyMetaEvent() = default;
    MyMetaEvent(const MyMetaEvent &) = delete;
    MyMetaEvent &operator=(const MyMetaEvent &) = delete;

    /// Calls `body` once, at once. The pointer is valid until `body` returns.
    void withMIDIMetaEventPtr(const std::function<void(const MIDIMetaEvent *)> &body) const;

private:
    /// Bytes in the block: the whole declared record and the data, 4 more than the
    /// header and the data take. The last 4 are zero.
    std::int64_t size;
    std::unique_ptr<std::uint8_t[]> mem;
};

/// Makes an event with three zero bytes of data, hands it to a body that does
/// nothing, and gives it back.
void test_MyMetaEvent(); // NOLINT(readability-identifier-naming): the name its callers know
