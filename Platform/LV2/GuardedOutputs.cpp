#include "Platform/LV2/GuardedOutputs.hpp"

#include <algorithm>
#include <bit>

namespace platform::lv2
{

namespace
{

// No number, so that no calculation makes it; compared bit by bit.
constexpr std::uint32_t untouched = 0x7FA5A5A5U;

REALTIME bool isTouched(float sample) noexcept
{
    return std::bit_cast<std::uint32_t>(sample) != untouched;
}

} // namespace

GuardedOutputs::GuardedOutputs(std::size_t channels, std::uint32_t maximumFrames)
    : samples_(channels, std::vector<float>(maximumFrames + 2 * zone))
{
    for (auto &channel : samples_)
        blocks_.push_back(channel.data() + zone);
}

float *const *GuardedOutputs::begin(std::uint32_t frames) noexcept
{
    const float mark = std::bit_cast<float>(untouched);
    for (float *const block : blocks_) {
        std::fill_n(block - zone, zone, mark);
        std::fill_n(block + frames, zone, mark);
    }
    return blocks_.data();
}

bool GuardedOutputs::end(float *const *outputs, std::uint32_t frames) noexcept
{
    bool isIntact = true;
    for (std::size_t i = 0; i < blocks_.size(); ++i) {
        const float *const block = blocks_[i];
        isIntact = isIntact && std::none_of(block - zone, block, isTouched) &&
                   std::none_of(block + frames, block + frames + zone, isTouched);
        std::copy_n(block, frames, outputs[i]);
    }
    return isIntact;
}

} // namespace platform::lv2
