#include "MIDI/MyMetaEvent.hpp"

#include "MIDI/MIDIConstants.hpp"
#include "Platform/Foundation/CheckedArithmetic.hpp"

#include <algorithm>
#include <array>

MyMetaEvent::MyMetaEvent(std::uint8_t type, std::span<const std::uint8_t> data)
    : size(checkedAdd<std::int64_t>(checkedInteger<std::int64_t>(data.size()),
                                    sizeof(MIDIMetaEvent)))
{
    // Before the block: there may be no memory for one that could not be described.
    const auto dataLength = checkedInteger<std::uint32_t>(data.size());
    mem = std::make_unique_for_overwrite<std::uint8_t[]>(static_cast<std::size_t>(size));
    // Zeros go only where no data will lie: each byte is written once.
    std::uint8_t *const begin = mem.get();
    std::uint8_t *const header = std::fill_n(begin, offsetof(MIDIMetaEvent, data), std::uint8_t{0});
    std::uint8_t *const dataEnd = std::copy(data.begin(), data.end(), header);
    std::fill(dataEnd, begin + size, std::uint8_t{0});
    auto *const event = reinterpret_cast<MIDIMetaEvent *>(begin);
    event->metaEventType = type;
    event->dataLength = dataLength;
}

void MyMetaEvent::withMIDIMetaEventPtr(const std::function<void(const MIDIMetaEvent *)> &body) const
{
    body(reinterpret_cast<const MIDIMetaEvent *>(mem.get()));
}

void test_MyMetaEvent()
{
    constexpr std::array<std::uint8_t, 3> data{};
    const MyMetaEvent event(META_SPECIFIC, data);
    event.withMIDIMetaEventPtr([](const MIDIMetaEvent *) {});
}
