#include "Tests/Platform/Audio/Files/AudioFiles.hpp"

#include "Tests/Utilities/WaveFile.hpp"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>

void writeBytes(const std::string &path, const Bytes &bytes)
{
    std::ofstream file(path, std::ios::binary);
    file.write(reinterpret_cast<const char *>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
    EXPECT_TRUE(file.flush()) << path;
}

void writeText(const std::string &path, std::string_view text)
{
    writeBytes(path, Bytes(text.begin(), text.end()));
}

std::size_t find(const Bytes &bytes, std::string_view text, std::size_t start)
{
    const auto from = bytes.begin() + static_cast<std::ptrdiff_t>(start);
    const auto found = std::search(from, bytes.end(), text.begin(), text.end());
    EXPECT_NE(found, bytes.end()) << text;
    return static_cast<std::size_t>(found - bytes.begin());
}

void put32(Bytes &bytes, std::size_t offset, std::uint32_t value)
{
    for (std::size_t i = 0; i < 4; ++i)
        bytes.at(offset + i) = static_cast<std::uint8_t>(value >> (24 - 8 * i));
}

Bytes wave(std::uint32_t sampleRate, std::uint16_t channels, std::uint32_t frames)
{
    const std::string header =
        test::waveHeader(test::WaveSamples::unsignedByte, sampleRate, channels, frames);
    Bytes bytes(header.begin(), header.end());
    bytes.resize(bytes.size() + std::size_t{frames} * channels, 128);
    return bytes;
}

Samples readFrames(AVAudioFile &file, std::int64_t count, std::uint32_t step)
{
    AVAudioPCMBuffer buffer(*file.processingFormat(), step);
    Samples samples;
    while (count > 0) {
        file.read(buffer, static_cast<std::uint32_t>(std::min<std::int64_t>(count, step)));
        if (buffer.frameLength() == 0)
            break;
        const std::uint32_t channels = buffer.format().channelCount();
        const std::size_t begin = samples.size();
        samples.resize(begin + std::size_t{buffer.frameLength()} * channels);
        float *const block = samples.data() + begin;
        for (std::uint32_t channel = 0; channel < channels; ++channel) {
            const float *const from = buffer.floatChannelData()[channel];
            for (std::size_t frame = 0; frame < buffer.frameLength(); ++frame)
                block[frame * channels + channel] = from[frame];
        }
        count -= buffer.frameLength();
    }
    return samples;
}

Samples readAll(AVAudioFile &file)
{
    file.setFramePosition(0);
    // One more than there are: what lies past the end would show.
    return readFrames(file, file.length() + 1);
}

Samples part(const Samples &samples, std::int64_t first, std::int64_t count, std::uint32_t channels)
{
    const auto size = static_cast<std::int64_t>(samples.size());
    const std::int64_t begin = std::min(first * channels, size);
    const std::int64_t end = std::min((first + count) * channels, size);
    return {samples.begin() + begin, samples.begin() + end};
}

void AudioFiles::ffmpeg(const std::string &arguments) const
{
    const std::string command =
        "cd '" + folder_.path().string() + "' && ffmpeg -v error -nostdin -y " + arguments;
    ASSERT_EQ(std::system(command.c_str()), 0) << command;
}

void AudioFiles::encode(const std::string &name, int sampleRate, int channels, int frames,
                        const std::string &codec) const
{
    std::ostringstream sound;
    for (int channel = 0; channel < channels; ++channel)
        sound << (channel > 0 ? "|" : "") << "0.3*sin(2*PI*t*(220+90*" << channel
              << "+40*sin(3*t)))+0.4*(random(0)-0.5)*exp(-12*mod(t+0.1*" << channel << ",0.5))";
    // The duration leaves room for the trim, which alone is exact to the frame.
    const double seconds = static_cast<double>(frames) / sampleRate + 0.1;
    ffmpeg("-f lavfi -i \"aevalsrc=exprs='" + sound.str() + "':s=" + std::to_string(sampleRate) +
           ":d=" + std::to_string(seconds) + "\" -af atrim=end_sample=" + std::to_string(frames) +
           " " + codec + " " + name);
}

Samples AudioFiles::decode(const std::string &name, const std::string &options) const
{
    const std::string raw = name + ".raw";
    ffmpeg(options + " -i " + name + " -f f32le " + raw);
    const Bytes bytes = bytesOf(path(raw));
    Samples samples(bytes.size() / sizeof(float));
    if (!samples.empty())
        std::memcpy(samples.data(), bytes.data(), samples.size() * sizeof(float));
    return samples;
}
