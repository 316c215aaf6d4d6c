#include "Platform/Audio/FFmpegReader.hpp"

#include "Platform/Foundation/PlatformError.hpp"

#include <algorithm>
#include <chrono>

namespace platform::audio
{
namespace
{

constexpr std::int64_t mostCachedBytes = 16 * 1024 * 1024;
constexpr std::chrono::seconds measuringTime(10);

} // namespace

FFmpegReader::FFmpegReader(const std::string &path)
    : input_(std::make_unique<FileInput>(path)), stream_(std::make_unique<FFmpegStream>(*input_)),
      sampleRate_(stream_->sampleRate()),
      channelCount_(static_cast<std::uint32_t>(stream_->channelCount()))
{
    const std::optional<std::int64_t> exact = stream_->exactLength();
    const auto frameBytes = static_cast<std::int64_t>(channelCount_ * sizeof(float));
    if (!exact || *exact <= mostCachedBytes / frameBytes)
        cache_.emplace(stream_->channelCount());
    if (exact)
        length_ = *exact;
    else
        measure();
}

/// Decodes to the end, and keeps the samples while they are few enough.
void FFmpegReader::measure()
{
    const std::int64_t step = sampleRate_;
    while (cache_->bytes() <= mostCachedBytes) {
        if (!cache_->extend(*stream_, cache_->frames() + step)) {
            length_ = cache_->frames();
            return;
        }
    }
    length_ = cache_->frames();
    cache_.reset();

    const auto deadline = std::chrono::steady_clock::now() + measuringTime;
    std::int64_t done = step;
    while (done == step && std::chrono::steady_clock::now() < deadline) {
        done = stream_->read(nullptr, 0, step);
        length_ += done;
    }
    if (done == step)
        length_ = std::max(length_, stream_->approximateLength());
}

void FFmpegReader::setFramePosition(std::int64_t frame) noexcept
{
    position_ = std::clamp<std::int64_t>(frame, 0, length_);
}

std::uint32_t FFmpegReader::read(float *const *channels, std::uint32_t frames) noexcept
{
    const std::int64_t count = std::min<std::int64_t>(frames, length_ - position_);
    if (count <= 0)
        return 0;
    std::int64_t done = 0;
    try {
        done = cache_ ? readCached(channels, count) : readStream(channels, count);
    } catch (const std::exception &) {
        // What stops here is a lack of memory, or a file that has become another
        // under our hands: it ends early.
        stream_.reset();
    }
    position_ += done;
    return static_cast<std::uint32_t>(done);
}

std::int64_t FFmpegReader::readCached(float *const *channels, std::int64_t count)
{
    const std::int64_t end = position_ + count;
    if (stream_) {
        const bool isWhole = cache_->extend(*stream_, end);
        if (!isWhole || cache_->frames() == length_) {
            stream_.reset();
            input_.reset();
        }
    }
    const std::int64_t present = std::min(count, cache_->frames() - position_);
    if (present <= 0)
        return 0;
    cache_->copy(position_, present, channels);
    return present;
}

std::int64_t FFmpegReader::readStream(float *const *channels, std::int64_t count)
{
    return bringStreamToPosition() ? stream_->read(channels, 0, count) : 0;
}

/// Answers false when the frame to be read cannot be reached.
bool FFmpegReader::bringStreamToPosition()
{
    if (stream_ && stream_->position() == position_)
        return true;
    const bool isJustAhead = stream_ && position_ > stream_->position() &&
                             position_ - stream_->position() <= sampleRate_;
    if (!isJustAhead) {
        if (position_ > 0 && stream_ && stream_->seek(position_))
            return true;
        reopenStream();
    }
    stream_->read(nullptr, 0, position_ - stream_->position());
    return stream_->position() == position_;
}

void FFmpegReader::reopenStream()
{
    stream_.reset();
    stream_ = std::make_unique<FFmpegStream>(*input_);
    if (stream_->sampleRate() != sampleRate_ ||
        stream_->channelCount() != static_cast<int>(channelCount_))
        throw PlatformError("The file has changed");
}

} // namespace platform::audio
