#pragma once

#include "Platform/Foundation/URL.hpp"

#include <cstdint>
#include <filesystem>
#include <vector>

namespace test
{

/// Samples channel by channel.
using Channels = std::vector<std::vector<float>>;

/// Writes a WAVE file of 32-bit float samples, which are read back bit for bit.
URL writeWave(const std::filesystem::path &path, const Channels &channels, std::uint32_t rate);

/// Reproducible noise between -0.5 and 0.5, another in each channel and for each seed.
Channels noise(std::size_t channelCount, std::size_t frames, std::uint32_t seed = 1);

/// A sine of `frequency` Hz and the given amplitude in every channel.
Channels sine(std::size_t channelCount, std::size_t frames, double frequency, double rate,
              double amplitude = 0.5);

} // namespace test
