#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace test
{

/// Samples channel by channel.
using Channels = std::vector<std::vector<float>>;

/// Reproducible noise between -0.5 and 0.5, another in each channel and for each seed.
Channels noise(std::size_t channelCount, std::size_t frames, std::uint32_t seed = 1);

/// A sine of `frequency` Hz and the given amplitude in every channel.
Channels sine(std::size_t channelCount, std::size_t frames, double frequency, double rate,
              double amplitude = 0.5);

/// One value throughout.
Channels constant(std::size_t channelCount, std::size_t frames, float value);

/// The first frame in which the two differ, or -1. Different lengths differ at
/// the end of the shorter.
std::int64_t firstDifference(const Channels &left, const Channels &right);

/// `part` laid end to end.
Channels repeated(const Channels &part, std::size_t times);

} // namespace test
