#pragma once

#include "Platform/Audio/AVAudioFormat.hpp"
#include "Platform/Foundation/Realtime.hpp"

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
    /// channel, valid until the next pull.
    REALTIME virtual const float *const *pull(std::uint32_t frames) noexcept = 0;

private:
    AVAudioFormat format_;
};

using RenderStepPointer = std::unique_ptr<RenderStep>;

} // namespace platform::audio
