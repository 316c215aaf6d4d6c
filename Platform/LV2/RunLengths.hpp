#pragma once

#include <bit>
#include <cstdint>

namespace platform::lv2
{

/// Which lengths of run a plug-in insists on, in frames.
struct RunLengths {
    bool areFixed = false;       ///< all alike
    bool arePowersOfTwo = false; ///< each one of those

    /// Whether any length will do.
    bool areFree() const { return !areFixed && !arePowersOfTwo; }
    /// The longest run for blocks of up to `maximumFrames`.
    std::uint32_t longest(std::uint32_t maximumFrames) const
    {
        return arePowersOfTwo ? std::bit_floor(maximumFrames) : maximumFrames;
    }
    /// The shortest run for the same blocks.
    std::uint32_t shortest(std::uint32_t maximumFrames) const
    {
        return areFixed ? longest(maximumFrames) : 1;
    }
};

} // namespace platform::lv2
