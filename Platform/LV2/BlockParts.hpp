#pragma once

#include "Platform/Foundation/Realtime.hpp"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace platform::lv2
{

/// Pointers into the middle of a block's channels.
class BlockParts
{
public:
    /// For blocks of so many channels.
    BlockParts(std::size_t inputs, std::size_t outputs) : inputs_(inputs), outputs_(outputs) {}

    /// The channels from frame `first` on, valid until the next call.
    REALTIME const float *const *inputs(const float *const *block, std::uint32_t first) noexcept
    {
        for (std::size_t i = 0; i < inputs_.size(); ++i)
            inputs_[i] = block[i] + first;
        return inputs_.data();
    }
    /// The same for outputs.
    REALTIME float *const *outputs(float *const *block, std::uint32_t first) noexcept
    {
        for (std::size_t i = 0; i < outputs_.size(); ++i)
            outputs_[i] = block[i] + first;
        return outputs_.data();
    }

private:
    std::vector<const float *> inputs_;
    std::vector<float *> outputs_;
};

} // namespace platform::lv2
