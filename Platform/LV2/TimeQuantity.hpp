#pragma once

#include <cstddef>
#include <cstdint>

namespace platform::lv2
{

/// What a position in time consists of, in the order of `timeQuantityURIs`.
enum class TimeQuantity : std::uint8_t {
    frame,
    framesPerSecond,
    speed,
    bar,
    barBeat,
    beat,
    beatUnit,
    beatsPerBar,
    beatsPerMinute,
};

inline constexpr std::size_t timeQuantityCount = 9;

} // namespace platform::lv2
