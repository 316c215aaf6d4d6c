#include "Resources/Demonstration Loops/Encoding/M4aWriter.hpp"

#include <array>
#include <cstdint>
#include <memory>
#include <new>
#include <stdexcept>
#include <utility>
#include <vector>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/channel_layout.h>
#include <libavutil/opt.h>
}

namespace demonstration_loops
{

namespace
{

struct Deleter {
    void operator()(AVCodecContext *context) const { avcodec_free_context(&context); }
    void operator()(AVFrame *frame) const { av_frame_free(&frame); }
    void operator()(AVPacket *packet) const { av_packet_free(&packet); }
    void operator()(AVFormatContext *context) const
    {
        avio_closep(&context->pb);
        avformat_free_context(context);
    }
};

template <typename T>
using Handle = std::unique_ptr<T, Deleter>;

void check(int result, const char *what)
{
    if (result >= 0)
        return;
    std::array<char, AV_ERROR_MAX_STRING_SIZE> text{};
    av_strerror(result, text.data(), text.size());
    throw std::runtime_error(std::string(what) + ": " + text.data());
}

constexpr int packetFrames = 1024;

/// Packets of the loop's end that the encoder hears first, to have settled
/// (transient detection, rate control) when the loop begins.
constexpr int contextPackets = 8;

Handle<AVCodecContext> openEncoder()
{
    const AVCodec *codec = avcodec_find_encoder_by_name("aac");
    if (codec == nullptr)
        throw std::runtime_error("FFmpeg has no AAC encoder");
    Handle<AVCodecContext> encoder(avcodec_alloc_context3(codec));
    encoder->sample_fmt = AV_SAMPLE_FMT_FLTP;
    encoder->sample_rate = static_cast<int>(sampleRate);
    encoder->bit_rate = bitRate;
    encoder->thread_count = 1;
    encoder->flags |= AV_CODEC_FLAG_GLOBAL_HEADER | AV_CODEC_FLAG_BITEXACT;
    encoder->time_base = {1, static_cast<int>(sampleRate)};
    av_channel_layout_default(&encoder->ch_layout, 2);
    check(avcodec_open2(encoder.get(), codec, nullptr), "opening the AAC encoder");
    return encoder;
}

/// Packet `index` of the loop as it plays for ever; index 0 begins at its start.
Handle<AVFrame> frameOf(const StereoLoop &loop, std::int64_t index)
{
    Handle<AVFrame> frame(av_frame_alloc());
    frame->nb_samples = packetFrames;
    frame->format = AV_SAMPLE_FMT_FLTP;
    frame->sample_rate = static_cast<int>(sampleRate);
    av_channel_layout_default(&frame->ch_layout, 2);
    check(av_frame_get_buffer(frame.get(), 0), "allocating a frame");
    frame->pts = index * packetFrames;
    const auto frames = static_cast<std::int64_t>(loop.frames());
    auto *left = reinterpret_cast<float *>(frame->data[0]);
    auto *right = reinterpret_cast<float *>(frame->data[1]);
    for (std::int64_t i = 0; i < packetFrames; ++i) {
        const auto k =
            static_cast<std::size_t>(((index * packetFrames + i) % frames + frames) % frames);
        left[i] = static_cast<float>(loop.left[k]);
        right[i] = static_cast<float>(loop.right[k]);
    }
    return frame;
}

Handle<AVFormatContext> openFile(const AVCodecContext &encoder, const std::string &title,
                                 const std::string &path)
{
    AVFormatContext *raw = nullptr;
    check(avformat_alloc_output_context2(&raw, nullptr, "ipod", path.c_str()), "making a file");
    Handle<AVFormatContext> file(raw);
    file->flags |= AVFMT_FLAG_BITEXACT;
    AVStream *stream = avformat_new_stream(file.get(), nullptr);
    if (stream == nullptr)
        throw std::runtime_error("making a stream");
    check(avcodec_parameters_from_context(stream->codecpar, &encoder), "describing the stream");
    stream->time_base = encoder.time_base;
    av_dict_set(&file->metadata, "title", title.c_str(), 0);
    check(avio_open(&file->pb, path.c_str(), AVIO_FLAG_WRITE), "opening the file");

    AVDictionary *options = nullptr;
    // The edit list counts in this unit: in milliseconds it would miss the end.
    av_dict_set_int(&options, "movie_timescale", static_cast<int>(sampleRate), 0);
    const int result = avformat_write_header(file.get(), &options);
    const bool understood = av_dict_count(options) == 0;
    av_dict_free(&options);
    check(result, "writing the header");
    if (!understood)
        throw std::runtime_error("this FFmpeg does not know movie_timescale");
    return file;
}

/// Takes what the encoder has ready and keeps the packets of the loop itself.
void drain(AVCodecContext &encoder, std::int64_t frames, std::vector<Handle<AVPacket>> &ring)
{
    for (;;) {
        Handle<AVPacket> packet(av_packet_alloc());
        const int result = avcodec_receive_packet(&encoder, packet.get());
        if (result == AVERROR(EAGAIN) || result == AVERROR_EOF)
            return;
        check(result, "encoding");
        if (packet->pts >= 0 && packet->pts < frames)
            ring.push_back(std::move(packet));
    }
}

/// The loop's packets, one a thousand and twenty-four frames.
std::vector<Handle<AVPacket>> encodeRing(AVCodecContext &encoder, const StereoLoop &loop)
{
    const auto frames = static_cast<std::int64_t>(loop.frames());
    const std::int64_t end = frames / packetFrames + contextPackets;
    std::vector<Handle<AVPacket>> ring;
    for (std::int64_t index = -contextPackets; index < end; ++index) {
        check(avcodec_send_frame(&encoder, frameOf(loop, index).get()), "encoding");
        drain(encoder, frames, ring);
    }
    check(avcodec_send_frame(&encoder, nullptr), "encoding");
    drain(encoder, frames, ring);
    return ring;
}

void write(AVFormatContext &file, const AVRational &timeBase, const AVPacket &packet,
           std::int64_t time)
{
    const Handle<AVPacket> copy(av_packet_clone(&packet));
    if (!copy)
        throw std::bad_alloc();
    copy->stream_index = 0;
    copy->pts = time;
    copy->dts = time;
    copy->duration = packetFrames;
    av_packet_rescale_ts(copy.get(), timeBase, file.streams[0]->time_base);
    check(av_write_frame(&file, copy.get()), "writing a packet");
}

} // namespace

void writeM4a(const StereoLoop &loop, const std::string &title, const std::string &path)
{
    if (loop.frames() == 0 || loop.frames() % packetFrames != 0)
        throw std::invalid_argument("a loop is a whole number of packets long");
    const auto encoder = openEncoder();
    const auto ring = encodeRing(*encoder, loop);
    const auto file = openFile(*encoder, title, path);
    write(*file, encoder->time_base, *ring.back(), -packetFrames);
    std::int64_t time = 0;
    for (const auto &packet : ring) {
        write(*file, encoder->time_base, *packet, time);
        time += packetFrames;
    }
    check(av_write_trailer(file.get()), "finishing the file");
}

} // namespace demonstration_loops
