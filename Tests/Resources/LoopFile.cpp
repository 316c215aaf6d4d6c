#include "Tests/Resources/LoopFile.hpp"

#include "Platform/Audio/FFmpegHandles.hpp"

#include <stdexcept>

using platform::audio::Decoder;
using platform::audio::Demuxer;
using platform::audio::Frame;
using platform::audio::Packet;

namespace
{

void require(bool condition, const std::string &what)
{
    if (!condition)
        throw std::runtime_error(what);
}

void append(std::vector<double> &channel, const AVFrame &frame, int index)
{
    const auto *samples = reinterpret_cast<const float *>(frame.extended_data[index]);
    channel.insert(channel.end(), samples, samples + frame.nb_samples);
}

} // namespace

LoopFile LoopFile::read(const std::filesystem::path &path)
{
    AVFormatContext *raw = nullptr;
    require(avformat_open_input(&raw, path.c_str(), nullptr, nullptr) == 0,
            path.string() + " does not open");
    const Demuxer file(raw);
    require(avformat_find_stream_info(file.get(), nullptr) >= 0 && file->nb_streams == 1,
            path.string() + " has not one stream");
    const AVStream &stream = *file->streams[0];
    const AVCodec *codec = avcodec_find_decoder(stream.codecpar->codec_id);
    const Decoder decoder(avcodec_alloc_context3(codec));
    require(avcodec_parameters_to_context(decoder.get(), stream.codecpar) >= 0 &&
                avcodec_open2(decoder.get(), codec, nullptr) >= 0,
            path.string() + " has no decoder");

    LoopFile result;
    result.codec = codec->name;
    result.rate = decoder->sample_rate;
    result.channels = decoder->ch_layout.nb_channels;
    require(result.channels == 2 && decoder->sample_fmt == AV_SAMPLE_FMT_FLTP,
            path.string() + " is not stereo");
    result.presentedFrames =
        av_rescale_q(stream.duration, stream.time_base, {1, decoder->sample_rate});

    const Packet packet(av_packet_alloc());
    const Frame frame(av_frame_alloc());
    bool more = true;
    while (more) {
        more = av_read_frame(file.get(), packet.get()) >= 0;
        require(avcodec_send_packet(decoder.get(), more ? packet.get() : nullptr) >= 0,
                path.string() + " does not decode");
        while (avcodec_receive_frame(decoder.get(), frame.get()) >= 0) {
            append(result.audio.left, *frame, 0);
            append(result.audio.right, *frame, 1);
        }
        av_packet_unref(packet.get());
    }
    result.decodedFrames = static_cast<std::int64_t>(result.audio.frames());
    require(result.decodedFrames >= result.presentedFrames, path.string() + " is cut short");
    result.audio.left.resize(static_cast<std::size_t>(result.presentedFrames));
    result.audio.right.resize(static_cast<std::size_t>(result.presentedFrames));
    return result;
}
