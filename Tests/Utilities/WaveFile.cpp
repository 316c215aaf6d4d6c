#include "Tests/Utilities/WaveFile.hpp"

#include <bit>
#include <fstream>
#include <stdexcept>
#include <vector>

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

std::string waveHeader(WaveSamples samples, std::uint32_t rate, std::uint32_t channels,
                       std::uint32_t frames)
{
    const bool isFloat = samples == WaveSamples::float32;
    const std::uint32_t frameBytes = channels * (isFloat ? 4 : 1);
    std::string bytes = "RIFF";
    put(bytes, 36 + frames * frameBytes, 4);
    bytes += "WAVEfmt ";
    put(bytes, 16, 4);
    put(bytes, isFloat ? 3 : 1, 2); // IEEE float or PCM
    put(bytes, channels, 2);
    put(bytes, rate, 4);
    put(bytes, rate * frameBytes, 4);
    put(bytes, frameBytes, 2);
    put(bytes, isFloat ? 32 : 8, 2);
    bytes += "data";
    put(bytes, frames * frameBytes, 4);
    return bytes;
}

URL writeWave(const std::filesystem::path &path, const Channels &channels, std::uint32_t rate)
{
    const std::size_t frames = channels.front().size();
    std::string bytes =
        waveHeader(WaveSamples::float32, rate, static_cast<std::uint32_t>(channels.size()),
                   static_cast<std::uint32_t>(frames));
    // The file's order of bytes.
    static_assert(std::endian::native == std::endian::little);
    std::vector<float> samples(frames * channels.size());
    for (std::size_t channel = 0; channel < channels.size(); ++channel)
        for (std::size_t frame = 0; frame < frames; ++frame)
            samples[frame * channels.size() + channel] = channels[channel][frame];
    bytes.append(reinterpret_cast<const char *>(samples.data()), samples.size() * sizeof(float));
    std::ofstream file(path, std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!file.flush())
        throw std::runtime_error("cannot write " + path.string());
    return URL::fileURLWithPath(path.string());
}

} // namespace test
