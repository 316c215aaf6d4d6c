#include "Platform/Audio/SampleRing.hpp"

#include <algorithm>

namespace platform::audio
{

namespace
{

// Of whole blocks, so that blocks of one size never run over the end.
std::uint32_t roundedUp(std::uint32_t capacity, std::uint32_t block)
{
    return std::max(1U, (capacity + block - 1) / block) * block;
}

} // namespace

SampleRing::SampleRing(const AVAudioFormat &format, std::uint32_t capacity,
                       std::uint32_t largestBlock)
    : capacity_(roundedUp(capacity, std::max(largestBlock, 1U))), largestBlock_(largestBlock),
      samples_(format, capacity_ + largestBlock_), back_(format.channelCount()),
      front_(format.channelCount())
{
}

std::uint32_t SampleRing::available() const noexcept
{
    // The later of the two is read last, so that the difference is never negative.
    const std::uint64_t taken = taken_.frames.load(std::memory_order_acquire);
    return static_cast<std::uint32_t>(written_.frames.load(std::memory_order_acquire) - taken);
}

std::uint32_t SampleRing::write(const float *const *channels, std::uint32_t offset,
                                std::uint32_t frames)
{
    std::uint32_t done = 0;
    while (done < frames) {
        const Room room = back();
        const std::uint32_t count = std::min(frames - done, room.frames);
        if (count == 0)
            break;
        for (std::size_t channel = 0; channel < front_.size(); ++channel)
            std::copy_n(channels[channel] + offset + done, count, room.channels[channel]);
        add(count);
        done += count;
    }
    return done;
}

SampleRing::Room SampleRing::back()
{
    const std::uint32_t place = written_.place;
    for (std::size_t channel = 0; channel < back_.size(); ++channel)
        back_[channel] = samples_.floatChannelData()[channel] + place;
    return {back_.data(), std::min(space(), capacity_ - place)};
}

void SampleRing::add(std::uint32_t frames)
{
    written_.moveOn(frames, capacity_);
}

const float *const *SampleRing::front(std::uint32_t frames) noexcept
{
    const std::uint32_t place = taken_.place;
    if (place + frames > capacity_)
        completeBehindTheEnd(place + frames - capacity_);
    for (std::size_t channel = 0; channel < front_.size(); ++channel)
        front_[channel] = samples_.floatChannelData()[channel] + place;
    return front_.data();
}

void SampleRing::completeBehindTheEnd(std::uint32_t frames) noexcept
{
    for (std::size_t channel = 0; channel < front_.size(); ++channel) {
        float *const samples = samples_.floatChannelData()[channel];
        std::copy_n(samples, frames, samples + capacity_);
    }
}

void SampleRing::take(std::uint32_t frames) noexcept
{
    taken_.moveOn(frames, capacity_);
}

} // namespace platform::audio
