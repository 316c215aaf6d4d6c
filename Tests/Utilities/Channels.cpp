#include "Tests/Utilities/Channels.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>

namespace test
{

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

Channels constant(std::size_t channelCount, std::size_t frames, float value)
{
    return {channelCount, std::vector<float>(frames, value)};
}

std::int64_t firstDifference(const Channels &left, const Channels &right)
{
    std::int64_t first = -1;
    const std::size_t count = std::min(left.size(), right.size());
    for (std::size_t channel = 0; channel < count; ++channel) {
        const auto &a = left[channel];
        const auto &b = right[channel];
        const auto length = static_cast<std::ptrdiff_t>(std::min(a.size(), b.size()));
        const auto found =
            std::mismatch(a.begin(), a.begin() + length, b.begin()).first - a.begin();
        if ((found < length || a.size() != b.size()) && (first < 0 || found < first))
            first = found;
    }
    return left.size() == right.size() ? first : 0;
}

Channels repeated(const Channels &part, std::size_t times)
{
    Channels whole(part.size());
    for (std::size_t channel = 0; channel < part.size(); ++channel)
        for (std::size_t time = 0; time < times; ++time)
            whole[channel].insert(whole[channel].end(), part[channel].begin(), part[channel].end());
    return whole;
}

} // namespace test
