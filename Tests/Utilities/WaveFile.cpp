#include "Tests/Utilities/WaveFile.hpp"

#include <cmath>
#include <cstring>
#include <fstream>
#include <numbers>
#include <random>
#include <stdexcept>
#include <string>

namespace test
{

namespace
{

void put(std::string &bytes, std::uint32_t value, int count)
{
    for (int index = 0; index < count; ++index)
        bytes.push_back(static_cast<char>((value >> (8 * index)) & 0xFFU));
}

} // namespace

URL writeWave(const std::filesystem::path &path, const Channels &channels, std::uint32_t rate)
{
    const auto channelCount = static_cast<std::uint32_t>(channels.size());
    const auto frames = static_cast<std::uint32_t>(channels.front().size());
    const std::uint32_t dataBytes = frames * channelCount * 4;
    std::string bytes = "RIFF";
    put(bytes, 36 + dataBytes, 4);
    bytes += "WAVEfmt ";
    put(bytes, 16, 4);
    put(bytes, 3, 2); // IEEE float
    put(bytes, channelCount, 2);
    put(bytes, rate, 4);
    put(bytes, rate * channelCount * 4, 4);
    put(bytes, channelCount * 4, 2);
    put(bytes, 32, 2);
    bytes += "data";
    put(bytes, dataBytes, 4);
    for (std::uint32_t frame = 0; frame < frames; ++frame) {
        for (const std::vector<float> &channel : channels) {
            std::uint32_t bits = 0;
            std::memcpy(&bits, &channel[frame], sizeof bits);
            put(bytes, bits, 4);
        }
    }
    std::ofstream file(path, std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!file)
        throw std::runtime_error("cannot write " + path.string());
    return URL::fileURLWithPath(path.string());
}

Channels noise(std::size_t channelCount, std::size_t frames, std::uint32_t seed)
{
    std::mt19937 generator(seed);
    Channels channels(channelCount, std::vector<float>(frames));
    for (std::vector<float> &channel : channels)
        for (float &sample : channel)
            sample = static_cast<float>(static_cast<double>(generator()) / 4294967296.0 - 0.5);
    return channels;
}

Channels sine(std::size_t channelCount, std::size_t frames, double frequency, double rate,
              double amplitude)
{
    std::vector<float> wave(frames);
    for (std::size_t frame = 0; frame < frames; ++frame)
        wave[frame] = static_cast<float>(amplitude * std::sin(2.0 * std::numbers::pi * frequency *
                                                              static_cast<double>(frame) / rate));
    return {channelCount, wave};
}

} // namespace test
