#include "Platform/Audio/AVAudioFile.hpp"

#include "Platform/Audio/AudioFileReader.hpp"
#include "Platform/Foundation/FatalError.hpp"
#include "Platform/Foundation/PlatformError.hpp"

#include <algorithm>

using platform::audio::AudioFileReader;

namespace
{
std::unique_ptr<AudioFileReader> openReader(const URL &url)
{
    if (!url.isFileURL())
        throw PlatformError("Only files can be read, not " + url.description());
    return AudioFileReader::open(url.path());
}
} // namespace

AVAudioFile::AVAudioFile(const URL &forReading)
    : url_(forReading), reader_(openReader(forReading)),
      processingFormat_(
          std::make_shared<AVAudioFormat>(reader_->sampleRate(), reader_->channelCount()))
{
}

AVAudioFile::~AVAudioFile() = default;

std::int64_t AVAudioFile::length() const
{
    return reader_->length();
}

std::int64_t AVAudioFile::framePosition() const
{
    return reader_->framePosition();
}

void AVAudioFile::setFramePosition(std::int64_t frame)
{
    reader_->setFramePosition(frame);
}

void AVAudioFile::read(AVAudioPCMBuffer &buffer, std::uint32_t frames)
{
    if (buffer.format() != *processingFormat_)
        fatalError("An audio file is read into a buffer of another format");
    const std::uint32_t wanted = std::min(frames, buffer.frameCapacity());
    buffer.setFrameLength(read(buffer.floatChannelData(), wanted));
}

std::uint32_t AVAudioFile::read(float *const *channels, std::uint32_t frames)
{
    return reader_->read(channels, frames);
}
