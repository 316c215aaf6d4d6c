#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace platform::audio
{

/// What `AVAudioFile` needs of a decoding library. The one implementation stands
/// on FFmpeg and is loaded from a module at its first use, since those libraries
/// would cost every start of the program more than all the others together.
///
/// No exception crosses the module's boundary: operations do not throw, and
/// opening hands its error over as text. One thread at a time.
///
/// Visible across modules, so that both sides mean the same type.
class [[gnu::visibility("default")]] AudioFileReader
{
public:
    AudioFileReader() = default;
    virtual ~AudioFileReader() = default;
    AudioFileReader(const AudioFileReader &) = delete;
    AudioFileReader &operator=(const AudioFileReader &) = delete;

    /// Opens the regular file at `path`. The first call loads the module. Throws
    /// a `PlatformError` for a missing module and for a file that cannot be read.
    /// Any thread.
    static std::unique_ptr<AudioFileReader> open(const std::string &path);

    /// In Hz; not checked against what the platform supports.
    virtual double sampleRate() const noexcept = 0;
    virtual std::uint32_t channelCount() const noexcept = 0;

    /// Frames that were encoded; never negative.
    virtual std::int64_t length() const noexcept = 0;

    virtual std::int64_t framePosition() const noexcept = 0;
    /// Positions outside the file are brought to its ends.
    virtual void setFramePosition(std::int64_t frame) noexcept = 0;

    /// Writes up to `frames` frames to the start of each channel's samples and
    /// answers how many; fewer at the end of the file or where it is damaged.
    virtual std::uint32_t read(float *const *channels, std::uint32_t frames) noexcept = 0;
};

/// The one function that the module exports, under the name in
/// `openAudioFileSymbol`. Sets either `reader` or `error`.
using OpenAudioFile = void (*)(const char *path, std::unique_ptr<AudioFileReader> &reader,
                               std::string &error) noexcept;
inline constexpr const char *openAudioFileSymbol = "parvaneOpenAudioFile";

} // namespace platform::audio
