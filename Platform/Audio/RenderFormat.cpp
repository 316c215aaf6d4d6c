#include "Platform/Audio/RenderFormat.hpp"

#include "Platform/Foundation/PlatformError.hpp"

#include <fmt/format.h>

#include <cmath>

namespace platform::audio
{

namespace
{

constexpr std::uint32_t mostFrames = 1U << 20U;

} // namespace

void requireRenderable(const std::string &unitName, double sampleRate, std::uint32_t maximumFrames)
{
    if (!std::isfinite(sampleRate) || sampleRate <= 0.0 || maximumFrames == 0 ||
        maximumFrames > mostFrames)
        throw PlatformError(fmt::format("{} cannot render blocks of {} frames at {} Hz.", unitName,
                                        maximumFrames, sampleRate));
}

} // namespace platform::audio
