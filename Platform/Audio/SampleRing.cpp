#include "Platform/Audio/SampleRing.hpp"

#include <algorithm>

namespace platform::audio
{

SampleRing::SampleRing(const AVAudioFormat &format, std::uint32_t capacity,
                       std::uint32_t largestBlock)
    : capacity_(std::max(capacity, 1U)), largestBlock_(std::min(largestBlock, capacity_)),
      samples_(format, capacity_ + largestBlock_), front_(format.channelCount())
{
}

std::uint32_t SampleRing::available() const noexcept
{
    // The later of the two is read last, so that the difference is never negative.
    const std::uint64_t taken = taken_.load(std::memory_order_acquire);
    return static_cast<std::uint32_t>(written_.load(std::memory_order_acquire) - taken);
}

std::uint32_t SampleRing::write(const float *const *channels, std::uint32_t offset,
                                std::uint32_t frames)
{
    const std::uint32_t count = std::min(frames, space());
    const std::uint64_t written = written_.load(std::memory_order_relaxed);
    const std::uint32_t place = placeOf(written);
    const std::uint32_t untilEnd = std::min(count, capacity_ - place);
    put(channels, offset, place, untilEnd);
    put(channels, offset + untilEnd, 0, count - untilEnd);
    written_.store(written + count, std::memory_order_release);
    return count;
}

void SampleRing::put(const float *const *channels, std::uint32_t offset, std::uint32_t place,
                     std::uint32_t frames)
{
    const std::uint32_t twice = place < largestBlock_ ? std::min(frames, largestBlock_ - place) : 0;
    for (std::size_t channel = 0; channel < front_.size(); ++channel) {
        const float *const from = channels[channel] + offset;
        float *const samples = samples_.floatChannelData()[channel];
        std::copy_n(from, frames, samples + place);
        std::copy_n(from, twice, samples + capacity_ + place);
    }
}

const float *const *SampleRing::front() noexcept
{
    const std::uint32_t place = placeOf(taken_.load(std::memory_order_relaxed));
    for (std::size_t channel = 0; channel < front_.size(); ++channel)
        front_[channel] = samples_.floatChannelData()[channel] + place;
    return front_.data();
}

void SampleRing::take(std::uint32_t frames) noexcept
{
    taken_.store(taken_.load(std::memory_order_relaxed) + frames, std::memory_order_release);
}

} // namespace platform::audio
