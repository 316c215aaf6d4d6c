#include "Platform/Audio/FileFeed.hpp"

#include "Platform/Audio/AVAudioFile.hpp"
#include "Platform/Foundation/Unwrap.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

namespace platform::audio
{

namespace
{

// Frames decoded at a time: what one AAC packet holds.
constexpr std::uint32_t chunkFrames = 1024;

// The silence that stands for an empty file.
constexpr std::uint32_t silenceFrames = 512;

// More frames than the converter ever holds back, at either rate.
constexpr std::uint32_t heldBackFrames = 16384;

} // namespace

FileFeed::FileFeed(const AVAudioFormat &format) : format_(format) {}

FileFeed::~FileFeed() = default;

void FileFeed::begin(std::shared_ptr<AVAudioFile> file)
{
    const AVAudioFormat source = *unwrap(file).processingFormat();
    const bool converts = source.sampleRate() != format_.sampleRate();
    if (converter_ && (!converts || converter_->sourceRate() != source.sampleRate())) {
        drain();
        converter_.reset();
    }
    if (converts && !converter_)
        converter_ = std::make_unique<RateConverter>(source.sampleRate(), format_.sampleRate(),
                                                     format_.channelCount());
    if (!read_ || read_->format() != source) {
        read_ = std::make_unique<AVAudioPCMBuffer>(source, chunkFrames);
        map_.emplace(source.channelCount(), format_.channelCount());
        mapped_ = std::make_unique<AVAudioPCMBuffer>(
            AVAudioFormat(source.sampleRate(), format_.channelCount()), chunkFrames);
    }
    file_ = std::move(file);
    fileGaveFrames_ = false;
}

void FileFeed::produce()
{
    while (file_ && frames() == 0) {
        const std::uint32_t count = readChunk(read_->floatChannelData(), chunkFrames);
        if (count == 0)
            continue;
        const float *const *channels = read_->floatChannelData();
        if (!map_->isIdentity()) {
            map_->apply(channels, mapped_->floatChannelData(), count);
            channels = mapped_->floatChannelData();
        }
        if (converter_)
            convert(channels, count, false);
        else
            offer(channels, count);
    }
}

std::uint32_t FileFeed::decode(float *const *channels, std::uint32_t frames)
{
    return readChunk(channels, std::min(frames, chunkFrames));
}

std::uint32_t FileFeed::readChunk(float *const *channels, std::uint32_t frames)
{
    const std::uint32_t count = file_->read(channels, frames);
    if (count > 0)
        fileGaveFrames_ = true;
    if (count == 0 || file_->framePosition() >= file_->length())
        file_.reset();
    if (count > 0 || fileGaveFrames_)
        return count;
    fileGaveFrames_ = true;
    silence();
    return 0;
}

void FileFeed::silence()
{
    makeRoom(silenceFrames);
    for (std::uint32_t channel = 0; channel < format_.channelCount(); ++channel)
        std::fill_n(converted_->floatChannelData()[channel], silenceFrames, 0.0F);
    offer(converted_->floatChannelData(), silenceFrames);
}

void FileFeed::convert(const float *const *source, std::uint32_t count, bool end)
{
    const auto expected = static_cast<std::uint32_t>(std::ceil(count * converter_->ratio()));
    makeRoom(expected + heldBackFrames);
    const RateConverter::Progress progress = converter_->process(
        source, 0, count, converted_->floatChannelData(), 0, converted_->frameCapacity(), end);
    converterHasInput_ = !end;
    offer(converted_->floatChannelData(), progress.made);
}

void FileFeed::drain()
{
    if (!converterHasInput_)
        return;
    convert(mapped_->floatChannelData(), 0, true);
    converter_->reset();
}

void FileFeed::makeRoom(std::uint32_t count)
{
    if (!converted_ || converted_->frameCapacity() < count)
        converted_ = std::make_unique<AVAudioPCMBuffer>(format_, count);
}

void FileFeed::offer(const float *const *channels, std::uint32_t count)
{
    channels_ = channels;
    ready_ = count;
    taken_ = 0;
}

} // namespace platform::audio
