#pragma once

#include "Platform/Foundation/Realtime.hpp"

#include <array>
#include <atomic>
#include <cstdint>
#include <span>
#include <vector>

namespace platform::effect
{

/// Remembers what MIDI has set and a new instance of the effect would not know:
/// for each channel the controllers, the programme, the pressure and the pitch
/// bend. Notes are not kept, or they would sound for ever.
class ControllerMemory
{
public:
    ControllerMemory();

    /// Notes a whole MIDI message on its way to the effect. Any thread.
    REALTIME void note(std::span<const std::uint8_t> message) noexcept;

    /// The messages that bring an instance to where the last one was. Any thread.
    std::vector<std::vector<std::uint8_t>> messages() const;

private:
    static constexpr std::size_t channelCount = 16;
    static constexpr std::size_t controllerCount = 128;
    static constexpr std::uint16_t unset = 0xFFFF;
    using Value = std::atomic<std::uint16_t>;

    struct Channel {
        std::array<Value, controllerCount> controllers;
        Value program;
        Value pressure;
        Value pitchBend;
    };

    static void forgetControllers(Channel &channel) noexcept;
    static void appendController(std::vector<std::vector<std::uint8_t>> &messages,
                                 const Channel &channel, std::uint8_t number,
                                 std::uint8_t channelNumber);

    std::array<Channel, channelCount> channels_;
};

} // namespace platform::effect
