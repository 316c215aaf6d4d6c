#pragma once

#include "Platform/Audio/AudioFileReader.hpp"
#include "Platform/Audio/FFmpegStream.hpp"
#include "Platform/Audio/FileInput.hpp"
#include "Platform/Audio/SampleCache.hpp"

#include <memory>
#include <optional>

namespace platform::audio
{

/// Reads audio files through FFmpeg.
///
/// What takes at most 16 MiB as samples (43 s of stereo at 48 kHz) is decoded once
/// and kept, so that a file played over and over costs a copy of its samples, is
/// the same to the bit each time, and no longer needs the file. What is longer is
/// decoded as it is read, with 1 MB or so whatever its length; going back to its
/// start opens it anew, and other positions are sought by the container's index
/// or, where that is not exact to the frame, by decoding from the start.
///
/// Opening a file whose container does not state the exact length decodes it
/// once, for at most ten seconds; after those the container's estimate serves.
class FFmpegReader final : public AudioFileReader
{
public:
    /// Throws `PlatformError`.
    explicit FFmpegReader(const std::string &path);

    double sampleRate() const noexcept override { return sampleRate_; }
    std::uint32_t channelCount() const noexcept override { return channelCount_; }
    std::int64_t length() const noexcept override { return length_; }
    std::int64_t framePosition() const noexcept override { return position_; }
    void setFramePosition(std::int64_t frame) noexcept override;
    std::uint32_t read(float *const *channels, std::uint32_t frames) noexcept override;

private:
    void measure();
    bool skipTo(std::int64_t frame);
    std::int64_t readCached(float *const *channels, std::int64_t count);
    std::int64_t readStream(float *const *channels, std::int64_t count);
    bool bringStreamToPosition();
    void reopenStream();

    std::unique_ptr<FileInput> input_;
    std::unique_ptr<FFmpegStream> stream_;
    std::optional<SampleCache> cache_;
    int sampleRate_;
    std::uint32_t channelCount_;
    std::int64_t length_ = 0;
    std::int64_t position_ = 0;
};

} // namespace platform::audio
