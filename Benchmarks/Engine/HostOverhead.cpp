// A minute of audio through player, effect, main mixer and output, beside the
// effect run by lilv alone and the file decoded by libavcodec alone: the sum of the
// two, and one bare loop that does both packet by packet.
//
// Usage: host_overhead_benchmark [ROUNDS [PLUGIN]]

#include "Benchmarks/Engine/BareDecoder.hpp"
#include "Benchmarks/Engine/BareHost.hpp"
#include "Benchmarks/Engine/EngineRender.hpp"
#include "Benchmarks/Engine/Measurement.hpp"
#include "Benchmarks/Engine/SoundFile.hpp"
#include "Benchmarks/Report/Report.hpp"
#include "Platform/Foundation/DenormalMode.hpp"

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <exception>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace
{

constexpr std::size_t stereo = 2;
constexpr int minute = 60; // seconds
constexpr double sampleRate = 48000.0;
constexpr std::size_t frameCount = std::size_t{minute} * 48000;

struct BlockSize {
    std::uint32_t frames;
    double goal; // engine over bare run and decoding
};
constexpr std::array blockSizes{BlockSize{64, 1.10}, BlockSize{256, 1.05}, BlockSize{1024, 1.02}};

struct Plugin {
    const char *uri;
    const char *name;
};
constexpr std::array plugins{Plugin{"urn:qrvx:benchmark:copy", "a plug-in that copies"},
                             Plugin{"urn:qrvx:parvane", "the rotary cabinet"},
                             Plugin{"http://drobilla.net/plugins/mda/Delay", "mda Delay"},
                             Plugin{"http://drobilla.net/plugins/mda/Overdrive", "mda Overdrive"},
                             Plugin{"http://gareus.org/oss/lv2/fil4#stereo", "x42 fil4"}};

constexpr Cost unmeasured{std::numeric_limits<double>::infinity(),
                          std::numeric_limits<double>::infinity()};

/// One plug-in in one size of block, and what it took in the best round. Other work
/// on the machine, a neighbour on the same core above all, only ever adds to a run,
/// a quarter and more for seconds on end: medians would tell how busy it was.
struct Trial {
    Plugin plugin;
    BlockSize block;
    Cost run = unmeasured;
    Cost decoding = unmeasured;
    Cost together = unmeasured;
    Cost engine = unmeasured;
};

void keepBest(Cost &best, const Cost &cost)
{
    best.wall = std::min(best.wall, cost.wall);
    best.processor = std::min(best.processor, cost.processor);
}

template <typename Take>
void runBarely(BareHost &host, const Channels &input, std::uint32_t block, const Take &take)
{
    const platform::foundation::DenormalMode noDenormals;
    for (std::size_t done = 0; done < frameCount; done += block) {
        const std::array<const float *, stereo> channels{input[0].data() + done,
                                                         input[1].data() + done};
        const auto frames = std::min<std::size_t>(block, frameCount - done);
        host.run(channels.data(), static_cast<std::uint32_t>(frames));
        take(done, frames);
    }
}

/// The least that plays a file through an effect: each packet decoded, then run in
/// blocks.
void decodeAndRunBarely(BareHost &host, const std::string &path, Channels &packet,
                        std::uint32_t block)
{
    const platform::foundation::DenormalMode noDenormals;
    decodeBarely(path, packet, [&](std::size_t frames) {
        for (std::size_t done = 0; done < frames; done += block) {
            const std::array<const float *, stereo> channels{packet[0].data() + done,
                                                             packet[1].data() + done};
            host.run(channels.data(),
                     static_cast<std::uint32_t>(std::min<std::size_t>(block, frames - done)));
        }
    });
}

// Fresh instances on both sides, since an effect remembers what it played.
void requireSameSamples(const Trial &trial, const std::string &path, const Channels &input)
{
    const std::uint32_t block = trial.block.frames;
    Channels expected(stereo, std::vector<float>(frameCount));
    BareHost host(trial.plugin.uri, sampleRate, block);
    runBarely(host, input, block, [&](std::size_t done, std::size_t frames) {
        for (std::size_t channel = 0; channel < stereo; ++channel)
            std::copy_n(host.output()[channel].data(), frames, expected[channel].data() + done);
    });
    std::size_t done = 0;
    EngineRender render(trial.plugin.uri, AVAudioFormat(sampleRate, stereo), block);
    render.play(path, frameCount, [&](const AVAudioPCMBuffer &buffer) {
        for (std::size_t channel = 0; channel < stereo; ++channel)
            if (std::memcmp(buffer.floatChannelData()[channel], expected[channel].data() + done,
                            buffer.frameLength() * sizeof(float)) != 0)
                throw std::runtime_error(
                    fmt::format("{}: blocks of {} differ from the bare loop's near frame {}",
                                trial.plugin.name, block, done));
        done += buffer.frameLength();
    });
}

/// Each of the four comes first in turn, since the first finds the caches cold.
void measure(Trial &trial, int round, const std::string &path, const Channels &input,
             Channels &scratch)
{
    const std::uint32_t block = trial.block.frames;
    BareHost host(trial.plugin.uri, sampleRate, block);
    EngineRender render(trial.plugin.uri, AVAudioFormat(sampleRate, stereo), block);
    for (int step = 0; step < 4; ++step) {
        switch ((round + step) % 4) {
        case 0:
            keepBest(trial.run, costOf([&] {
                         runBarely(host, input, block, [](std::size_t, std::size_t) {});
                     }));
            break;
        case 1:
            keepBest(trial.decoding,
                     costOf([&] { decodeBarely(path, scratch, [](std::size_t) {}); }));
            break;
        case 2:
            keepBest(trial.together,
                     costOf([&] { decodeAndRunBarely(host, path, scratch, block); }));
            break;
        default:
            keepBest(trial.engine, costOf([&] {
                         render.play(path, frameCount, [](const AVAudioPCMBuffer &) {});
                     }));
        }
    }
}

double toSum(const Trial &trial, double Cost::*clock)
{
    return trial.engine.*clock / (trial.run.*clock + trial.decoding.*clock);
}

double toLoop(const Trial &trial, double Cost::*clock)
{
    return trial.engine.*clock / trial.together.*clock;
}

void printTable(const std::vector<Trial> &trials)
{
    fmt::print("60 s of 48 kHz stereo AAC; the best of the rounds, ms of processor time where "
               "not said otherwise.\n\n"
               "{:22} {:>5} {:>7} {:>7} {:>8} {:>7} {:>7} {:>9} {:>9} {:>9} {:>9}\n"
               "{:22} {:>5} {:>7} {:>7} {:>8} {:>7} {:>7} {:>9} {:>9} {:>9} {:>9}\n",
               "plug-in", "block", "run", "decode", "one bare", "engine", "engine", "to sum",
               "to sum,", "to loop", "to loop,", "", "", "", "", "loop", "", "wall", "", "wall", "",
               "wall");
    for (const Trial &trial : trials)
        fmt::print("{:22} {:>5} {:7.2f} {:7.2f} {:8.2f} {:7.2f} {:7.2f} {:9.3f} {:9.3f} {:9.3f} "
                   "{:9.3f}\n",
                   trial.plugin.name, trial.block.frames, 1e3 * trial.run.processor,
                   1e3 * trial.decoding.processor, 1e3 * trial.together.processor,
                   1e3 * trial.engine.processor, 1e3 * trial.engine.wall,
                   toSum(trial, &Cost::processor), toSum(trial, &Cost::wall),
                   toLoop(trial, &Cost::processor), toLoop(trial, &Cost::wall));
    fmt::print("\n");
}

void reportGoals(const Trial &trial)
{
    const std::string what =
        fmt::format("A minute through {}, blocks of {}", trial.plugin.name, trial.block.frames);
    printRow({what,
              "effect and decoder alone, summed",
              trial.block.goal,
              {toSum(trial, &Cost::processor)}});
    printRow(
        {what, "one bare loop with both", trial.block.goal, {toLoop(trial, &Cost::processor)}});
}

void compare(int rounds, const std::string &only)
{
    const SoundFile file(minute);
    const Channels input = decodedFrames(file.path(), stereo, frameCount);
    Channels scratch(stereo, std::vector<float>(4096));

    std::vector<Trial> trials;
    for (const Plugin &plugin : plugins) {
        if (!only.empty() && plugin.uri != only)
            continue;
        if (!isInstalled(plugin.uri)) {
            fmt::print("{} is not installed and left out.\n", plugin.uri);
            continue;
        }
        for (const BlockSize &block : blockSizes)
            trials.push_back({plugin, block});
    }
    for (const Trial &trial : trials)
        requireSameSamples(trial, file.path(), input);
    fmt::print("Engine and bare loop give the same samples in all {} trials.\n\n", trials.size());

    for (int round = 0; round < rounds; ++round)
        for (Trial &trial : trials)
            measure(trial, round, file.path(), input, scratch);
    printTable(trials);
    for (const Trial &trial : trials)
        reportGoals(trial);
}

} // namespace

int main(int argc, char *argv[])
{
    try {
        useAllPlugins();
        compare(argc > 1 ? std::stoi(argv[1]) : 24, argc > 2 ? argv[2] : "");
    } catch (const std::exception &error) {
        fmt::print(stderr, "{}\n", error.what());
        return 1;
    }
    return 0;
}
