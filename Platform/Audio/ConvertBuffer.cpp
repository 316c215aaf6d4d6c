#include "Platform/Audio/ConvertBuffer.hpp"

#include "Platform/Audio/ChannelMap.hpp"
#include "Platform/Audio/RateConverter.hpp"

#include <cmath>

namespace platform::audio
{

std::unique_ptr<AVAudioPCMBuffer> convertBuffer(const AVAudioPCMBuffer &buffer,
                                                const AVAudioFormat &format)
{
    const std::uint32_t frames = buffer.frameLength();
    const AVAudioFormat mappedFormat(buffer.format().sampleRate(), format.channelCount());
    auto mapped = std::make_unique<AVAudioPCMBuffer>(mappedFormat, frames);
    ChannelMap(buffer.format().channelCount(), format.channelCount())
        .apply(buffer.floatChannelData(), mapped->floatChannelData(), frames);
    mapped->setFrameLength(frames);
    if (mappedFormat == format)
        return mapped;

    RateConverter converter(mappedFormat.sampleRate(), format.sampleRate(), format.channelCount());
    const auto expected = static_cast<std::uint32_t>(std::ceil(frames * converter.ratio()));
    auto converted = std::make_unique<AVAudioPCMBuffer>(format, expected);
    const RateConverter::Progress progress = converter.process(
        mapped->floatChannelData(), 0, frames, converted->floatChannelData(), 0, expected, true);
    converted->setFrameLength(progress.made);
    return converted;
}

} // namespace platform::audio
