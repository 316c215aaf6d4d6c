#include "Tests/Platform/Audio/Engine/OfflineRenderer.hpp"

#include <algorithm>

namespace test
{

Channels renderOffline(AVAudioEngine &engine, const AVAudioFormat &format, std::size_t frames,
                       std::uint32_t block)
{
    AVAudioPCMBuffer buffer(format, block);
    Channels rendered(format.channelCount());
    while (rendered.front().size() < frames) {
        const auto rest = static_cast<std::uint32_t>(frames - rendered.front().size());
        engine.renderOffline(std::min(block, rest), buffer);
        for (std::size_t channel = 0; channel < rendered.size(); ++channel) {
            const float *const samples = buffer.floatChannelData()[channel];
            rendered[channel].insert(rendered[channel].end(), samples,
                                     samples + buffer.frameLength());
        }
    }
    return rendered;
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
