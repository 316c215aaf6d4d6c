#include "Tests/Conformance/Plug-ins/Overhead.hpp"

#include "Platform/Audio/AVAudioEngine.hpp"
#include "Platform/Audio/RemoteAudioUnit.hpp"
#include "Tests/Conformance/Plug-ins/EnginePerformer.hpp"
#include "Tests/Conformance/Plug-ins/Programme.hpp"
#include "Tests/Utilities/ScriptedUnit.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <sstream>
#include <vector>

#include <time.h>

namespace conformance
{

namespace
{

constexpr std::uint32_t block = overheadBlock;
constexpr int rounds = 9;

double nanoseconds(clockid_t clock)
{
    timespec time{};
    ::clock_gettime(clock, &time);
    return 1e9 * static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec);
}

double median(std::vector<double> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/// Processor time of this process and of the effect's.
double spent(RemoteAudioUnit *remote)
{
    double sum = nanoseconds(CLOCK_PROCESS_CPUTIME_ID);
    clockid_t clock{};
    if (remote != nullptr &&
        ::clock_getcpuclockid(remote->process().processIdentifier(), &clock) == 0)
        sum += nanoseconds(clock);
    return sum;
}

/// A unit in the place of a file, the effect, the main mixer and the output.
class Chain
{
public:
    Chain(const AVAudioUnitComponent &component, Place place, const test::Channels &signal)
        : node_(makeUnit(component, place)),
          remote_(dynamic_cast<RemoteAudioUnit *>(node_->auAudioUnit().get())),
          source_(std::make_shared<test::ScriptedUnit>(0, sourceChannels())),
          output_(firstRate, std::max(node_->auAudioUnit()->outputChannelCount(), 1U)),
          buffer_(output_, block)
    {
        source_->onRender = [this, &signal](const AURenderBlock &rendered) {
            for (std::size_t channel = 0; channel < signal.size(); ++channel)
                std::copy_n(signal[channel].data() + position_, rendered.frames,
                            rendered.output[channel]);
            position_ += rendered.frames;
            return true;
        };
        const auto format = std::make_shared<AVAudioFormat>(output_);
        const auto source = std::make_shared<AVAudioUnit>(source_);
        engine_.connect(source, node_,
                        std::make_shared<AVAudioFormat>(firstRate, sourceChannels()));
        engine_.connect(node_, engine_.mainMixerNode(), format);
        engine_.connect(engine_.mainMixerNode(), engine_.outputNode(), format);
        engine_.enableManualRenderingMode(output_, block);
        engine_.start();
    }

    /// Processor time a block.
    double render(std::size_t blocks)
    {
        position_ = 0;
        const double before = spent(remote_);
        for (std::size_t i = 0; i < blocks; ++i)
            engine_.renderOffline(block, buffer_);
        return (spent(remote_) - before) / static_cast<double>(blocks);
    }

private:
    std::uint32_t sourceChannels() const
    {
        return std::max(node_->auAudioUnit()->inputChannelCount(), 1U);
    }

    std::shared_ptr<AVAudioUnit> node_;
    RemoteAudioUnit *remote_;
    std::shared_ptr<test::ScriptedUnit> source_;
    AVAudioFormat output_;
    AVAudioPCMBuffer buffer_;
    std::size_t position_ = 0;
    AVAudioEngine engine_;
};

double renderBarely(BareLoop &loop, const test::Channels &signal, float *const *output,
                    std::size_t blocks)
{
    loop.begin(firstRate, block, signal);
    const double before = spent(nullptr);
    for (std::size_t i = 0; i < blocks; ++i)
        loop.render(output, block, {});
    return (spent(nullptr) - before) / static_cast<double>(blocks);
}

} // namespace

std::string Overhead::text() const
{
    return fmt::format("{} {} {} {} {}", bareLoop, hostProcess, ownProcess, hostProcessRatio,
                       ownProcessRatio);
}

Overhead Overhead::fromText(const std::string &text)
{
    Overhead overhead;
    std::istringstream(text) >> overhead.bareLoop >> overhead.hostProcess >> overhead.ownProcess >>
        overhead.hostProcessRatio >> overhead.ownProcessRatio;
    return overhead;
}

Overhead measuredOverhead(const BareWorld &world, const AVAudioUnitComponent &component,
                          double seconds)
{
    BareLoop loop(world, component.pluginURI(), firstRate, firstMostFrames);
    const auto blocks = static_cast<std::size_t>(seconds * firstRate / block / rounds) + 1;
    const test::Channels signal = testSignal(loop.inputs(), blocks * block, firstRate);
    Chain inHost(component, Place::hostProcess, signal);
    Chain outside(component, Place::ownProcess, signal);
    test::Channels output(loop.outputs(), std::vector<float>(block));
    std::vector<float *> pointers;
    for (auto &channel : output)
        pointers.push_back(channel.data());

    std::vector<double> bare;
    std::vector<double> host;
    std::vector<double> own;
    std::vector<double> hostRatios;
    std::vector<double> ownRatios;
    // The first round warms up and is left out.
    for (int round = 0; round <= rounds; ++round) {
        const double bareCost = renderBarely(loop, signal, pointers.data(), blocks);
        const double hostCost = inHost.render(blocks);
        const double ownCost = outside.render(blocks);
        if (round == 0)
            continue;
        bare.push_back(bareCost);
        host.push_back(hostCost);
        own.push_back(ownCost);
        hostRatios.push_back(hostCost / bareCost);
        ownRatios.push_back(ownCost / bareCost);
    }
    return {median(bare), median(host), median(own), median(hostRatios), median(ownRatios)};
}

} // namespace conformance
