#pragma once

#include "Platform/Audio/AVAudioFormat.hpp"
#include "Platform/Foundation/Realtime.hpp"

#include <algorithm>
#include <cstdint>
#include <memory>

namespace platform::audio
{

/// One stage of a render plan. Each stage is pulled by the one behind it and
/// pulls those before it; its buffers are its own and were allocated with it.
class RenderStep
{
public:
    explicit RenderStep(const AVAudioFormat &format) : format_(format) {}
    virtual ~RenderStep() = default;
    RenderStep(const RenderStep &) = delete;
    RenderStep &operator=(const RenderStep &) = delete;

    /// What comes out of the step.
    const AVAudioFormat &format() const { return format_; }

    /// Renders the next `frames` frames, at most the plan's maximum. One pointer a
    /// channel, valid until the next pull or the end of the block.
    REALTIME virtual const float *const *pull(std::uint32_t frames) noexcept = 0;

    /// The same, into `destination`: one pointer a channel.
    REALTIME virtual void pullInto(float *const *destination, std::uint32_t frames) noexcept
    {
        const float *const *const rendered = pull(frames);
        for (std::uint32_t channel = 0; channel < format_.channelCount(); ++channel)
            std::copy_n(rendered[channel], frames, destination[channel]);
    }

private:
    AVAudioFormat format_;
};

using RenderStepPointer = std::unique_ptr<RenderStep>;

} // namespace platform::audio
