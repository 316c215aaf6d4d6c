#include "Platform/Effect Process/ControllerMemory.hpp"

namespace platform::effect
{

namespace
{

constexpr std::uint8_t controlChange = 0xB0;
constexpr std::uint8_t programChange = 0xC0;
constexpr std::uint8_t channelPressure = 0xD0;
constexpr std::uint8_t pitchBendChange = 0xE0;

// From here on, controller numbers are commands to the channel as a whole.
constexpr std::uint8_t firstChannelMode = 120;
constexpr std::uint8_t resetAllControllers = 121;

constexpr std::uint8_t bankSelect = 0;
constexpr std::uint8_t bankSelectFine = 32;
constexpr std::uint8_t dataEntry = 6;
constexpr std::uint8_t dataEntryFine = 38;

constexpr bool hasItsOwnPlace(std::uint8_t controller)
{
    return controller == bankSelect || controller == bankSelectFine || controller == dataEntry ||
           controller == dataEntryFine;
}

} // namespace

ControllerMemory::ControllerMemory()
{
    for (Channel &channel : channels_) {
        forgetControllers(channel);
        channel.program.store(unset, std::memory_order_relaxed);
    }
}

void ControllerMemory::forgetControllers(Channel &channel) noexcept
{
    for (Value &controller : channel.controllers)
        controller.store(unset, std::memory_order_relaxed);
    channel.pressure.store(unset, std::memory_order_relaxed);
    channel.pitchBend.store(unset, std::memory_order_relaxed);
}

void ControllerMemory::note(std::span<const std::uint8_t> message) noexcept
{
    if (message.size() < 2 || message[0] < 0x80 || message[0] >= 0xF0)
        return;
    Channel &channel = channels_[message[0] & 0x0FU];
    const std::uint8_t kind = message[0] & 0xF0U;
    if (kind == programChange) {
        channel.program.store(message[1], std::memory_order_relaxed);
    } else if (kind == channelPressure) {
        channel.pressure.store(message[1], std::memory_order_relaxed);
    } else if (kind == pitchBendChange && message.size() == 3) {
        const auto value = static_cast<std::uint16_t>(message[2] << 7U | message[1]);
        channel.pitchBend.store(value, std::memory_order_relaxed);
    } else if (kind == controlChange && message.size() == 3) {
        if (message[1] == resetAllControllers)
            forgetControllers(channel);
        else if (message[1] < firstChannelMode)
            channel.controllers[message[1]].store(message[2], std::memory_order_relaxed);
    }
}

void ControllerMemory::appendController(std::vector<std::vector<std::uint8_t>> &messages,
                                        const Channel &channel, std::uint8_t number,
                                        std::uint8_t channelNumber)
{
    const std::uint16_t value = channel.controllers[number].load(std::memory_order_relaxed);
    if (value != unset)
        messages.push_back({static_cast<std::uint8_t>(controlChange | channelNumber), number,
                            static_cast<std::uint8_t>(value)});
}

std::vector<std::vector<std::uint8_t>> ControllerMemory::messages() const
{
    std::vector<std::vector<std::uint8_t>> result;
    for (std::uint8_t number = 0; number < channelCount; ++number) {
        const Channel &channel = channels_[number];
        const auto status = [number](std::uint8_t kind) {
            return static_cast<std::uint8_t>(kind | number);
        };
        // A programme is of the bank that was chosen before it, and data of the
        // parameter.
        appendController(result, channel, bankSelect, number);
        appendController(result, channel, bankSelectFine, number);
        const std::uint16_t program = channel.program.load(std::memory_order_relaxed);
        if (program != unset)
            result.push_back({status(programChange), static_cast<std::uint8_t>(program)});
        for (std::uint8_t controller = 0; controller < firstChannelMode; ++controller)
            if (!hasItsOwnPlace(controller))
                appendController(result, channel, controller, number);
        appendController(result, channel, dataEntry, number);
        appendController(result, channel, dataEntryFine, number);
        const std::uint16_t pressure = channel.pressure.load(std::memory_order_relaxed);
        if (pressure != unset)
            result.push_back({status(channelPressure), static_cast<std::uint8_t>(pressure)});
        const std::uint16_t bend = channel.pitchBend.load(std::memory_order_relaxed);
        if (bend != unset)
            result.push_back({status(pitchBendChange), static_cast<std::uint8_t>(bend & 0x7FU),
                              static_cast<std::uint8_t>(bend >> 7U)});
    }
    return result;
}

} // namespace platform::effect
