#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace effect
{

/// The plug-in's ports by index, as `parvane.ttl` lists them.
enum class Port : std::uint32_t {
    leftIn,
    rightIn,
    leftOut,
    rightOut,
    events,
    turns,
    enabled,
    speed,
    depth,
    balance,
    drive,
    spread,
    inertia,
    mix,
    level,
    hornAngle,
    hornSpeed,
    drumAngle,
    drumSpeed,
};

constexpr std::size_t portCount = static_cast<std::size_t>(Port::drumSpeed) + 1;
constexpr Port firstControl = Port::enabled;

/// A control input's range; what a host sets outside is brought in.
struct ControlRange {
    Port port;
    float least;
    float most;
    float standard;
};

constexpr std::array<ControlRange, 9> controlRanges{{
    {Port::enabled, 0, 1, 1},
    {Port::speed, 0, 2, 1},
    {Port::depth, 0, 1, 0.75F},
    {Port::balance, -1, 1, 0},
    {Port::drive, 0, 1, 0.15F},
    {Port::spread, 0, 180, 110},
    {Port::inertia, 0.25F, 4, 1},
    {Port::mix, 0, 1, 1},
    {Port::level, -24, 12, 0},
}};
static_assert(static_cast<std::size_t>(Port::level) + 1 - static_cast<std::size_t>(firstControl) ==
              controlRanges.size());

/// The message of a turn of the horn: a wood block (76) on channel 10, which needs
/// no release.
constexpr std::array<std::uint8_t, 3> turnMessage{0x99, 76, 100};

} // namespace effect
