#include "Platform/Audio/FFmpegReader.hpp"

#include "Platform/Foundation/PlatformError.hpp"

#include <algorithm>
#include <chrono>
#include <limits>

namespace platform::audio
{
namespace
{

constexpr std::int64_t mostCachedBytes = 16'777'216;
/// For what a file makes us decode without playing it.
constexpr std::chrono::seconds skippingTime(10);

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
    cache_.reset();

    if (!skipTo(std::numeric_limits<std::int64_t>::max()))
        length_ = stream_->position();
    else
        length_ = std::max(stream_->position(), stream_->approximateLength());
}

/// Decodes and drops what lies before `frame`. Answers false when the stream has
/// ended before, true also when the time for it was too short.
bool FFmpegReader::skipTo(std::int64_t frame)
{
    const auto deadline = std::chrono::steady_clock::now() + skippingTime;
    while (stream_->position() < frame && std::chrono::steady_clock::now() < deadline) {
        const std::int64_t step = std::min<std::int64_t>(frame - stream_->position(), sampleRate_);
        if (stream_->read(nullptr, 0, step) < step)
            return false;
    }
    return true;
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
    const bool isAhead = stream_ && position_ >= stream_->position();
    const bool isNear = isAhead && position_ - stream_->position() <= sampleRate_;
    if (!isNear && stream_ && position_ > 0 && stream_->canSeek()) {
        if (stream_->seek(position_))
            return true;
        reopenStream();
    } else if (!isAhead) {
        reopenStream();
    }
    skipTo(position_);
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
