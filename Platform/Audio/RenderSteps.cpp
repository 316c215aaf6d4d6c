#include "Platform/Audio/RenderSteps.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

namespace platform::audio
{

namespace
{

// The fewest frames worth pulling through the chain at a time.
constexpr std::uint32_t leastPull = 16;

REALTIME void clear(float *const *channels, std::uint32_t count, std::uint32_t from,
                    std::uint32_t to) noexcept
{
    for (std::uint32_t channel = 0; channel < count; ++channel)
        std::fill(channels[channel] + from, channels[channel] + to, 0.0F);
}

} // namespace

SilenceStep::SilenceStep(const AVAudioFormat &format, std::uint32_t maximumFrames)
    : RenderStep(format), buffer_(format, maximumFrames)
{
}

const float *const *SilenceStep::pull(std::uint32_t /*frames*/) noexcept
{
    return buffer_.floatChannelData();
}

PlayerStep::PlayerStep(std::shared_ptr<PlayerCore> player, const AVAudioFormat &format,
                       std::uint32_t maximumFrames)
    : RenderStep(format), player_(std::move(player)), buffer_(format, maximumFrames)
{
}

const float *const *PlayerStep::pull(std::uint32_t frames) noexcept
{
    std::uint32_t count = frames;
    const float *const *const borrowed = player_->borrow(format(), count);
    if (count == frames)
        return borrowed;
    for (std::uint32_t channel = 0; count > 0 && channel < format().channelCount(); ++channel)
        std::copy_n(borrowed[channel], count, buffer_.floatChannelData()[channel]);
    clear(buffer_.floatChannelData(), format().channelCount(), count, frames);
    return buffer_.floatChannelData();
}

UnitStep::UnitStep(std::shared_ptr<AUAudioUnit> unit, std::shared_ptr<RenderClock> clock,
                   RenderStepPointer source, const AVAudioFormat &format,
                   std::uint32_t maximumFrames)
    : RenderStep(format), unit_(std::move(unit)), clock_(std::move(clock)),
      source_(std::move(source)), buffer_(format, maximumFrames)
{
}

const float *const *UnitStep::pull(std::uint32_t frames) noexcept
{
    pullInto(buffer_.floatChannelData(), frames);
    return buffer_.floatChannelData();
}

void UnitStep::pullInto(float *const *destination, std::uint32_t frames) noexcept
{
    const AURenderBlock block{source_->pull(frames), destination, frames, clock_->frames};
    clock_->frames += frames;
    if (unit_ == nullptr || !unit_->render(block))
        clear(destination, format().channelCount(), 0, frames);
}

SumStep::SumStep(std::vector<RenderStepPointer> sources, const AVAudioFormat &format,
                 std::uint32_t maximumFrames)
    : RenderStep(format), sources_(std::move(sources)), buffer_(format, maximumFrames)
{
}

const float *const *SumStep::pull(std::uint32_t frames) noexcept
{
    float *const *const sum = buffer_.floatChannelData();
    clear(sum, format().channelCount(), 0, frames);
    for (const RenderStepPointer &source : sources_) {
        const float *const *const part = source->pull(frames);
        for (std::uint32_t channel = 0; channel < format().channelCount(); ++channel)
            for (std::uint32_t frame = 0; frame < frames; ++frame)
                sum[channel][frame] += part[channel][frame];
    }
    return sum;
}

DelayStep::DelayStep(RenderStepPointer source, std::uint32_t delay, std::uint32_t maximumFrames)
    : RenderStep(source->format()), source_(std::move(source)), delay_(delay),
      line_(format(), delay + maximumFrames), buffer_(format(), maximumFrames)
{
    for (std::uint32_t channel = 0; channel < format().channelCount(); ++channel)
        ends_.push_back(line_.floatChannelData()[channel] + delay);
}

const float *const *DelayStep::pull(std::uint32_t frames) noexcept
{
    source_->pullInto(ends_.data(), frames);
    for (std::uint32_t channel = 0; channel < format().channelCount(); ++channel) {
        float *const line = line_.floatChannelData()[channel];
        std::copy_n(line, frames, buffer_.floatChannelData()[channel]);
        std::copy_n(line + frames, delay_, line);
    }
    return buffer_.floatChannelData();
}

ChannelStep::ChannelStep(RenderStepPointer source, std::uint32_t channels,
                         std::uint32_t maximumFrames)
    : RenderStep(AVAudioFormat(source->format().sampleRate(), channels)),
      source_(std::move(source)), map_(source_->format().channelCount(), channels),
      buffer_(format(), maximumFrames)
{
}

const float *const *ChannelStep::pull(std::uint32_t frames) noexcept
{
    map_.apply(source_->pull(frames), buffer_.floatChannelData(), frames);
    return buffer_.floatChannelData();
}

RateStep::RateStep(RenderStepPointer source, double sampleRate, std::uint32_t maximumFrames)
    : RenderStep(AVAudioFormat(sampleRate, source->format().channelCount())),
      source_(std::move(source)),
      converter_(source_->format().sampleRate(), sampleRate, format().channelCount()),
      maximumFrames_(maximumFrames), input_(source_->format(), maximumFrames),
      buffer_(format(), maximumFrames)
{
}

const float *const *RateStep::pull(std::uint32_t frames) noexcept
{
    std::uint32_t made = 0;
    while (made < frames) {
        if (inputFrames_ == 0) {
            const double wanted = std::ceil((frames - made) / converter_.ratio());
            inputFrames_ = std::clamp(static_cast<std::uint32_t>(wanted),
                                      std::min(leastPull, maximumFrames_), maximumFrames_);
            source_->pullInto(input_.floatChannelData(), inputFrames_);
            inputOffset_ = 0;
        }
        const RateConverter::Progress progress =
            converter_.process(input_.floatChannelData(), inputOffset_, inputFrames_,
                               buffer_.floatChannelData(), made, frames - made, false);
        if (progress.taken == 0 && progress.made == 0) {
            // The converter refuses its input; silence rather than a dead loop.
            inputFrames_ = 0;
            clear(buffer_.floatChannelData(), format().channelCount(), made, frames);
            break;
        }
        inputOffset_ += progress.taken;
        inputFrames_ -= progress.taken;
        made += progress.made;
    }
    return buffer_.floatChannelData();
}

RenderStepPointer adapt(RenderStepPointer source, const AVAudioFormat &format,
                        std::uint32_t maximumFrames)
{
    // Fewer channels first, then the rate, then more channels: the converter is
    // the dear part.
    const std::uint32_t channels = format.channelCount();
    if (source->format().channelCount() > channels)
        source = std::make_unique<ChannelStep>(std::move(source), channels, maximumFrames);
    if (source->format().sampleRate() != format.sampleRate())
        source = std::make_unique<RateStep>(std::move(source), format.sampleRate(), maximumFrames);
    if (source->format().channelCount() != channels)
        source = std::make_unique<ChannelStep>(std::move(source), channels, maximumFrames);
    return source;
}

} // namespace platform::audio
