#pragma once

#include <cstdint>
#include <string>

namespace platform::audio
{

/// Throws a `PlatformError` in the unit's name for blocks that nobody can render.
void requireRenderable(const std::string &unitName, double sampleRate, std::uint32_t maximumFrames);

} // namespace platform::audio
