#pragma once

#include "Platform/Audio/AVAudioPCMBuffer.hpp"
#include "Platform/Audio/ChannelMap.hpp"
#include "Platform/Audio/RateConverter.hpp"

#include <cstdint>
#include <memory>
#include <optional>

class AVAudioFile;

namespace platform::audio
{

/// Turns files, one after the other, into one stream of frames in a format. The
/// rate converter lives on from file to file, so that a file that follows itself
/// has no edge.
///
/// `produce` and `drain` leave frames to be taken; neither is called, nor `begin`,
/// before the last ones have been. One thread at a time.
class FileFeed
{
public:
    explicit FileFeed(const AVAudioFormat &format);
    ~FileFeed();

    const AVAudioFormat &format() const { return format_; }

    /// Goes on with `file` from the frame it stands at. Where its rate is another
    /// than the last file's, what the converter held back is there to be taken. A
    /// `PlatformError` when the rate cannot be converted.
    void begin(std::shared_ptr<AVAudioFile> file);

    /// True from `begin` until the file's last frame has been produced.
    bool hasFile() const { return file_ != nullptr; }

    /// Decodes and converts until there are frames to take or the file ends. A
    /// file without a single frame gives one block of silence, so that looping it
    /// takes time.
    void produce();

    /// Whether files are in our format already: nothing but decoding is left to do,
    /// and `decode` may take the place of `produce`.
    bool isDirect() const { return !converter_ && map_ && map_->isIdentity(); }
    /// Decodes up to a chunk of `frames` frames to where they are wanted, one pointer a
    /// channel, and answers how many. None at the file's end, where a silence may
    /// be left to be taken as after `produce`.
    std::uint32_t decode(float *const *channels, std::uint32_t frames);

    /// Gives a short silence.
    void silence();

    /// Gives out what the converter holds back, when nothing follows.
    void drain();
    bool holdsBack() const { return converterHasInput_; }

    /// The frames to be taken lie from `offset` on in each channel.
    const float *const *channels() const { return channels_; }
    std::uint32_t offset() const { return taken_; }
    std::uint32_t frames() const { return ready_ - taken_; }
    void take(std::uint32_t count) { taken_ += count; }

private:
    std::uint32_t readChunk(float *const *channels, std::uint32_t frames);
    void convert(const float *const *source, std::uint32_t frames, bool end);
    void makeRoom(std::uint32_t count);
    void offer(const float *const *channels, std::uint32_t count);

    AVAudioFormat format_;
    std::shared_ptr<AVAudioFile> file_;
    bool fileGaveFrames_ = false;
    std::unique_ptr<AVAudioPCMBuffer> read_; // as the file has them
    std::optional<ChannelMap> map_;
    std::unique_ptr<AVAudioPCMBuffer> mapped_; // in our channels, at the file's rate
    std::unique_ptr<RateConverter> converter_;
    bool converterHasInput_ = false;
    std::unique_ptr<AVAudioPCMBuffer> converted_; // in our format
    const float *const *channels_ = nullptr;
    std::uint32_t ready_ = 0;
    std::uint32_t taken_ = 0;
};

} // namespace platform::audio
