#include "Benchmarks/Engine/BareDecoder.hpp"

#include "Platform/Audio/FFmpegHandles.hpp"

#include <algorithm>
#include <stdexcept>

using platform::audio::Decoder;
using platform::audio::Demuxer;
using platform::audio::Frame;
using platform::audio::Packet;

namespace
{

template <typename Take>
void decode(const std::string &path, const Take &take)
{
    AVFormatContext *opened = nullptr;
    if (avformat_open_input(&opened, path.c_str(), nullptr, nullptr) < 0)
        throw std::runtime_error("cannot open " + path);
    const Demuxer demuxer(opened);
    const AVStream *stream = opened->streams[0];
    const Decoder decoder(avcodec_alloc_context3(avcodec_find_decoder(stream->codecpar->codec_id)));
    avcodec_parameters_to_context(decoder.get(), stream->codecpar);
    decoder->thread_count = 1;
    if (avcodec_open2(decoder.get(), nullptr, nullptr) < 0)
        throw std::runtime_error("cannot decode " + path);
    const Packet packet(av_packet_alloc());
    const Frame frame(av_frame_alloc());
    bool more = true;
    while (more) {
        more = av_read_frame(opened, packet.get()) >= 0;
        avcodec_send_packet(decoder.get(), more ? packet.get() : nullptr);
        av_packet_unref(packet.get());
        while (avcodec_receive_frame(decoder.get(), frame.get()) >= 0)
            take(*frame);
    }
}

const float *samples(const AVFrame &frame, std::size_t channel)
{
    return reinterpret_cast<const float *>(frame.extended_data[channel]);
}

} // namespace

void decodeBarely(const std::string &path, Channels &channels,
                  const std::function<void(std::size_t)> &take)
{
    decode(path, [&](const AVFrame &frame) {
        for (std::size_t channel = 0; channel < channels.size(); ++channel)
            std::copy_n(samples(frame, channel), frame.nb_samples, channels[channel].data());
        take(static_cast<std::size_t>(frame.nb_samples));
    });
}

Channels decodedFrames(const std::string &path, std::size_t channelCount, std::size_t frames)
{
    Channels decoded(channelCount);
    decode(path, [&](const AVFrame &frame) {
        for (std::size_t channel = 0; channel < channelCount; ++channel) {
            const float *const from = samples(frame, channel);
            decoded[channel].insert(decoded[channel].end(), from, from + frame.nb_samples);
        }
    });
    for (auto &channel : decoded) {
        if (channel.size() < frames)
            throw std::runtime_error(path + " is too short");
        channel.resize(frames);
    }
    return decoded;
}
