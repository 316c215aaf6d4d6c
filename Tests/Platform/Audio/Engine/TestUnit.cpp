#include "Tests/Platform/Audio/Engine/TestUnit.hpp"

#include "Platform/Foundation/PlatformError.hpp"

#include <algorithm>

namespace test
{

void TestUnit::allocateRenderResources(double rate, std::uint32_t frames)
{
    if (!refusal.empty())
        throw PlatformError(refusal);
    sampleRate = rate;
    maximumFrames = frames;
    ++allocations;
    allocated_ = true;
}

bool TestUnit::render(const AURenderBlock &block) noexcept
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
                    2.0F * block.input[std::min(channel, inputs_ - 1)][frame];
    }
    rendering = false;
    return rendered;
}

} // namespace test
