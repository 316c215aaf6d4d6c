#include "Tests/Utilities/ScriptedUnit.hpp"

#include "Platform/Foundation/PlatformError.hpp"

#include <algorithm>

namespace test
{

void ScriptedUnit::allocateRenderResources(double rate, std::uint32_t frames)
{
    if (!refusal.empty())
        throw PlatformError(refusal);
    sampleRate = rate;
    maximumFrames = frames;
    ++allocations;
    allocated_ = true;
}

bool ScriptedUnit::render(const AURenderBlock &block) noexcept
{
    rendering = true;
    if (!allocated_)
        ++rendersWhileUnallocated;
    bool rendered = true;
    if (onRender) {
        rendered = onRender(block);
    } else {
        for (std::uint32_t channel = 0; channel < outputs_; ++channel)
            for (std::uint32_t frame = 0; frame < block.frames; ++frame)
                block.output[channel][frame] =
                    gain * block.input[std::min(channel, inputs_ - 1)][frame];
    }
    rendering = false;
    return rendered;
}

} // namespace test
