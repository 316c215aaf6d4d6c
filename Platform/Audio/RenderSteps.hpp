#pragma once

#include "Platform/Audio/AUAudioUnit.hpp"
#include "Platform/Audio/AVAudioPCMBuffer.hpp"
#include "Platform/Audio/ChannelMap.hpp"
#include "Platform/Audio/PlayerCore.hpp"
#include "Platform/Audio/RateConverter.hpp"
#include "Platform/Audio/RenderStep.hpp"

#include <cstdint>
#include <memory>
#include <vector>

namespace platform::audio
{

/// Where nothing is connected.
class SilenceStep : public RenderStep
{
public:
    SilenceStep(const AVAudioFormat &format, std::uint32_t maximumFrames);
    REALTIME const float *const *pull(std::uint32_t frames) noexcept override;

private:
    AVAudioPCMBuffer buffer_;
};

/// Frames of a player node, silence where it has none.
class PlayerStep : public RenderStep
{
public:
    PlayerStep(std::shared_ptr<PlayerCore> player, const AVAudioFormat &format,
               std::uint32_t maximumFrames);
    REALTIME const float *const *pull(std::uint32_t frames) noexcept override;

private:
    std::shared_ptr<PlayerCore> player_;
    AVAudioPCMBuffer buffer_;
};

/// How far a unit's rendering has come; it outlives the plans.
struct RenderClock {
    std::int64_t frames = 0;
};

/// A block through an audio unit. What the unit does not render is silence. A
/// source that the unit has no input for is pulled all the same, so that it goes
/// on in time.
class UnitStep : public RenderStep
{
public:
    /// `source` has the unit's rate and input channels, or any where it has none.
    /// Without a unit there is silence.
    UnitStep(std::shared_ptr<AUAudioUnit> unit, std::shared_ptr<RenderClock> clock,
             RenderStepPointer source, const AVAudioFormat &format, std::uint32_t maximumFrames);
    REALTIME const float *const *pull(std::uint32_t frames) noexcept override;
    REALTIME void pullInto(float *const *destination, std::uint32_t frames) noexcept override;

private:
    std::shared_ptr<AUAudioUnit> unit_;
    std::shared_ptr<RenderClock> clock_;
    RenderStepPointer source_;
    AVAudioPCMBuffer buffer_;
};

/// The sum of several steps of one format.
class SumStep : public RenderStep
{
public:
    SumStep(std::vector<RenderStepPointer> sources, const AVAudioFormat &format,
            std::uint32_t maximumFrames);
    REALTIME const float *const *pull(std::uint32_t frames) noexcept override;

private:
    std::vector<RenderStepPointer> sources_;
    AVAudioPCMBuffer buffer_;
};

/// A source, so many frames later.
class DelayStep : public RenderStep
{
public:
    DelayStep(RenderStepPointer source, std::uint32_t delay, std::uint32_t maximumFrames);
    REALTIME const float *const *pull(std::uint32_t frames) noexcept override;

private:
    RenderStepPointer source_;
    std::uint32_t delay_;
    AVAudioPCMBuffer line_; // what waits, and behind it the block
    std::vector<float *> ends_;
    AVAudioPCMBuffer buffer_;
};

/// Other channels at the same rate.
class ChannelStep : public RenderStep
{
public:
    ChannelStep(RenderStepPointer source, std::uint32_t channels, std::uint32_t maximumFrames);
    REALTIME const float *const *pull(std::uint32_t frames) noexcept override;

private:
    RenderStepPointer source_;
    ChannelMap map_;
    AVAudioPCMBuffer buffer_;
};

/// The same channels at another rate.
class RateStep : public RenderStep
{
public:
    RateStep(RenderStepPointer source, double sampleRate, std::uint32_t maximumFrames);
    REALTIME const float *const *pull(std::uint32_t frames) noexcept override;

private:
    RenderStepPointer source_;
    RateConverter converter_;
    std::uint32_t maximumFrames_;
    AVAudioPCMBuffer input_; // what is left of it is used in the next block
    AVAudioPCMBuffer buffer_;
    std::uint32_t inputOffset_ = 0;
    std::uint32_t inputFrames_ = 0;
};

/// `source` in `format`, through the steps that it takes.
RenderStepPointer adapt(RenderStepPointer source, const AVAudioFormat &format,
                        std::uint32_t maximumFrames);

} // namespace platform::audio
