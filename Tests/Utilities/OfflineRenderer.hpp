#pragma once

#include "Platform/Audio/AVAudioEngine.hpp"
#include "Tests/Utilities/Channels.hpp"

#include <cstddef>
#include <cstdint>

namespace test
{

/// Renders `frames` frames of a started engine in blocks of `block` frames, the
/// last one shorter where it has to be.
Channels renderOffline(AVAudioEngine &engine, const AVAudioFormat &format, std::size_t frames,
                       std::uint32_t block);

} // namespace test
