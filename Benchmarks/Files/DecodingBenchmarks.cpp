// A minute of stereo AAC through AVAudioFile, beside a bare loop on libavcodec.

#include "Benchmarks/Engine/BareDecoder.hpp"
#include "Platform/Audio/AVAudioFile.hpp"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

namespace
{

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

void decodeMinuteBarely(benchmark::State &state)
{
    Channels channels(2, std::vector<float>(framesAtOnce));
    for ([[maybe_unused]] auto _ : state)
        decodeBarely(minute(), channels, [](std::size_t) { benchmark::ClobberMemory(); });
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
