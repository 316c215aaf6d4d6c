// A minute of stereo AAC through AVAudioFile, beside a bare loop on libavcodec.

#include "Benchmarks/Engine/BareDecoder.hpp"
#include "Benchmarks/Engine/SoundFile.hpp"
#include "Platform/Audio/AVAudioFile.hpp"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>
#include <vector>

namespace
{

constexpr std::uint32_t framesAtOnce = 4'096;
constexpr double sampleRate = 48'000.0; // of every SoundFile

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
    AVAudioPCMBuffer buffer(AVAudioFormat(sampleRate, 2), framesAtOnce);
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
    AVAudioPCMBuffer buffer(AVAudioFormat(sampleRate, 2), framesAtOnce);
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
    AVAudioPCMBuffer buffer(AVAudioFormat(sampleRate, 2), framesAtOnce);
    for ([[maybe_unused]] auto _ : state) {
        AVAudioFile file(url);
        file.read(buffer, framesAtOnce);
    }
}
BENCHMARK(openAndReadFirstFrames)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
