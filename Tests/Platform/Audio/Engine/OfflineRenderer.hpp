#pragma once

#include "Platform/Audio/AVAudioEngine.hpp"
#include "Tests/Utilities/WaveFile.hpp"

#include <cstdint>

namespace test
{

/// Renders `frames` frames of a started engine in blocks of `block` frames, the
/// last one shorter where it has to be.
Channels renderOffline(AVAudioEngine &engine, const AVAudioFormat &format, std::size_t frames,
                       std::uint32_t block);

/// The first frame in which the two differ, or -1. Different lengths differ at
/// the end of the shorter.
std::int64_t firstDifference(const Channels &left, const Channels &right);

/// `part` laid end to end.
Channels repeated(const Channels &part, std::size_t times);

} // namespace test
