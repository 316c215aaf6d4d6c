// What one block costs on the audio callback beyond running the effect, with a
// plug-in that does nothing: the product's engine, player to interleaved output,
// beside JUCE's graph of processors, input to output.
//
// Usage: block_cost_benchmark [BURSTS]

#include "Benchmarks/Engine/BareDecoder.hpp"
#include "Benchmarks/Engine/BareHost.hpp"
#include "Benchmarks/Engine/EngineRender.hpp"
#include "Benchmarks/Engine/Measurement.hpp"
#include "Benchmarks/Engine/SoundFile.hpp"
#include "Benchmarks/Report/Report.hpp"
#include "Platform/Audio/AVAudioFile.hpp"
#include "Platform/Audio/OutputDevice.hpp"
#include "Platform/Audio/PlayerCore.hpp"
#include "Platform/Foundation/DenormalMode.hpp"

#ifdef HAS_JUCE
#include "Benchmarks/Engine/JUCE/JuceGraph.hpp"
#endif

#include <fmt/core.h>
#include <sched.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <exception>
#include <functional>
#include <initializer_list>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace
{

using platform::audio::OutputDevice;

constexpr const char *nothing = "urn:qrvx:benchmark:nothing";
constexpr std::size_t stereo = 2;
constexpr double sampleRate = 48000.0;

// What the engine reads ahead: as many frames are rendered at a go.
constexpr std::uint32_t burstFrames = 4800;

/// A device that asks for a block when the benchmark says so.
class HandDrivenDevice : public OutputDevice
{
public:
    HandDrivenDevice(std::uint32_t framesPerBlock, Source *&source)
        : framesPerBlock_(framesPerBlock), source_(source)
    {
    }
    Obtained open(const AVAudioFormat &wanted) override { return {wanted, framesPerBlock_}; }
    void run(Source &source) override { source_ = &source; }
    void close() override { source_ = nullptr; }
    bool isAlive() const override { return true; }

private:
    std::uint32_t framesPerBlock_;
    Source *&source_;
};

/// The product's chain on such a device, playing one file for ever.
class LiveEngine
{
public:
    LiveEngine(const std::string &path, std::uint32_t framesPerBlock)
        : framesPerBlock_(framesPerBlock),
          file_(std::make_shared<AVAudioFile>(URL::fileURLWithPath(path))),
          samples_(stereo * framesPerBlock),
          engine_(std::make_unique<HandDrivenDevice>(framesPerBlock, source_))
    {
        connectChain(engine_, player_, nothing, AVAudioFormat(sampleRate, stereo));
        playAgain();
        engine_.start();
        player_->play();
    }
    ~LiveEngine()
    {
        ends_ = true;
        player_->stop();
    }
    LiveEngine(const LiveEngine &) = delete;
    LiveEngine &operator=(const LiveEngine &) = delete;

    /// Returns when the player has read ahead all it can.
    void fill() { player_->core()->waitForFrames(burstFrames); }

    void render() { source_->renderInterleaved(samples_.data(), framesPerBlock_, stereo); }

private:
    void playAgain()
    {
        player_->scheduleFile(file_, [this] {
            if (!ends_)
                playAgain();
        });
    }

    std::uint32_t framesPerBlock_;
    std::shared_ptr<AVAudioFile> file_;
    std::vector<float> samples_;
    OutputDevice::Source *source_ = nullptr;
    std::atomic<bool> ends_{false};
    std::shared_ptr<AVAudioPlayerNode> player_ = std::make_shared<AVAudioPlayerNode>();
    AVAudioEngine engine_;
};

/// One of those compared: how a block is rendered, given where its input lies.
struct Contender {
    std::string name;
    std::function<void(const float *const *input)> render;
    std::vector<double> secondsPerBlock{};
};

/// Times a burst of blocks, after one that only warms the caches.
void measureBurst(Contender &contender, const Channels &input, std::uint32_t block)
{
    std::array<const float *, stereo> channels{input[0].data(), input[1].data()};
    contender.render(channels.data());
    const std::uint32_t blocks = burstFrames / block - 1;
    const auto start = std::chrono::steady_clock::now();
    for (std::uint32_t index = 0; index < blocks; ++index) {
        for (const float *&channel : channels)
            channel += block;
        contender.render(channels.data());
    }
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
    contender.secondsPerBlock.push_back(elapsed.count() / blocks);
}

double nanoseconds(const Contender &contender)
{
    return 1e9 * median(contender.secondsPerBlock);
}

/// The medians of ten parts of the bursts: single ones are too short to be compared.
std::vector<double> partsOf(const std::vector<double> &bursts)
{
    constexpr std::size_t parts = 10;
    std::vector<double> medians;
    for (std::size_t part = 0; part < parts; ++part) {
        const auto bound = [&](std::size_t which) {
            return bursts.begin() + static_cast<std::ptrdiff_t>(which * bursts.size() / parts);
        };
        medians.push_back(median({bound(part), bound(part + 1)}));
    }
    return medians;
}

/// What is left of `whole` without the others, part by part.
std::vector<double> netOf(const Contender &whole, std::initializer_list<const Contender *> others)
{
    std::vector<double> net = partsOf(whole.secondsPerBlock);
    for (const Contender *other : others)
        std::transform(net.begin(), net.end(), partsOf(other->secondsPerBlock).begin(), net.begin(),
                       std::minus());
    return net;
}

void compareBlocks(const std::string &path, const Channels &input, std::uint32_t block, int bursts)
{
    BareHost bare(nothing, sampleRate, block);
    Channels copied(stereo, std::vector<float>(block));
    LiveEngine engine(path, block);
    std::vector<Contender> contenders;
    contenders.push_back({"bare run", [&](const float *const *from) { bare.run(from, block); }});
    contenders.push_back({"copying the input", [&](const float *const *from) {
                              for (std::vector<float> &channel : copied)
                                  std::copy_n(*from++, block, channel.data());
                          }});
    contenders.push_back({"engine", [&](const float *const *) { engine.render(); }});
#ifdef HAS_JUCE
    JuceGraph juce(nothing, sampleRate, block);
    contenders.push_back(
        {"JUCE graph, with copying", [&](const float *const *from) { juce.render(from); }});
#endif
    for (int burst = 0; burst < bursts; ++burst)
        for (std::size_t index = 0; index < contenders.size(); ++index) {
            engine.fill();
            const platform::foundation::DenormalMode noDenormals;
            // Each follows each other one in turn.
            measureBurst(contenders[(index + static_cast<std::size_t>(burst)) % contenders.size()],
                         input, block);
        }

    const std::vector<double> engineNet = netOf(contenders[2], {&contenders[0]});
    fmt::print("blocks of {}\n", block);
    for (const Contender &contender : contenders)
        fmt::print("  {:28} {:8.1f} ns\n", contender.name, nanoseconds(contender));
    fmt::print("  {:28} {:8.1f} ns\n", "engine, net of the run", 1e9 * median(engineNet));
#ifdef HAS_JUCE
    const std::vector<double> juceNet = netOf(contenders[3], {&contenders[0], &contenders[1]});
    fmt::print("  {:28} {:8.1f} ns\n\n", "JUCE, net of copy and run", 1e9 * median(juceNet));
    printRow({fmt::format("Net cost of a block of {}", block), "JUCE's graph", 1.0,
              ratios(engineNet, juceNet)});
#endif
    fmt::print("\n");
}

// The player's thread shares the processor, so that a burst finds what it is to
// play in the caches, as it finds the bare loop's input.
void stayOnOneProcessor()
{
    cpu_set_t one;
    CPU_ZERO(&one);
    CPU_SET(std::max(0, sched_getcpu()), &one);
    sched_setaffinity(0, sizeof one, &one);
}

void compare(int bursts)
{
    const SoundFile file(8);
    const Channels input = decodedFrames(file.path(), stereo, burstFrames);
    stayOnOneProcessor();
    fmt::print("Medians of {} bursts of {} frames, stereo, 48 kHz.\n\n", bursts, burstFrames);
    for (const std::uint32_t block : {64U, 256U, 1024U})
        compareBlocks(file.path(), input, block, bursts);
}

} // namespace

int main(int argc, char *argv[])
{
    try {
        useOwnPlugins();
        compare(argc > 1 ? std::stoi(argv[1]) : 2000);
    } catch (const std::exception &error) {
        fmt::print(stderr, "{}\n", error.what());
        return 1;
    }
    return 0;
}
