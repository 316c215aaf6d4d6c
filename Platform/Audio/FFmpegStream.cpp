#include "Platform/Audio/FFmpegStream.hpp"

#include "Platform/Audio/SampleConversion.hpp"
#include "Platform/Foundation/PlatformError.hpp"

extern "C" {
#include <libavutil/mem.h>
}

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <limits>
#include <new>
#include <string>
#include <string_view>

namespace platform::audio
{
namespace
{

constexpr int mostStreams = 64;
constexpr int ioBufferSize = 64 * 1024;
constexpr int mostChannels = 64;
constexpr int highestSampleRate = 768'000;
/// A file cut out of a stream may begin with packets that need what came before.
constexpr int mostLeadingBadPackets = 64;
/// Blocks of lossy codecs overlap; this many frames before the wanted one are
/// decoded and dropped after a seek.
constexpr std::int64_t preroll = 8'192;
constexpr std::chrono::seconds operationTime(10);
/// What decoders and demuxers take in one piece, whatever the file holds.
constexpr std::int64_t memoryForAnyFile = std::int64_t{16} * 1024 * 1024;
/// The most that a byte of a file can stand for: an entry of an index.
constexpr std::int64_t memoryForOneByte = 32;

/// Containers of sound. Others are refused: playlists and manifests would have
/// FFmpeg open further files, and each demuxer more is one more to attack.
constexpr std::array<std::string_view, 32> formats = {
    "mov,mp4,m4a,3gp,3g2,mj2",
    "matroska,webm",
    "3dostr",
    "aac",
    "ac3",
    "aiff",
    "amr",
    "ape",
    "asf",
    "au",
    "avi",
    "caf",
    "dsf",
    "dts",
    "eac3",
    "flac",
    "iff",
    "loas",
    "mlp",
    "mp3",
    "mpc",
    "mpc8",
    "mpeg",
    "mpegts",
    "ogg",
    "rm",
    "tak",
    "truehd",
    "tta",
    "w64",
    "wav",
    "wv",
};

/// Containers that state the exact number of frames, when they hold sound of one
/// of the lossless codecs below, and can seek to any of them.
constexpr std::array<std::string_view, 5> exactFormats = {"wav", "w64", "aiff", "au", "flac"};

bool isExactCodec(AVCodecID codec)
{
    return codec == AV_CODEC_ID_FLAC ||
           (codec >= AV_CODEC_ID_FIRST_AUDIO && codec < AV_CODEC_ID_ADPCM_IMA_QT);
}

template <typename Names>
bool contains(const Names &names, const char *name)
{
    return std::find(names.begin(), names.end(), std::string_view(name)) != names.end();
}

bool isMP4(const AVInputFormat &format)
{
    return std::string_view(format.name) == formats[0];
}

[[noreturn]] void throwFFmpegError(int error)
{
    if (error == AVERROR_INVALIDDATA || error == AVERROR_EOF)
        throw PlatformError("The file is damaged or not an audio file");
    if (error == AVERROR(ENOMEM))
        throw PlatformError("The file is damaged: it asks for more memory than it can need");
    if (error == AVERROR_EXIT)
        throw PlatformError("Reading the file takes too long");
    if (error == AVERROR_PATCHWELCOME)
        throw PlatformError("The file uses a feature that is not supported");
    std::array<char, AV_ERROR_MAX_STRING_SIZE> text = {};
    av_strerror(error, text.data(), text.size());
    throw PlatformError(text.data());
}

void check(int result)
{
    if (result < 0)
        throwFFmpegError(result);
}

template <typename T>
T *checkAllocated(T *pointer)
{
    if (pointer == nullptr)
        throw std::bad_alloc();
    return pointer;
}

void requireSupported(int sampleRate, int channelCount)
{
    if (sampleRate < 1 || sampleRate > highestSampleRate)
        throw PlatformError("A sample rate of " + std::to_string(sampleRate) +
                            " Hz is not supported");
    if (channelCount < 1 || channelCount > mostChannels)
        throw PlatformError("Audio with " + std::to_string(channelCount) +
                            " channels is not supported");
}

/// Has FFmpeg refuse to take more memory in one piece than a file of `size` bytes can
/// need: a few bytes may claim a header of gigabytes. Counted by the largest file so
/// far, for the limit is one for the whole process.
void limitMemory(std::int64_t size)
{
    static std::atomic<std::int64_t> largest = 0;
    std::int64_t known = largest.load();
    while (known < size && !largest.compare_exchange_weak(known, size)) {
    }
    constexpr std::int64_t most = std::numeric_limits<int>::max();
    const std::int64_t bytes = std::min(std::max(known, size), most / memoryForOneByte);
    av_max_alloc(
        static_cast<std::size_t>(std::min(memoryForAnyFile + bytes * memoryForOneByte, most)));
}

/// Takes back what the demuxer asks the decoder to drop at the beginning and the end.
void askToDropNothing(AVPacket &packet)
{
    std::size_t size = 0;
    if (auto *const request = av_packet_get_side_data(&packet, AV_PKT_DATA_SKIP_SAMPLES, &size))
        std::fill_n(request, size, std::uint8_t{0});
    packet.flags &= ~AV_PKT_FLAG_DISCARD;
}

/// What a file refers to is not opened.
int refuseToOpen(AVFormatContext * /*demuxer*/, AVIOContext ** /*io*/, const char * /*url*/,
                 int /*flags*/, AVDictionary ** /*options*/) noexcept
{
    return AVERROR(EPERM);
}

} // namespace

FFmpegStream::FFmpegStream(FileInput &input)
    : input_(input), packet_(checkAllocated(av_packet_alloc())),
      frame_(checkAllocated(av_frame_alloc()))
{
    limitMemory(input_.size());
    input_.allow(operationTime);
    openContainer();
    openDecoder();
    chooseFormat();
}

void FFmpegStream::openContainer()
{
    openInput();
    const AVInputFormat *format = nullptr;
    check(av_probe_input_buffer2(io_.get(), &format, "", nullptr, 0, 0));
    if (!contains(formats, format->name))
        throw PlatformError("Files of this kind are not supported: " +
                            std::string(format->long_name));
    if (!isMP4(*format)) {
        openDemuxer(*format, TimesOf::demuxer);
        return;
    }

    const MP4Layout layout(input_);
    openDemuxer(*format, TimesOf::layout);
    timing_ = layout.timing(static_cast<std::uint32_t>(stream_->id));
    if (!timing_) {
        demuxer_.reset();
        openInput();
        openDemuxer(*format, TimesOf::demuxer);
    }
}

void FFmpegStream::openInput()
{
    auto *buffer = static_cast<std::uint8_t *>(checkAllocated(av_malloc(ioBufferSize)));
    AVIOContext *io =
        avio_alloc_context(buffer, ioBufferSize, 0, this, readInput, nullptr, seekInput);
    if (io == nullptr) {
        av_free(buffer);
        throw std::bad_alloc();
    }
    io_.reset(io);
    inputOffset_ = 0;
}

void FFmpegStream::openDemuxer(const AVInputFormat &format, TimesOf times)
{
    AVFormatContext *demuxer = checkAllocated(avformat_alloc_context());
    demuxer->pb = io_.get();
    demuxer->io_open = refuseToOpen;
    demuxer->max_streams = mostStreams;
    AVDictionary *options = nullptr;
    if (times == TimesOf::layout)
        av_dict_set(&options, "ignore_editlist", "1", 0);
    const int result = avformat_open_input(&demuxer, "", &format, &options);
    av_dict_free(&options);
    check(result);
    demuxer_.reset(demuxer);

    // The boxes of an MP4 file have told all that decoding needs.
    if (times == TimesOf::demuxer)
        check(avformat_find_stream_info(demuxer, nullptr));
    const int index = av_find_best_stream(demuxer, AVMEDIA_TYPE_AUDIO, -1, -1, nullptr, 0);
    if (index < 0)
        throw PlatformError("There is no audio in the file");
    for (unsigned i = 0; i < demuxer->nb_streams; ++i)
        if (i != static_cast<unsigned>(index))
            demuxer->streams[i]->discard = AVDISCARD_ALL;
    stream_ = demuxer->streams[index];
}

void FFmpegStream::openDecoder()
{
    const AVCodecParameters &parameters = *stream_->codecpar;
    requireSupported(parameters.sample_rate, parameters.ch_layout.nb_channels);
    const AVCodec *codec = avcodec_find_decoder(parameters.codec_id);
    if (codec == nullptr)
        throw PlatformError("The audio is coded in a way that is not supported: " +
                            std::string(avcodec_get_name(parameters.codec_id)));

    decoder_.reset(checkAllocated(avcodec_alloc_context3(codec)));
    check(avcodec_parameters_to_context(decoder_.get(), &parameters));
    decoder_->pkt_timebase = stream_->time_base;
    decoder_->thread_count = 1;
    // The decoder would describe to us what it does not drop, frame by frame, for 5 % of
    // the time that AAC takes. AAC's drops nothing but what packets ask for.
    if (timing_ && parameters.codec_id != AV_CODEC_ID_AAC)
        decoder_->flags2 |= AV_CODEC_FLAG2_SKIP_MANUAL;
    check(avcodec_open2(decoder_.get(), codec, nullptr));
}

void FFmpegStream::chooseFormat()
{
    if (decodeBlock()) {
        origin_ = blockStart();
    } else {
        const AVCodecParameters &parameters = *stream_->codecpar;
        sampleRate_ = parameters.sample_rate;
        channelCount_ = parameters.ch_layout.nb_channels;
        if (damaged_ || badPackets_ > 0 || exactLength().value_or(0) > 0)
            throw PlatformError("The file is damaged: no audio can be decoded");
    }
    requireSupported(sampleRate_, channelCount_);
    read(nullptr, 0, primingFrames());
    position_ = 0;
}

std::int64_t FFmpegStream::primingFrames() const
{
    return timing_ ? av_rescale(timing_->start, sampleRate_, timing_->timescale) : 0;
}

std::optional<std::int64_t> FFmpegStream::exactLength() const
{
    std::int64_t length = -1;
    if (timing_)
        length = av_rescale(timing_->duration, sampleRate_, timing_->timescale);
    else if (hasExactContainer() && stream_->duration != AV_NOPTS_VALUE)
        length = framesFrom(stream_->duration, stream_->time_base);
    return length >= 0 ? std::optional(length) : std::nullopt;
}

std::int64_t FFmpegStream::approximateLength() const
{
    std::int64_t length = 0;
    if (stream_->duration != AV_NOPTS_VALUE)
        length = framesFrom(stream_->duration, stream_->time_base);
    else if (demuxer_->duration != AV_NOPTS_VALUE)
        length = framesFrom(demuxer_->duration, AVRational{1, AV_TIME_BASE});
    return std::max<std::int64_t>(length, 0);
}

std::int64_t FFmpegStream::read(float *const *channels, std::size_t offset, std::int64_t count)
{
    input_.allow(operationTime);
    std::int64_t done = 0;
    while (done < count) {
        if (blockLeft_ == 0 && !decodeBlock())
            break;
        const std::int64_t step = std::min(count - done, blockLeft_);
        if (channels != nullptr && !convertSamples(*frame_, static_cast<std::size_t>(blockOffset_),
                                                   static_cast<std::size_t>(step), channels,
                                                   offset + static_cast<std::size_t>(done)))
            break;
        blockOffset_ += step;
        blockLeft_ -= step;
        done += step;
    }
    position_ += done;
    return done;
}

bool FFmpegStream::seek(std::int64_t frame)
{
    input_.allow(operationTime);
    // A block is counted from the stream's first on, priming included.
    const std::int64_t first = origin_ + primingFrames();
    const std::int64_t time = av_rescale_q(std::max(first + frame - preroll, origin_),
                                           AVRational{1, sampleRate_}, stream_->time_base);
    if (av_seek_frame(demuxer_.get(), stream_->index, time, AVSEEK_FLAG_BACKWARD) < 0)
        return false;
    avcodec_flush_buffers(decoder_.get());
    if (!decodeBlock() || frame_->pts == AV_NOPTS_VALUE)
        return false;
    position_ = blockStart() - first;
    if (position_ > frame)
        return false;
    read(nullptr, 0, frame - position_);
    return position_ == frame;
}

/// Decodes the next block of frames into `frame_`.
bool FFmpegStream::decodeBlock()
{
    blockOffset_ = 0;
    blockLeft_ = 0;
    while (true) {
        const int result = avcodec_receive_frame(decoder_.get(), frame_.get());
        if (result == AVERROR(EAGAIN)) {
            if (!sendPacket())
                return false;
        } else if (result == AVERROR_EOF) {
            return false;
        } else if (result < 0) {
            if (!forgivesBadPacket())
                return false;
        } else if (frame_->nb_samples > 0) {
            break;
        }
    }
    if (sampleFormat_ == -1) {
        sampleFormat_ = frame_->format;
        sampleRate_ = frame_->sample_rate;
        channelCount_ = frame_->ch_layout.nb_channels;
    }
    // Nobody downstream can follow a change of format.
    if (frame_->format != sampleFormat_ || frame_->sample_rate != sampleRate_ ||
        frame_->ch_layout.nb_channels != channelCount_) {
        damaged_ = true;
        return false;
    }
    blockLeft_ = frame_->nb_samples;
    return true;
}

/// Hands the next packet to the decoder, at the end none, which makes it give out
/// what it holds. False when there is no more to be expected.
bool FFmpegStream::sendPacket()
{
    while (!damaged_) {
        int result = av_read_frame(demuxer_.get(), packet_.get());
        if (result < 0) {
            damaged_ = result != AVERROR_EOF;
            break;
        }
        if (packet_->stream_index != stream_->index) {
            av_packet_unref(packet_.get());
            continue;
        }
        damaged_ = (packet_->flags & AV_PKT_FLAG_CORRUPT) != 0;
        if (timing_)
            askToDropNothing(*packet_);
        if (!damaged_)
            result = avcodec_send_packet(decoder_.get(), packet_.get());
        av_packet_unref(packet_.get());
        if (damaged_)
            break;
        if (result >= 0)
            return true;
        if (!forgivesBadPacket())
            break;
    }
    return avcodec_send_packet(decoder_.get(), nullptr) >= 0;
}

/// A stream ends at its first bad packet, unless it has not begun yet.
bool FFmpegStream::forgivesBadPacket()
{
    damaged_ = timing_ || sampleFormat_ != -1 || ++badPackets_ > mostLeadingBadPackets;
    return !damaged_;
}

std::int64_t FFmpegStream::framesFrom(std::int64_t time, AVRational base) const
{
    return av_rescale_q(time, base, AVRational{1, sampleRate_});
}

bool FFmpegStream::hasExactContainer() const
{
    return contains(exactFormats, demuxer_->iformat->name) &&
           isExactCodec(stream_->codecpar->codec_id);
}

bool FFmpegStream::canSeek() const
{
    // Each tick of the stream's clock is a whole number of frames.
    const AVRational base = stream_->time_base;
    return (timing_ || hasExactContainer()) && base.den > 0 &&
           std::int64_t{sampleRate_} * base.num % base.den == 0;
}

/// The time of the decoded block, in frames.
std::int64_t FFmpegStream::blockStart() const
{
    return frame_->pts == AV_NOPTS_VALUE ? 0 : framesFrom(frame_->pts, stream_->time_base);
}

int FFmpegStream::readInput(void *self, std::uint8_t *bytes, int count) noexcept
{
    auto &stream = *static_cast<FFmpegStream *>(self);
    if (stream.input_.isOverdue())
        return AVERROR_EXIT;
    const std::size_t done =
        stream.input_.readAt(stream.inputOffset_, {bytes, static_cast<std::size_t>(count)});
    stream.inputOffset_ += static_cast<std::int64_t>(done);
    return done > 0 ? static_cast<int>(done) : AVERROR_EOF;
}

std::int64_t FFmpegStream::seekInput(void *self, std::int64_t offset, int whence) noexcept
{
    auto &stream = *static_cast<FFmpegStream *>(self);
    switch (whence & ~AVSEEK_FORCE) {
    case AVSEEK_SIZE:
        return stream.input_.size();
    case SEEK_SET:
        break;
    case SEEK_CUR:
        offset += stream.inputOffset_;
        break;
    case SEEK_END:
        offset += stream.input_.size();
        break;
    default:
        return AVERROR(EINVAL);
    }
    if (offset < 0)
        return AVERROR(EINVAL);
    stream.inputOffset_ = offset;
    return offset;
}

} // namespace platform::audio
