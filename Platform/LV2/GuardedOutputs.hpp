#pragma once

#include "Platform/Foundation/Realtime.hpp"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace platform::lv2
{

/// Outputs for a plug-in with zones around each block that it must leave alone. What
/// it writes there harms nobody and is found out. The audio callback.
class GuardedOutputs
{
public:
    /// Frames on either side of a block.
    static constexpr std::size_t zone = 64;

    /// For blocks of up to `maximumFrames` frames.
    GuardedOutputs(std::size_t channels, std::uint32_t maximumFrames);

    /// Makes ready for a run of `frames` frames: where the plug-in is to write.
    REALTIME float *const *begin(std::uint32_t frames) noexcept;
    /// Copies what it wrote. Answers false when it wrote beyond its block.
    REALTIME bool end(float *const *outputs, std::uint32_t frames) noexcept;

private:
    std::vector<std::vector<float>> samples_;
    std::vector<float *> blocks_;
};

} // namespace platform::lv2
