#pragma once

#include "Platform/Audio/AudioGraph.hpp"
#include "Platform/Audio/RenderSteps.hpp"

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace platform::audio
{

/// A graph made ready for the audio callback: every step and buffer allocated,
/// nothing to be changed but by a new plan.
struct RenderPlan {
    RenderStepPointer last; // in the output's format
    std::uint32_t maximumFrames = 0;
    bool isByHand = false; // else for the device

    struct Player {
        std::shared_ptr<PlayerCore> core;
        /// The most frames that a block of `maximumFrames` takes of it.
        std::uint32_t framesPerBlock;
    };
    std::vector<Player> players;

    /// The delays of the units on paths that meet, which the plan makes up for.
    struct Latency {
        std::shared_ptr<AUAudioUnit> unit;
        double seconds;
    };
    std::vector<Latency> latencies;

    /// After each pull of the last step, when what it gave has been used.
    REALTIME void finishBlock() noexcept;
};

/// Reads a graph and says what rendering it takes. One use, on one thread.
class RenderPlanner
{
public:
    /// `outputFormat` is what comes out at `output`, in blocks of up to
    /// `maximumFrames`. Players read at least `secondsAhead` ahead.
    RenderPlanner(const AudioGraph &graph, const AVAudioNode &output,
                  const AVAudioFormat &outputFormat, std::uint32_t maximumFrames,
                  double secondsAhead);

    struct Unit {
        std::shared_ptr<AUAudioUnit> unit;
        double sampleRate; // Hz
    };
    /// The units that will render and the rates they need render resources for.
    std::vector<Unit> units() const;

    using ClockOfUnit = std::function<std::shared_ptr<RenderClock>(const AUAudioUnit &)>;
    /// Builds the plan and tells the players in it their formats. A
    /// `PlatformError` when a rate cannot be converted.
    std::unique_ptr<RenderPlan> build(const ClockOfUnit &clockOf);

    /// A connection's format, settled where it was left open.
    AVAudioFormat settledFormat(const AudioGraph::Connection &connection) const;

private:
    double settledRate(const AudioGraph::Connection &connection) const;
    std::uint32_t settledChannels(const AudioGraph::Connection &connection) const;
    double rateOfUnit(const AVAudioNode &node) const;
    double latencyAt(const AVAudioNode &node) const;
    void noteLatencies(const AVAudioNode &mixer);
    void collectUnits(const AVAudioNode &node, std::vector<Unit> &found) const;
    RenderStepPointer stepFor(const AudioGraph::Connection &connection);
    RenderStepPointer playerStep(const std::shared_ptr<PlayerCore> &core,
                                 const AVAudioFormat &format);
    RenderStepPointer unitStep(const AVAudioNode &node, const std::shared_ptr<AUAudioUnit> &unit);
    RenderStepPointer delayed(RenderStepPointer source, double seconds) const;
    RenderStepPointer mixerStep(const AVAudioNode &node, const AVAudioFormat &format);

    const AudioGraph &graph_;
    const AVAudioNode &output_;
    AVAudioFormat outputFormat_;
    std::uint32_t maximumFrames_;
    double secondsAhead_;
    ClockOfUnit clockOf_;
    std::unique_ptr<RenderPlan> plan_;
};

} // namespace platform::audio
