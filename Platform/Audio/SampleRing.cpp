#include "Platform/Audio/SampleRing.hpp"

#include <algorithm>

namespace platform::audio
{

SampleRing::SampleRing(const AVAudioFormat &format, std::uint32_t capacity)
    : format_(format), capacity_(capacity)
{
    for (std::uint32_t channel = 0; channel < format.channelCount(); ++channel)
        queues_.emplace_back(capacity);
}

std::uint32_t SampleRing::available() const noexcept
{
    return static_cast<std::uint32_t>(queues_.back().read_available());
}

std::uint32_t SampleRing::space() const
{
    return static_cast<std::uint32_t>(queues_.back().write_available());
}

std::uint32_t SampleRing::write(const float *const *channels, std::uint32_t offset,
                                std::uint32_t frames)
{
    const std::uint32_t count = std::min(frames, space());
    for (Queue &queue : queues_)
        queue.push(*channels++ + offset, count);
    return count;
}

std::uint32_t SampleRing::read(float *const *channels, std::uint32_t frames) noexcept
{
    const std::uint32_t count = std::min(frames, available());
    for (Queue &queue : queues_)
        queue.pop(*channels++, count);
    return count;
}

} // namespace platform::audio
