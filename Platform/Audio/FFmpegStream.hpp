#pragma once

#include "Platform/Audio/FFmpegHandles.hpp"
#include "Platform/Audio/FileInput.hpp"
#include "Platform/Audio/MP4Timing.hpp"

#include <cstdint>
#include <optional>

namespace platform::audio
{

/// The first audio stream of a file, decoded from its beginning on. Frames are
/// counted as they come out of the decoder, less the encoder's priming. One
/// thread at a time.
class FFmpegStream
{
public:
    /// Decodes the first block, so that the format is known for sure. `input`
    /// outlives the stream. Throws `PlatformError`.
    explicit FFmpegStream(FileInput &input);

    int sampleRate() const { return sampleRate_; }
    int channelCount() const { return channelCount_; }

    /// Frames in the stream where the container says it exactly.
    std::optional<std::int64_t> exactLength() const;
    /// What the container says more or less; 0 where it says nothing.
    std::int64_t approximateLength() const;

    /// The frame that the next read begins with.
    std::int64_t position() const { return position_; }

    /// Decodes up to `count` frames to `channels` at `offset`, or drops them where
    /// `channels` is null. Fewer at the end of the stream and where it is damaged.
    std::int64_t read(float *const *channels, std::size_t offset, std::int64_t count);

    /// Whether the container's index leads exactly to a frame.
    bool canSeek() const;
    /// Goes to `frame` by that index. Answers false where the file's times prove
    /// wrong; then the position is undefined.
    bool seek(std::int64_t frame);

private:
    /// Who keeps the times of the encoder's priming and padding.
    enum class TimesOf { demuxer, layout };

    void openContainer();
    void openInput();
    void openDemuxer(const AVInputFormat &format, TimesOf times);
    void openDecoder();
    void chooseFormat();
    bool decodeBlock();
    bool sendPacket();
    bool forgivesBadPacket();
    std::int64_t primingFrames() const;
    std::int64_t framesFrom(std::int64_t time, AVRational base) const;
    bool hasExactContainer() const;
    std::int64_t blockStart() const;

    static int readInput(void *self, std::uint8_t *bytes, int count) noexcept;
    static std::int64_t seekInput(void *self, std::int64_t offset, int whence) noexcept;

    FileInput &input_;
    std::int64_t inputOffset_ = 0;
    InputOutput io_;
    Demuxer demuxer_;
    Decoder decoder_;
    Packet packet_;
    Frame frame_;
    AVStream *stream_ = nullptr;
    std::optional<MP4Timing> timing_;

    int sampleRate_ = 0;
    int channelCount_ = 0;
    int sampleFormat_ = -1;
    std::int64_t origin_ = 0;
    std::int64_t position_ = 0;
    std::int64_t blockOffset_ = 0;
    std::int64_t blockLeft_ = 0;
    int badPackets_ = 0;
    bool damaged_ = false;
};

} // namespace platform::audio
