#include "Platform/LV2/MidiOutput.hpp"

#include <cstddef>
#include <cstring>

namespace platform::lv2
{

namespace
{

struct Head {
    std::int64_t sampleTime;
    std::uint64_t output;
};

// A second of a MIDI cable's 3,125 bytes many times over.
constexpr std::size_t ringSize = 131072;

} // namespace

MidiOutput::MidiOutput() : ring_(ringSize) {}

void MidiOutput::push(const Event &event) noexcept
{
    ++count_;
    const Head head{event.sampleTime, event.output};
    if (!ring_.write(std::as_bytes(std::span(&head, 1)), std::as_bytes(event.bytes)))
        lost_.fetch_add(1, std::memory_order_relaxed);
}

std::optional<MidiOutput::Event> MidiOutput::pop()
{
    const auto message = ring_.read();
    if (!message)
        return std::nullopt;
    Head head{};
    std::memcpy(&head, message->data(), sizeof head);
    const auto bytes = message->subspan(sizeof head);
    return Event{head.sampleTime,
                 static_cast<std::uint8_t>(head.output),
                 {reinterpret_cast<const std::uint8_t *>(bytes.data()), bytes.size()}};
}

} // namespace platform::lv2
