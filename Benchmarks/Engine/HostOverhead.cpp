// A minute of audio through player, effect, main mixer and output, beside the sum
// of the effect run by lilv alone and the file decoded by libavcodec alone.
//
// Usage: host_overhead_benchmark [ROUNDS [PLUGIN]]

#include "Benchmarks/Engine/BareDecoder.hpp"
#include "Benchmarks/Engine/BareHost.hpp"
#include "Benchmarks/Engine/EngineRender.hpp"
#include "Benchmarks/Engine/Measurement.hpp"
#include "Benchmarks/Engine/SoundFile.hpp"
#include "Platform/Audio/DenormalMode.hpp"

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <exception>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace
{

constexpr std::size_t stereo = 2;
constexpr int seconds = 60;
constexpr double sampleRate = 48000.0;
constexpr std::size_t frameCount = std::size_t{seconds} * 48000;

struct BlockSize {
    std::uint32_t frames;
    double goal; // engine over bare run and decoding
};
constexpr std::array blockSizes{BlockSize{64, 1.10}, BlockSize{256, 1.05}, BlockSize{1024, 1.02}};

constexpr std::array plugins{
    "urn:qrvx:benchmark:copy", "urn:qrvx:parvane", "http://drobilla.net/plugins/mda/Delay",
    "http://drobilla.net/plugins/mda/Overdrive", "http://gareus.org/oss/lv2/fil4#stereo"};

/// One plug-in in one size of block, and what it took, round by round.
struct Trial {
    std::string plugin;
    BlockSize block;
    std::vector<Cost> run;
    std::vector<Cost> decoding;
    std::vector<Cost> engine;
};

template <typename Value>
double medianOf(const Trial &trial, const Value &value)
{
    std::vector<double> values;
    for (std::size_t round = 0; round < trial.engine.size(); ++round)
        values.push_back(value(trial.run[round], trial.decoding[round], trial.engine[round]));
    return median(std::move(values));
}

template <typename Take>
void runBarely(BareHost &host, const Channels &input, std::uint32_t block, const Take &take)
{
    const platform::audio::DenormalMode noDenormals;
    for (std::size_t done = 0; done < frameCount; done += block) {
        const std::array<const float *, stereo> channels{input[0].data() + done,
                                                         input[1].data() + done};
        const auto frames = std::min<std::size_t>(block, frameCount - done);
        host.run(channels.data(), static_cast<std::uint32_t>(frames));
        take(done, frames);
    }
}

// Fresh instances on both sides, since an effect remembers what it played.
void requireSameSamples(const Trial &trial, const std::string &path, const Channels &input)
{
    const std::uint32_t block = trial.block.frames;
    Channels expected(stereo, std::vector<float>(frameCount));
    BareHost host(trial.plugin, sampleRate, block);
    runBarely(host, input, block, [&](std::size_t done, std::size_t frames) {
        for (std::size_t channel = 0; channel < stereo; ++channel)
            std::copy_n(host.output()[channel].data(), frames, expected[channel].data() + done);
    });
    std::size_t done = 0;
    EngineRender render(trial.plugin, AVAudioFormat(sampleRate, stereo), block);
    render.play(path, frameCount, [&](const AVAudioPCMBuffer &buffer) {
        for (std::size_t channel = 0; channel < stereo; ++channel)
            if (std::memcmp(buffer.floatChannelData()[channel], expected[channel].data() + done,
                            buffer.frameLength() * sizeof(float)) != 0)
                throw std::runtime_error(
                    fmt::format("{}: blocks of {} differ from the bare loop's near frame {}",
                                trial.plugin, block, done));
        done += buffer.frameLength();
    });
}

void measure(Trial &trial, const std::string &path, const Channels &input, Channels &scratch)
{
    const std::uint32_t block = trial.block.frames;
    BareHost host(trial.plugin, sampleRate, block);
    EngineRender render(trial.plugin, AVAudioFormat(sampleRate, stereo), block);
    trial.run.push_back(
        costOf([&] { runBarely(host, input, block, [](std::size_t, std::size_t) {}); }));
    trial.decoding.push_back(costOf([&] { decodeBarely(path, scratch); }));
    trial.engine.push_back(
        costOf([&] { render.play(path, frameCount, [](const AVAudioPCMBuffer &) {}); }));
}

void printTable(const std::vector<Trial> &trials)
{
    fmt::print(
        "60 s of 48 kHz stereo AAC; medians, ms; ratios of the engine to bare run + decoding "
        "are medians of those of each round.\n\n"
        "{:44} {:>5} {:>8} {:>8} | {:>9} {:>9} | {:>9} {:>9} | {:>8}\n",
        "plug-in", "block", "run", "decode", "engine", "engine", "ratio of", "ratio of",
        "excess a");
    fmt::print("{:44} {:>5} {:>8} {:>8} | {:>9} {:>9} | {:>9} {:>9} | {:>8}\n", "", "", "cpu",
               "cpu", "wall", "cpu", "wall", "cpu", "block ns");
    for (const Trial &trial : trials) {
        const double blocks = static_cast<double>(frameCount) / trial.block.frames;
        fmt::print("{:44} {:>5} {:8.1f} {:8.1f} | {:9.1f} {:9.1f} | {:9.3f} {:9.3f} | {:8.0f}\n",
                   trial.plugin, trial.block.frames,
                   1e3 * medianOf(trial, [](auto run, auto, auto) { return run.processor; }),
                   1e3 * medianOf(trial, [](auto, auto decode, auto) { return decode.processor; }),
                   1e3 * medianOf(trial, [](auto, auto, auto engine) { return engine.wall; }),
                   1e3 * medianOf(trial, [](auto, auto, auto engine) { return engine.processor; }),
                   medianOf(trial, [](auto run, auto decode,
                                      auto engine) { return engine.wall / (run + decode).wall; }),
                   medianOf(trial,
                            [](auto run, auto decode, auto engine) {
                                return engine.processor / (run + decode).processor;
                            }),
                   1e9 / blocks * medianOf(trial, [](auto run, auto decode, auto engine) {
                       return engine.processor - (run + decode).processor;
                   }));
    }
    fmt::print("\n");
}

void compare(int rounds, const std::string &only)
{
    const SoundFile file(seconds);
    const Channels input = decodedFrames(file.path(), stereo, frameCount);
    Channels scratch(stereo, std::vector<float>(4096));

    std::vector<Trial> trials;
    for (const std::string plugin : plugins) {
        if (!only.empty() && plugin != only)
            continue;
        if (!isInstalled(plugin)) {
            fmt::print("{} is not installed and left out.\n", plugin);
            continue;
        }
        for (const BlockSize &block : blockSizes)
            trials.push_back({plugin, block, {}, {}, {}});
    }
    for (const Trial &trial : trials)
        requireSameSamples(trial, file.path(), input);
    fmt::print("Engine and bare loop give the same samples in all {} trials.\n\n", trials.size());

    for (int round = 0; round < rounds; ++round)
        for (Trial &trial : trials)
            measure(trial, file.path(), input, scratch);
    printTable(trials);
    for (const Trial &trial : trials)
        reportGoal(fmt::format("Engine over bare run + decoding, processor time, blocks of {}, {}",
                               trial.block.frames, trial.plugin),
                   trial.block.goal, medianOf(trial, [](auto run, auto decode, auto engine) {
                       return engine.processor / (run + decode).processor;
                   }));
}

} // namespace

int main(int argc, char *argv[])
{
    try {
        useAllPlugins();
        compare(argc > 1 ? std::stoi(argv[1]) : 9, argc > 2 ? argv[2] : "");
    } catch (const std::exception &error) {
        fmt::print(stderr, "{}\n", error.what());
        return 1;
    }
    return 0;
}
