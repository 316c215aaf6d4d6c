#pragma once

#include <bit>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>

/// Writes a file of 32-bit float samples at 48 kHz, all of them `value`. The
/// decoder tells it by its content, whatever its name.
inline void writeWaveFile(const std::filesystem::path &path, float value, std::uint32_t frames,
                          std::uint32_t channels)
{
    std::string bytes;
    const auto append = [&bytes](std::uint32_t number, int size) {
        for (int i = 0; i < size; ++i)
            bytes.push_back(static_cast<char>(number >> (8 * i) & 0xFFU));
    };
    constexpr std::uint32_t rate = 48000;
    constexpr std::uint32_t sampleSize = sizeof(float);
    const std::uint32_t dataSize = frames * channels * sampleSize;
    bytes += "RIFF";
    append(36 + dataSize, 4);
    bytes += "WAVEfmt ";
    append(16, 4);
    append(3, 2); // IEEE float
    append(channels, 2);
    append(rate, 4);
    append(rate * channels * sampleSize, 4);
    append(channels * sampleSize, 2);
    append(8 * sampleSize, 2);
    bytes += "data";
    append(dataSize, 4);
    for (std::uint32_t i = 0; i < frames * channels; ++i)
        append(std::bit_cast<std::uint32_t>(value), sampleSize);
    std::ofstream(path, std::ios::binary) << bytes;
}
