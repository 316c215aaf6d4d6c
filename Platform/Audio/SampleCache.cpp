#include "Platform/Audio/SampleCache.hpp"

#include "Platform/Audio/FFmpegStream.hpp"

#include <algorithm>

namespace platform::audio
{
namespace
{
constexpr std::int64_t blockFrames = 8'192;
} // namespace

SampleCache::SampleCache(int channelCount)
    : channelCount_(static_cast<std::size_t>(channelCount)), channels_(channelCount_)
{
}

std::int64_t SampleCache::bytes() const
{
    return static_cast<std::int64_t>(blocks_.size() * channelCount_ * sizeof(float)) * blockFrames;
}

bool SampleCache::extend(FFmpegStream &stream, std::int64_t frame)
{
    while (frames_ < frame) {
        const std::int64_t offset = frames_ % blockFrames;
        if (offset == 0 && frames_ / blockFrames == static_cast<std::int64_t>(blocks_.size()))
            blocks_.push_back(std::make_unique_for_overwrite<float[]>(
                channelCount_ * static_cast<std::size_t>(blockFrames)));
        for (std::size_t channel = 0; channel < channelCount_; ++channel)
            channels_[channel] =
                blocks_.back().get() + channel * static_cast<std::size_t>(blockFrames);
        const std::int64_t wanted = std::min(frame - frames_, blockFrames - offset);
        const std::int64_t done =
            stream.read(channels_.data(), static_cast<std::size_t>(offset), wanted);
        frames_ += done;
        if (done < wanted)
            return false;
    }
    return true;
}

void SampleCache::copy(std::int64_t first, std::int64_t count, float *const *channels) const
{
    std::int64_t done = 0;
    while (done < count) {
        const std::int64_t offset = (first + done) % blockFrames;
        const std::int64_t step = std::min(count - done, blockFrames - offset);
        const float *block = blocks_[static_cast<std::size_t>((first + done) / blockFrames)].get();
        for (std::size_t channel = 0; channel < channelCount_; ++channel)
            std::copy_n(block + static_cast<std::int64_t>(channel) * blockFrames + offset, step,
                        channels[channel] + done);
        done += step;
    }
}

} // namespace platform::audio
