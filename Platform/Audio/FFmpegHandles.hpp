#pragma once

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

#include <memory>

namespace platform::audio
{

struct InputOutputDeleter {
    void operator()(AVIOContext *context) const
    {
        av_freep(&context->buffer);
        avio_context_free(&context);
    }
};
struct DemuxerDeleter {
    void operator()(AVFormatContext *context) const { avformat_close_input(&context); }
};
struct DecoderDeleter {
    void operator()(AVCodecContext *context) const { avcodec_free_context(&context); }
};
struct PacketDeleter {
    void operator()(AVPacket *packet) const { av_packet_free(&packet); }
};
struct FrameDeleter {
    void operator()(AVFrame *frame) const { av_frame_free(&frame); }
};

using InputOutput = std::unique_ptr<AVIOContext, InputOutputDeleter>;
using Demuxer = std::unique_ptr<AVFormatContext, DemuxerDeleter>;
using Decoder = std::unique_ptr<AVCodecContext, DecoderDeleter>;
using Packet = std::unique_ptr<AVPacket, PacketDeleter>;
using Frame = std::unique_ptr<AVFrame, FrameDeleter>;

} // namespace platform::audio
