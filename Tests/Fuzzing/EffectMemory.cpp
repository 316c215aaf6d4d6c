// The memory that is shared with an effect, written by one that means ill: whatever
// stands there, the audio callback comes back with a block or without. The input is a
// row of answers: 16 bytes of header, two for the number of bytes with events, and
// those.

#include "Platform/Effect Process/LinkSlot.hpp"
#include "Tests/Fuzzing/Require.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <memory>

namespace
{

using namespace platform::effect;
using fuzzing::require;

constexpr LinkShape shape{2, 2, 64, 2};
// So high that no time is left for an answer: the one to a block is taken before the
// next, and one thread is both sides.
constexpr double sampleRate = 1e12;

class HostileEffect
{
public:
    explicit HostileEffect(const HostEnd &host)
        : memory_(FileDescriptor(::dup(host.memory().descriptor())), host.memory().shape())
    {
    }

    /// Answers the last block with what the input begins with; answers the rest.
    std::span<const std::uint8_t> answer(std::span<const std::uint8_t> input)
    {
        LinkHeader &header = memory_.header();
        header.isRendered = take<std::uint32_t>(input);
        header.outputEventBytes = take<std::uint32_t>(input);
        header.lostEvents = take<std::uint32_t>(input);
        header.latency = take<float>(input);
        const auto size = std::min<std::size_t>(take<std::uint16_t>(input), input.size());
        const auto room = memory_.outputEvents();
        std::memcpy(room.data(), input.data(), std::min(size, room.size()));
        header.answer = header.request.load();
        return input.subspan(size);
    }

private:
    template <typename T>
    static T take(std::span<const std::uint8_t> &input)
    {
        T value{};
        const std::size_t size = std::min(input.size(), sizeof value);
        std::memcpy(&value, input.data(), size);
        input = input.subspan(size);
        return value;
    }

    LinkMemory memory_;
};

void drain(platform::lv2::MidiOutput &output, std::int64_t sampleTime)
{
    while (const auto event = output.pop()) {
        require(event->output < shape.midiOutputs && !event->bytes.empty());
        require(event->sampleTime >= 0 && event->sampleTime < sampleTime);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    MidiTraffic midi;
    auto host = std::make_unique<HostEnd>(shape, midi);
    HostileEffect effect(*host);
    LinkSlot slot{std::chrono::nanoseconds(0)};
    slot.put(std::move(host), sampleRate);

    std::array<float, 64> samples{};
    const std::array<const float *, 2> input{samples.data(), samples.data()};
    const std::array<float *, 2> output{samples.data(), samples.data()};
    std::int64_t sampleTime = 0;
    std::span<const std::uint8_t> rest(data, size);
    do {
        slot.render({input.data(), output.data(), shape.maximumFrames, sampleTime});
        sampleTime += shape.maximumFrames;
        rest = effect.answer(rest);
    } while (!rest.empty());
    slot.render({input.data(), output.data(), shape.maximumFrames, sampleTime});
    drain(midi.output, sampleTime);
    require(std::isfinite(slot.latency()) && slot.latency() >= 0.0);
    slot.clear();
    return 0;
}
