#include "Platform/Audio/AVAudioPCMBuffer.hpp"

#include "Platform/Foundation/FatalError.hpp"

#include <memory>

namespace
{
constexpr std::size_t alignment = 64;
constexpr std::size_t samplesPerLine = alignment / sizeof(float);
} // namespace

AVAudioPCMBuffer::AVAudioPCMBuffer(const AVAudioFormat &format, std::uint32_t frameCapacity)
    : format_(format), frameCapacity_(frameCapacity)
{
    const std::size_t stride =
        (std::size_t{frameCapacity} + samplesPerLine - 1) / samplesPerLine * samplesPerLine;
    // One line more than needed, for the vector's start need not be aligned.
    samples_.resize(stride * format.channelCount() + samplesPerLine);

    void *start = samples_.data();
    std::size_t space = samples_.size() * sizeof(float);
    auto *aligned = static_cast<float *>(std::align(alignment, sizeof(float), start, space));
    for (std::uint32_t channel = 0; channel < format.channelCount(); ++channel)
        channels_.push_back(aligned + stride * channel);
}

void AVAudioPCMBuffer::setFrameLength(std::uint32_t frames)
{
    if (frames > frameCapacity_)
        fatalError("The frame length of a buffer exceeds its capacity");
    frameLength_ = frames;
}
