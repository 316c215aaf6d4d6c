#pragma once

#include <cstddef>
#include <cstdint>

namespace platform::lv2
{

/// What a position in time consists of, as in LV2's time extension.
enum class TimeQuantity : std::uint8_t {
    frame,           ///< since rendering began
    framesPerSecond, ///< the sample rate
    speed,           ///< 1: at its own pace
    bar,             ///< counted from 0
    barBeat,         ///< within the bar, with its fraction
    beat,            ///< since rendering began, with its fraction
    beatUnit,        ///< which note is a beat: 4 for a quarter
    beatsPerBar,     ///< beats in a bar
    beatsPerMinute,  ///< the tempo
};

/// How many there are.
inline constexpr std::size_t timeQuantityCount = 9;

} // namespace platform::lv2
