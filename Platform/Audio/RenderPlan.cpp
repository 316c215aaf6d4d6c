#include "Platform/Audio/RenderPlan.hpp"

#include "Platform/Audio/AVAudioPlayerNode.hpp"
#include "Platform/Audio/AVAudioUnit.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

namespace platform::audio
{

namespace
{

constexpr std::uint32_t stereo = 2;

// What an AAC packet holds. A ring of no more is in the fastest cache when the next
// one is decoded into it.
constexpr std::uint32_t packetFrames = 1024;

// More frames than rate converters on the way ask for beyond the block itself.
constexpr double converterFrames = 2048.0;

std::shared_ptr<AUAudioUnit> unitOf(const AVAudioNode &node)
{
    const auto *const unitNode = dynamic_cast<const AVAudioUnit *>(&node);
    return unitNode != nullptr ? unitNode->auAudioUnit() : nullptr;
}

} // namespace

void RenderPlan::finishBlock() noexcept
{
    for (const Player &player : players)
        player.core->giveBack();
}

RenderPlanner::RenderPlanner(const AudioGraph &graph, const AVAudioNode &output,
                             const AVAudioFormat &outputFormat, std::uint32_t maximumFrames,
                             double secondsAhead)
    : graph_(graph), output_(output), outputFormat_(outputFormat), maximumFrames_(maximumFrames),
      secondsAhead_(secondsAhead)
{
}

AVAudioFormat RenderPlanner::settledFormat(const AudioGraph::Connection &connection) const
{
    if (connection.format)
        return *connection.format;
    return {settledRate(connection), settledChannels(connection)};
}

// The next connection on the way to the output that has a rate gives it, so that
// audio is not converted back and forth.
double RenderPlanner::settledRate(const AudioGraph::Connection &connection) const
{
    for (std::optional<AudioGraph::Connection> next = connection; next;
         next = graph_.output(*next->destination))
        if (next->format)
            return next->format->sampleRate();
    return outputFormat_.sampleRate();
}

std::uint32_t RenderPlanner::settledChannels(const AudioGraph::Connection &connection) const
{
    if (connection.destination.get() == &output_)
        return outputFormat_.channelCount();
    if (const auto unit = unitOf(*connection.destination); unit && unit->inputChannelCount() > 0)
        return unit->inputChannelCount();
    if (const auto unit = unitOf(*connection.source); unit && unit->outputChannelCount() > 0)
        return unit->outputChannelCount();
    return stereo;
}

// A unit runs at the rate it is fed with.
double RenderPlanner::rateOfUnit(const AVAudioNode &node) const
{
    const std::vector<AudioGraph::Connection> inputs = graph_.inputs(node);
    if (!inputs.empty())
        return settledFormat(inputs.front()).sampleRate();
    const std::optional<AudioGraph::Connection> output = graph_.output(node);
    return output ? settledFormat(*output).sampleRate() : outputFormat_.sampleRate();
}

std::vector<RenderPlanner::Unit> RenderPlanner::units() const
{
    std::vector<Unit> found;
    collectUnits(output_, found);
    return found;
}

void RenderPlanner::collectUnits(const AVAudioNode &node, std::vector<Unit> &found) const
{
    if (const std::shared_ptr<AUAudioUnit> unit = unitOf(node))
        found.push_back({unit, rateOfUnit(node)});
    for (const AudioGraph::Connection &input : graph_.inputs(node))
        collectUnits(*input.source, found);
}

std::unique_ptr<RenderPlan> RenderPlanner::build(const ClockOfUnit &clockOf)
{
    clockOf_ = clockOf;
    plan_ = std::make_unique<RenderPlan>();
    plan_->maximumFrames = maximumFrames_;
    const std::vector<AudioGraph::Connection> inputs = graph_.inputs(output_);
    if (inputs.empty())
        plan_->last = std::make_unique<SilenceStep>(outputFormat_, maximumFrames_);
    else
        plan_->last = adapt(stepFor(inputs.front()), outputFormat_, maximumFrames_);
    return std::move(plan_);
}

// How late a node is for what it plays or lets through, in seconds.
double RenderPlanner::latencyAt(const AVAudioNode &node) const
{
    double longest = 0.0;
    for (const AudioGraph::Connection &input : graph_.inputs(node))
        longest = std::max(longest, latencyAt(*input.source));
    const std::shared_ptr<AUAudioUnit> unit = unitOf(node);
    return longest + (unit ? unit->latency() : 0.0);
}

void RenderPlanner::noteLatencies(const AVAudioNode &mixer)
{
    std::vector<Unit> found;
    collectUnits(mixer, found);
    for (const Unit &each : found)
        plan_->latencies.push_back({each.unit, each.unit->latency()});
}

RenderStepPointer RenderPlanner::stepFor(const AudioGraph::Connection &connection)
{
    const AVAudioNode &node = *connection.source;
    if (const auto *const player = dynamic_cast<const AVAudioPlayerNode *>(&node))
        return playerStep(player->core(), settledFormat(connection));
    if (const std::shared_ptr<AUAudioUnit> unit = unitOf(node))
        return unitStep(node, unit);
    return mixerStep(node, settledFormat(connection));
}

RenderStepPointer RenderPlanner::playerStep(const std::shared_ptr<PlayerCore> &core,
                                            const AVAudioFormat &format)
{
    const double ratio = format.sampleRate() / outputFormat_.sampleRate();
    const double converted = ratio == 1.0 ? 0.0 : converterFrames;
    const auto perBlock = static_cast<std::uint32_t>(std::ceil(maximumFrames_ * ratio) + converted);
    const auto ahead = static_cast<std::uint32_t>(std::ceil(secondsAhead_ * format.sampleRate()));
    // On time, one block is used while the next is decoded.
    const std::uint32_t least = ahead > 0 ? 2 * perBlock : std::max(perBlock, packetFrames);
    const auto feeding = ahead > 0 ? PlayerCore::Feeding::onTime : PlayerCore::Feeding::onDemand;
    core->setOutput(format, std::max(ahead, least), maximumFrames_, feeding);
    plan_->players.push_back({core, perBlock});
    return std::make_unique<PlayerStep>(core, format, maximumFrames_);
}

RenderStepPointer RenderPlanner::unitStep(const AVAudioNode &node,
                                          const std::shared_ptr<AUAudioUnit> &unit)
{
    const double rate = rateOfUnit(node);
    const std::uint32_t channels = std::max(unit->inputChannelCount(), 1U);
    const AVAudioFormat inputFormat(rate, channels);
    const std::vector<AudioGraph::Connection> inputs = graph_.inputs(node);
    RenderStepPointer source;
    if (inputs.empty())
        source = std::make_unique<SilenceStep>(inputFormat, maximumFrames_);
    else
        source = adapt(stepFor(inputs.front()), inputFormat, maximumFrames_);
    const AVAudioFormat outputFormat(rate, std::max(unit->outputChannelCount(), 1U));
    return std::make_unique<UnitStep>(unit->renderResourcesAllocated() ? unit : nullptr,
                                      clockOf_(*unit), std::move(source), outputFormat,
                                      maximumFrames_);
}

// What took a quicker way is to be heard at the same moment as the rest.
RenderStepPointer RenderPlanner::delayed(RenderStepPointer source, double seconds) const
{
    const auto frames =
        static_cast<std::uint32_t>(std::lround(seconds * source->format().sampleRate()));
    if (frames == 0)
        return source;
    return std::make_unique<DelayStep>(std::move(source), frames, maximumFrames_);
}

RenderStepPointer RenderPlanner::mixerStep(const AVAudioNode &node, const AVAudioFormat &format)
{
    const std::vector<AudioGraph::Connection> inputs = graph_.inputs(node);
    const bool pathsMeet = inputs.size() > 1;
    if (pathsMeet)
        noteLatencies(node);
    const double latest = pathsMeet ? latencyAt(node) : 0.0;
    std::vector<RenderStepPointer> sources;
    for (const AudioGraph::Connection &input : inputs) {
        // A unit renders in its own format; the connection's stands between it
        // and the mixer where the two differ.
        RenderStepPointer source = adapt(stepFor(input), settledFormat(input), maximumFrames_);
        source = adapt(std::move(source), format, maximumFrames_);
        if (pathsMeet)
            source = delayed(std::move(source), latest - latencyAt(*input.source));
        sources.push_back(std::move(source));
    }
    if (sources.empty())
        return std::make_unique<SilenceStep>(format, maximumFrames_);
    if (sources.size() == 1)
        return std::move(sources.front());
    return std::make_unique<SumStep>(std::move(sources), format, maximumFrames_);
}

} // namespace platform::audio
