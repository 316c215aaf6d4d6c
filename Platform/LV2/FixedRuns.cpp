#include "Platform/LV2/FixedRuns.hpp"

namespace platform::lv2
{

FixedRuns::Channels::Channels(std::size_t count, std::uint32_t frames)
    : samples(count, std::vector<float>(frames, 0.0F))
{
    for (auto &channel : samples)
        pointers.push_back(channel.data());
}

FixedRuns::FixedRuns(const Shape &shape)
    : frames_(shape.frames), inputs_(shape.inputs, shape.frames),
      outputs_(shape.outputs, shape.frames), gathered_(shape.eventCapacity)
{
    for (std::size_t i = 0; i < shape.midiOutputs; ++i)
        emitted_.emplace_back(shape.eventCapacity);
}

void FixedRuns::exchange(const float *const *inputs, float *const *outputs, std::uint32_t first,
                         std::uint32_t count) noexcept
{
    for (std::size_t i = 0; i < inputs_.pointers.size(); ++i)
        std::copy_n(inputs[i] + first, count, inputs_.pointers[i] + filled_);
    for (std::size_t i = 0; i < outputs_.pointers.size(); ++i)
        std::copy_n(outputs_.pointers[i] + filled_, count, outputs[i] + first);
}

} // namespace platform::lv2
