#include "Tests/Utilities/OfflineRenderer.hpp"

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

} // namespace test
