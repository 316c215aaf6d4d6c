#pragma once

#include "Platform/Audio/AVAudioPCMBuffer.hpp"

#include <memory>

namespace platform::audio
{

/// The audio of `buffer` in another format, whole. Any thread; allocates. A
/// `PlatformError` when the rate cannot be converted.
std::unique_ptr<AVAudioPCMBuffer> convertBuffer(const AVAudioPCMBuffer &buffer,
                                                const AVAudioFormat &format);

} // namespace platform::audio
