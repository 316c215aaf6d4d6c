#pragma once

#include "Platform/Audio/AVAudioFormat.hpp"
#include "Platform/Audio/AVAudioPCMBuffer.hpp"
#include "Platform/Foundation/URL.hpp"

#include <cstdint>
#include <memory>

namespace platform::audio
{
class AudioFileReader;
}

/// An audio file open for reading, decoded frame by frame: AAC in an MP4
/// container first, and whatever else FFmpeg decodes. Silence that the encoder
/// added at either end is not part of it. One thread at a time.
///
/// What takes at most 16 MiB as samples (43 s of stereo at 48 kHz) stays in memory
/// once it is decoded: reading it again is a copy, and no longer needs the file.
/// Longer files are decoded each time and take 1 MB or so, however long they are.
class AVAudioFile
{
public:
    /// Opens the file for reading. A `PlatformError` says what is wrong with one
    /// that is missing, unreadable, damaged or without audio.
    explicit AVAudioFile(const URL &forReading);
    ~AVAudioFile();
    AVAudioFile(const AVAudioFile &) = delete;
    AVAudioFile &operator=(const AVAudioFile &) = delete;

    /// Where the file lies.
    const URL &url() const { return url_; }

    /// The format in which frames are read: the file's own rate and channels.
    std::shared_ptr<AVAudioFormat> processingFormat() const { return processingFormat_; }

    /// Frames in the whole file: as many as were encoded.
    std::int64_t length() const;

    /// The frame that the next read begins with, 0 to `length`.
    std::int64_t framePosition() const;
    /// Exact to the frame; costs nothing before the next read. Positions outside the file are
    /// brought to its ends.
    void setFramePosition(std::int64_t frame);

    /// Fills `buffer` from its start with up to `frames` frames (at most its
    /// capacity) in `processingFormat` and sets its length: less than asked at
    /// the end, 0 past it. Where the file proves damaged it ends early.
    void read(AVAudioPCMBuffer &buffer, std::uint32_t frames);
    /// The same to where the caller wants them: one pointer a channel of the
    /// processing format, each to room for `frames` samples. Answers how many.
    std::uint32_t read(float *const *channels, std::uint32_t frames);

private:
    URL url_;
    std::unique_ptr<platform::audio::AudioFileReader> reader_;
    std::shared_ptr<AVAudioFormat> processingFormat_;
};
