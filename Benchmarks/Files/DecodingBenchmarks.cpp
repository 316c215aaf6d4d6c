// A minute of stereo AAC through AVAudioFile, beside a bare loop on libavcodec.

#include "Platform/Audio/AVAudioFile.hpp"
#include "Platform/Audio/FFmpegHandles.hpp"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

namespace
{

using platform::audio::Decoder;
using platform::audio::Demuxer;
using platform::audio::Frame;
using platform::audio::Packet;

constexpr std::uint32_t framesAtOnce = 4'096;

/// Made once, and removed with the process.
class SoundFile
{
public:
    explicit SoundFile(int seconds)
        : path_(std::filesystem::temp_directory_path() /
                ("parvane-" + std::to_string(seconds) + "-" + std::to_string(std::rand()) + ".m4a"))
    {
        const std::string command =
            "ffmpeg -v error -nostdin -y -f lavfi -i "
            "\"aevalsrc=exprs='0.3*sin(2*PI*t*(220+40*sin(3*t)))+0.4*(random(0)-0.5)*"
            "exp(-12*mod(t,0.5))|0.3*sin(2*PI*t*331)+0.1*(random(1)-0.5)':s=44100:d=" +
            std::to_string(seconds) + "\" -c:a aac -b:a 128k -movflags +faststart " + path_;
        if (std::system(command.c_str()) != 0)
            std::abort();
    }
    ~SoundFile() { std::filesystem::remove(path_); }
    SoundFile(const SoundFile &) = delete;
    SoundFile &operator=(const SoundFile &) = delete;

    const std::string &path() const { return path_; }

private:
    std::string path_;
};

const std::string &minute()
{
    static const SoundFile file(60);
    return file.path();
}

const std::string &loop()
{
    static const SoundFile file(8);
    return file.path();
}

/// Opens, decodes and copies to planar samples with nothing else around it.
std::int64_t decodeBarely(const std::string &path, std::vector<std::vector<float>> &channels)
{
    AVFormatContext *opened = nullptr;
    if (avformat_open_input(&opened, path.c_str(), nullptr, nullptr) < 0)
        std::abort();
    const Demuxer demuxer(opened);
    const AVStream *stream = opened->streams[0];
    const Decoder decoder(avcodec_alloc_context3(avcodec_find_decoder(stream->codecpar->codec_id)));
    avcodec_parameters_to_context(decoder.get(), stream->codecpar);
    decoder->thread_count = 1;
    if (avcodec_open2(decoder.get(), nullptr, nullptr) < 0)
        std::abort();
    const Packet packet(av_packet_alloc());
    const Frame frame(av_frame_alloc());
    std::int64_t frames = 0;
    bool more = true;
    while (more) {
        more = av_read_frame(opened, packet.get()) >= 0;
        avcodec_send_packet(decoder.get(), more ? packet.get() : nullptr);
        av_packet_unref(packet.get());
        while (avcodec_receive_frame(decoder.get(), frame.get()) >= 0) {
            const int count = frame->nb_samples;
            for (std::size_t channel = 0; channel < channels.size(); ++channel) {
                const auto *from = reinterpret_cast<const float *>(frame->extended_data[channel]);
                std::copy_n(from, count, channels[channel].data());
            }
            benchmark::ClobberMemory();
            frames += count;
        }
    }
    return frames;
}

void decodeMinuteBarely(benchmark::State &state)
{
    std::vector<std::vector<float>> channels(2, std::vector<float>(framesAtOnce));
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(decodeBarely(minute(), channels));
}
BENCHMARK(decodeMinuteBarely)->Unit(benchmark::kMillisecond);

void readToEnd(AVAudioFile &file, AVAudioPCMBuffer &buffer)
{
    do {
        file.read(buffer, buffer.frameCapacity());
        benchmark::ClobberMemory();
    } while (buffer.frameLength() > 0);
}

void decodeMinuteThroughAVAudioFile(benchmark::State &state)
{
    const URL url = URL::fileURLWithPath(minute());
    AVAudioPCMBuffer buffer(AVAudioFormat(44'100.0, 2), framesAtOnce);
    for ([[maybe_unused]] auto _ : state) {
        AVAudioFile file(url);
        readToEnd(file, buffer);
    }
}
BENCHMARK(decodeMinuteThroughAVAudioFile)->Unit(benchmark::kMillisecond);

/// The first turn of a loop of eight seconds, with opening.
void playLoopFirst(benchmark::State &state)
{
    const URL url = URL::fileURLWithPath(loop());
    AVAudioPCMBuffer buffer(AVAudioFormat(44'100.0, 2), framesAtOnce);
    for ([[maybe_unused]] auto _ : state) {
        AVAudioFile file(url);
        readToEnd(file, buffer);
    }
}
BENCHMARK(playLoopFirst)->Unit(benchmark::kMillisecond);

/// Each further turn.
void playLoopAgain(benchmark::State &state)
{
    AVAudioFile file(URL::fileURLWithPath(loop()));
    AVAudioPCMBuffer buffer(*file.processingFormat(), framesAtOnce);
    readToEnd(file, buffer);
    for ([[maybe_unused]] auto _ : state) {
        file.setFramePosition(0);
        readToEnd(file, buffer);
    }
}
BENCHMARK(playLoopAgain)->Unit(benchmark::kMillisecond);

/// From opening to the first samples: what Play waits for.
void openAndReadFirstFrames(benchmark::State &state)
{
    const URL url = URL::fileURLWithPath(loop());
    AVAudioPCMBuffer buffer(AVAudioFormat(44'100.0, 2), framesAtOnce);
    for ([[maybe_unused]] auto _ : state) {
        AVAudioFile file(url);
        file.read(buffer, framesAtOnce);
    }
}
BENCHMARK(openAndReadFirstFrames)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
