#pragma once

#include "Platform/Foundation/URL.hpp"
#include "Tests/Utilities/Channels.hpp"

#include <cstdint>
#include <filesystem>
#include <string>

namespace test
{

enum class WaveSamples { unsignedByte, float32 };

/// The header of a WAVE file, 44 bytes, which interleaved samples follow.
std::string waveHeader(WaveSamples samples, std::uint32_t rate, std::uint32_t channels,
                       std::uint32_t frames);

/// Writes a WAVE file of 32-bit float samples, which are read back bit for bit.
/// Decoders tell it by its content, whatever its name.
URL writeWave(const std::filesystem::path &path, const Channels &channels, std::uint32_t rate);

} // namespace test
